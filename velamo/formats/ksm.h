#pragma once

#include <cstdint>
#include <filesystem>
#include <span>

#include "velamo/formats/loading.h"
#include "velamo/model/design.h"

namespace velamo {

/// KSM files: a header of 512 bytes that nobody needs, then records of three bytes to the end: the size of the y move,
/// the size of the x move (0 to 255 tenths of a millimetre), and flags. Bit 7 of the flags is set in every record; 0x88
/// ends the design.
///   f & 0x40, f & 0x20               x, y is negative
///   f = 0x89 or f & 0x8F = 0x87      this and the following moves are jumps
///   f = 0x8B or f & 0x8C = 0x8C      colour change, which is a jump as well
///   f & 0x9E = 0x98                  the last of the jumps
/// A file begins with jumps. It carries no colours.

/// Fills `design` from the KSM file at `url`. Sets type "KSM" and version 10 before the file is read, then threads (the
/// keys "1" to "20" of the palette "Undefined"), stitches and bounds. Returns false on failure, with 170 (fewer than
/// 515 bytes, or unreadable) or 171 (a record without bit 7; what was read before it stays) in `error`, when that is
/// not null.
[[nodiscard]] bool importKsmDesignFromURLerror(VLMDesign& design, const std::filesystem::path& url, VLMError* error,
                                               const ImportOptions& options = {}) noexcept;

/// The same from bytes in memory; type and version are left alone. May throw std::bad_alloc.
[[nodiscard]] bool readKsm(VLMDesign& design, std::span<const std::uint8_t> file, VLMError* error);

}  // namespace velamo
