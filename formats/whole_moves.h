#pragma once

#include <cmath>
#include <cstdint>
#include <limits>

namespace velamo {

/// Truncation toward zero. A number beyond 64 bits stays at their edge, and what is no number becomes 0: the stitches
/// and bounds of a design may hold anything.
[[nodiscard]] inline std::int64_t wholeNumber(double number) noexcept {
    constexpr double twoTo63 = 9223372036854775808.0;
    if (number >= -twoTo63 && number < twoTo63) return static_cast<std::int64_t>(number);
    if (std::isnan(number)) return 0;
    return number < 0 ? std::numeric_limits<std::int64_t>::min() : std::numeric_limits<std::int64_t>::max();
}

/// Makes whole moves of fractional ones, along one axis. What rounding down takes from a move is carried into the next
/// one, in single precision, so that places stay true however many moves lead there.
class VLMWholeMoves {
public:
    /// The move as a whole number.
    [[nodiscard]] float take(float delta) noexcept {
        const float sum = delta + carry_;
        const float whole = std::floor(sum);
        // Most designs have whole moves only: then no move waits for the one before it.
        if (sum != whole || carry_ != 0) carry_ = sum - whole;
        return whole;
    }
    /// Carries a part of the move that was just taken, which did not fit its record, into the next one too.
    void carry(float rest) noexcept { carry_ += rest; }

private:
    float carry_ = 0;
};

/// The same along both axes, for formats whose moves are signed bytes: of what one cannot hold the lower bits are kept.
class VLMByteMoves {
public:
    /// The move's two bytes, x in the lower one.
    [[nodiscard]] std::uint64_t take(float deltaX, float deltaY) noexcept {
        const std::uint64_t x = byteOf(x_.take(deltaX));
        return x | byteOf(y_.take(deltaY)) << 8;
    }

private:
    static std::uint64_t byteOf(float move) noexcept { return static_cast<std::uint64_t>(wholeNumber(move)) & 0xFFU; }

    VLMWholeMoves x_;
    VLMWholeMoves y_;
};

}  // namespace velamo
