#pragma once

#include <cstdint>
#include <filesystem>
#include <span>

#include "velamo/formats/loading.h"
#include "velamo/model/design.h"

namespace velamo {

/// VP3 files, big-endian; lengths in micrometres unless said, texts ISO Latin-1 behind a 16-bit length:
///   0                  "%vsm%"
///   6                  16 bits; P1 = this + 15
///   P1                 16 bits, length L of a block;   H = P1 + L + 61
///   H                  hoop width, hoop height (signed 32 bits each);   P2 = H + 8
///   P2                 16 bits, length M of a block;   P3 = P2 + M + 26
///   P3                 16 bits, length N of a block
///   P3 + N + 2         16 bits, number of colour sections, which follow
/// A colour section:
///   3                  signed 32 bits, length of the section from behind this field
///   7                  start x, start y (signed 32 bits each)
///   15                 one byte, number c of colours
///   16                 6 bytes a colour: one unused, red, green, blue, two unused; the first counts
///   19 + 6c            three texts: catalogue number, description and maker of the thread
///   then               end x, end y relative to the start (signed 32 bits each)
///   then               16 bits, length K of a block; 7 more bytes behind the block; then stitches to the end of the
///   section
/// Stitches are pairs of signed bytes dx dy in tenths of a millimetre, y downward. 0x80 0x01 opens a jump of eight
/// bytes: x and y of 16 bits, signed, and two bytes unused. 0x80 and any other byte is a stitch on the spot.

/// Fills `design` from the VP3 file at `url`. Sets type "VP3" and version 10 before the file is read (20 when a section
/// does not start where the one before it ended), then hoop, threads, stitches and bounds. Returns false on failure,
/// with 150 (header), 152 (no hoop), 151 (no stitch section), 153 (no colours) or 154 (a colour section does not fit in
/// the file) in `error`, when that is not null; what was read before stays in the design.
[[nodiscard]] bool importVp3DesignFromURLerror(VLMDesign& design, const std::filesystem::path& url, VLMError* error,
                                               const ImportOptions& options = {}) noexcept;

/// The same from bytes in memory; the type is left alone, and the version unless it is 20. May throw std::bad_alloc.
[[nodiscard]] bool readVp3(VLMDesign& design, std::span<const std::uint8_t> file, VLMError* error);

}  // namespace velamo
