#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
#include <vector>

#include "velamo/model/design.h"

namespace velamo {

/// PEC sections hold the stitches of Brother's PES and PEC files. Little-endian; offsets from the section's mark:
///   offset    bytes  meaning
///   0         3      mark "LA:"
///   3         16     label, padded with spaces; then 0x0D, 12 spaces, 0xFF, 0x00
///   34        2      thumbnail: bytes a row (6), rows (38); then 12 spaces
///   48        1      number of colours - 1
///   49        n      thread index of each colour block; spaces up to 511
///   512       2      zero
///   514       3      where the thumbnails begin and the stitches end, from offset 512
///   517       3      0x31 0xFF 0xF0
///   520       4      width, height, signed
///   524       4      0x01E0, 0x01B0
///   528       4      start x, start y: distances from the corner of the bounds, 12 bits each
///   532              stitches up to 0xFF, then thumbnails
/// A coordinate takes one byte below 0x80 (7 bits, signed) or two: four bits of flags (0x8 plain, 0x9 jump, 0xA trim)
/// and 12 bits, signed. A move is x then y; 0xFE 0xB0 and one more byte change the colour. Tenths of a millimetre, y
/// downward.

/// Appends the stitches and threads of a section, given from behind its mark, and widens the reset bounds. Some
/// programs write a graphic header one byte longer; where the stitches make no sense, they are looked for one byte
/// later. Threads follow the colour changes that were found, not the number in the section; an index that stands for no
/// thread gives "005". Returns false on failure, with 190 (fewer than 529 bytes), 191 (stitches end past the section)
/// or 192 (no end mark) in `error`, when that is not null.
[[nodiscard]] bool importPecSegmentFromDataerror(VLMDesign& design, std::span<const std::uint8_t> segment,
                                                 VLMError* error);

/// Appends the stitches of a section whose start coordinates are at `offset` from behind the mark. Returns the number
/// of colour blocks, or 0 on failure, with 191 or 192 in `error`.
[[nodiscard]] std::uint32_t importPecStichesFromDatawithOffseterror(VLMDesign& design,
                                                                    std::span<const std::uint8_t> segment,
                                                                    std::size_t offset, VLMError* error);

/// A section of the design, whose moves were fitted to PEC sections, from its mark to its end mark. Threads of other
/// palettes become the nearest of the palette "Brother", in the design too unless useThreadFile is set; one that
/// Brother machines do not know is written as "005". Moves become whole, with the fractions carried into the next one.
/// Numbers are not checked: of those that do not fit, the lower bits are kept, which is wrong but harmless. Nor is the
/// number of threads: of more than 463, the further indices take the graphic header's place, and machines cannot read
/// that. May throw std::bad_alloc.
[[nodiscard]] std::vector<std::uint8_t> exportPecSegmentToData(VLMDesign& design);

/// The index of each thread, as exportPecSegmentToData writes it and with the same effect on the design.
[[nodiscard]] std::vector<std::uint8_t> takeBrotherIndices(VLMDesign& design);

/// The threads that the attribute block has room for.
inline constexpr std::size_t mostPecThreads = 463;

/// The number of bytes that exportPecSegmentToData gives.
[[nodiscard]] std::size_t sizeOfPecSegment(const VLMDesign& design) noexcept;

/// A larger section cannot say where its thumbnails begin.
inline constexpr std::size_t largestPecSection = 512 + 0xFFFFFF;

/// The index of thread "005".
inline constexpr std::uint8_t usualBrotherIndex = 16;

}  // namespace velamo
