#pragma once

#include <array>
#include <bitset>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "velamo/analysis/needle_path.h"
#include "velamo/private_api.h"

namespace velamo {

/// The short form of a needle path: the same, but for a small difference, for all files of one design, at whatever
/// size. Different designs may have the same, too; only their paths decide (see samePathOf).
struct Fingerprint {
    static constexpr std::size_t windows = 16;  // of equal length along the path
    /// Where the middle of each window lies from the centroid, in steps of which stepsOfRadius make a radius.
    std::array<std::int8_t, windows> x{};
    std::array<std::int8_t, windows> y{};
    float logOfLength = 0;  // the natural logarithm of the length in radii
    float radius = 0;       // tenths of a millimetre
    std::uint32_t points = 0;
    std::uint16_t corners = 0;
    std::uint16_t blocks = 0;
    friend bool operator==(const Fingerprint&, const Fingerprint&) = default;
};

/// The fingerprints of a path: of the whole, and of what remains without a first straight stretch that may be but the
/// way to where sewing begins (see leadInPart).
struct Fingerprints {
    Fingerprint whole;
    std::optional<Fingerprint> withoutLeadIn;
    friend bool operator==(const Fingerprints&, const Fingerprints&) = default;
};

inline constexpr double stepsOfRadius = 40;
/// A tie does not count: stitches of so much together that stay so near to the point where they begin, and come back to
/// it but for so much. In tenths of a millimetre.
inline constexpr double tieLength = 40;
inline constexpr double tieReach = 10;
inline constexpr double tieReturn = 0.01;
/// A first straight stretch longer than this part of the path may be a lead-in that matters.
inline constexpr double leadInPart = 0.005;
/// Fingerprints whose numbers differ by no more may be of one design.
inline constexpr int candidateSteps = 5;
inline constexpr double candidateLogOfLength = 0.08;

/// The fingerprints of the path; none when it has no length. Compilers agree on all of it but the last bit of
/// `logOfLength`, which is the system's logarithm.
[[nodiscard]] VELAMO_PRIVATE_API std::optional<Fingerprints> fingerprintsOf(const NeedlePath& path);

/// The fingerprint as a database keeps it: the numbers in their order, little-endian. Any bytes are a fingerprint.
using FingerprintBytes = std::array<std::byte, 48>;
[[nodiscard]] VELAMO_PRIVATE_API FingerprintBytes bytesOf(const Fingerprint& fingerprint) noexcept;
[[nodiscard]] VELAMO_PRIVATE_API Fingerprint fingerprintOf(const FingerprintBytes& bytes) noexcept;

/// A set of turns by 0, 1, 2 and 3 quarters, counter-clockwise.
using QuarterTurns = std::bitset<4>;

/// The turns that may make the second design of the first; none when they are surely not one design at one or two
/// sizes. What this says of two fingerprints of one design and two of another is all of it that can be true.
[[nodiscard]] VELAMO_PRIVATE_API QuarterTurns candidateTurns(const Fingerprints& one,
                                                             const Fingerprints& other) noexcept;
[[nodiscard]] VELAMO_PRIVATE_API QuarterTurns candidateTurns(const Fingerprint& one, const Fingerprint& other) noexcept;

/// The number of the cell that a fingerprint lies in, for an index; never negative.
[[nodiscard]] VELAMO_PRIVATE_API std::int64_t indexKeyOf(const Fingerprint& fingerprint) noexcept;
/// The cells where nearly all candidates for a fingerprint lie, turned ones too, in ascending order: some dozens, 2048
/// at most. May throw std::bad_alloc.
[[nodiscard]] VELAMO_PRIVATE_API std::vector<std::int64_t> keysNear(const Fingerprint& fingerprint);

/// How much two designs look alike.
struct Likeness {
    double distance = 0;  // the root mean square of the 32 differences in radii, in the turn that makes it least
    bool isMirrored = false;
};
/// Designs at most so far apart look alike. That does not make them one design.
inline constexpr double likeDistance = 0.12;
[[nodiscard]] VELAMO_PRIVATE_API Likeness likenessOf(const Fingerprint& one, const Fingerprint& other) noexcept;

}  // namespace velamo
