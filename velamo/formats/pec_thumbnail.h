#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "velamo/formats/saving.h"
#include "velamo/model/design.h"

namespace velamo {

/// The thumbnails behind the stitches of a PEC section: black and white pictures for the machine's screen, 38 rows of 6
/// bytes from the top down, the lowest bit of a byte being its leftmost pixel. A frame with cut corners lies round a
/// picture of at most 42 by 32 pixels, in which dark threads are filled and light ones outlined.

/// Whether the size of the design allows a thumbnail. That of a design with stitches and threads may not be -20 or less
/// (its bounds were never set), nor beyond 32747 tenths of a millimetre, nor its area beyond 2^28 pixels.
[[nodiscard]] bool hasPecThumbnail(const VLMDesign& design) noexcept;

/// The thumbnail of the whole design, with `thread` -1, or of that thread's block alone: 228 bytes. The frame is empty
/// where there is nothing to draw. No bytes when the picture cannot be made: its size does not allow it, or memory ran
/// out.
[[nodiscard]] std::vector<std::uint8_t> exportPecBitmapToDataForThread(const VLMDesign& design,
                                                                       std::int32_t thread) noexcept;

/// The thumbnails that stand behind one another in a PES file: of the whole design and of each thread. All of it takes
/// two drawings of the design, however many threads there are, and the lines of the second are those of the first. No
/// bytes when one of them cannot be made.
[[nodiscard]] std::vector<std::uint8_t> pecThumbnailsOfDesignAndThreads(const VLMDesign& design) noexcept;

/// Those three, as a writer asks for them.
struct PecThumbnails {
    bool (*canBeMade)(const VLMDesign& design) noexcept;
    std::vector<std::uint8_t> (*ofThread)(const VLMDesign& design, std::int32_t thread) noexcept;
    std::vector<std::uint8_t> (*ofDesignAndThreads)(const VLMDesign& design) noexcept;
};

inline constexpr std::size_t pecThumbnailSize = 228;
using PecThumbnail = std::array<std::uint8_t, pecThumbnailSize>;
inline constexpr std::size_t pecThumbnailPixels = std::size_t{48} * 38;

/// The thumbnail of pixels of red, green, blue and alpha, premultiplied, from the top down: what is not transparent is
/// set where it borders on something transparent or is dark, its largest component being 179 or less.
[[nodiscard]] PecThumbnail pecThumbnailOf(std::span<const std::uint8_t, pecThumbnailPixels * 4> rgba) noexcept;

}  // namespace velamo
