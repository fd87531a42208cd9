#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
#include <vector>

#include "velamo/formats/loading.h"
#include "velamo/formats/saving.h"
#include "velamo/model/design.h"

namespace velamo {

/// Melco EXP files: nothing but pairs of signed bytes, moves dx dy in tenths of a millimetre, y upward. 0x80 in place
/// of dx opens a record of four bytes, 0x80 c x y:
///   c odd, 0x01 to 0x7F   colour change; x and y mean nothing
///   c = 0x80              a stitch on the spot; x and y mean nothing
///   any other c           a jump by x y (0x04 and 0x02 are usual)
/// c counts as a signed number, which is why 0x81 and its like are jumps. The file carries no colours. Where we write,
/// c is 0x01 with x and y zero, the change's own move following as a stitch or jump of its own, or 0x02.

/// Fills `design` from the EXP file at `url`. Sets type "EXP" and version 10 before the file is read, then threads (the
/// keys "1" to "20" of the palette "Undefined"), stitches and bounds. Returns false, with 100 in `error`, when the file
/// has an odd number of bytes.
[[nodiscard]] bool importExpDesignFromURLerror(VLMDesign& design, const std::filesystem::path& url, VLMError* error,
                                               const ImportOptions& options = {}) noexcept;

/// The same from bytes in memory; type and version are left alone. May throw std::bad_alloc.
[[nodiscard]] bool readExp(VLMDesign& design, std::span<const std::uint8_t> file, VLMError* error);

/// Writes the design, whose moves were fitted to EXP files, to the EXP file at `url`. Moves become whole, with the
/// fractions carried into the next one; of one beyond a signed byte the lower eight bits are kept. After success type
/// is "EXP", version 10, there is no hoop, and, unless useThreadFile is set, the threads are those that reading the
/// file gives. Returns false on failure, with the system's own error in `error`, when that is not null; the design is
/// unchanged then.
[[nodiscard]] bool exportExpDesignToURLerror(VLMDesign& design, const std::filesystem::path& url, VLMError* error,
                                             const ExportOptions& options = {}) noexcept;

/// The bytes of that file. May throw std::bad_alloc.
[[nodiscard]] std::vector<std::uint8_t> writeExp(const VLMDesign& design);

}  // namespace velamo
