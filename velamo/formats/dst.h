#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <vector>

#include "velamo/formats/loading.h"
#include "velamo/formats/saving.h"
#include "velamo/model/design.h"

namespace velamo {

/// Tajima DST files: a header of 512 bytes, text of tags such as "ST:" and padding, then records of three bytes to the
/// end. A record holds a move in five ternary weights an axis (so at most 121 tenths of a millimetre) and its kind:
///   weight   +X        -X        +Y        -Y
///   1        b0 bit 0  b0 bit 1  b0 bit 7  b0 bit 6
///   3        b1 bit 0  b1 bit 1  b1 bit 7  b1 bit 6
///   9        b0 bit 2  b0 bit 3  b0 bit 5  b0 bit 4
///   27       b1 bit 2  b1 bit 3  b1 bit 5  b1 bit 4
///   81       b2 bit 2  b2 bit 3  b2 bit 5  b2 bit 4
/// b2 bits 7, 6, 1, 0: 0011 a stitch, 1011 a jump, 1111 a colour change; b2 = 0xF3 ends the design.
/// The header as machines know it, each line ended by 0x0D, then 0x1A and spaces:
///   offset  line
///   0       LA: and the label, 16 characters
///   20      ST: and the number of records, 7; CO: and the number of colour changes, 3
///   38      +X: -X: +Y: -Y: and how far the design reaches from its start, 5 each
///   74      AX: AY: and the end point, a sign and 5 each
///   94      MX:+    0 MY:+    0 PD:******
/// The file carries no colours, and names and counts in its header are not relied upon: they are often wrong.

/// Fills `design` from the DST file at `url`. Sets type "DST" and version 10 before the file is read, then threads (the
/// keys "1" to "20" of the palette "Undefined"), stitches and bounds. Returns false on failure, with 123 (fewer than
/// 516 bytes, or unreadable), 110 and 112 to 119 (a tag missing in the header) or 111 (unknown kind of record) in
/// `error`, when that is not null; after 111 the design keeps what had been read.
[[nodiscard]] bool importDstDesignFromURLerror(VLMDesign& design, const std::filesystem::path& url, VLMError* error,
                                               const ImportOptions& options = {}) noexcept;

/// The same from bytes in memory; type and version are left alone. May throw std::bad_alloc.
[[nodiscard]] bool readDst(VLMDesign& design, std::span<const std::uint8_t> file, VLMError* error);

/// Writes the design, whose moves were fitted to DST records, to the DST file at `url`. A record takes the whole part
/// of a move; what is left of it, and of a move longer than 121, goes into the next record. Places in the header count
/// from where sewing begins, so the bounds must hold the origin. After success type is "DST", version 10, there is no
/// hoop, and, unless useThreadFile is set, the threads are those that reading the file gives. Returns false on failure,
/// with 130 (bounds), 132 (end point), 133 (too many stitches), 134 (more than 1000 threads) or the system's own error
/// in `error`, when that is not null; the design is unchanged then.
[[nodiscard]] bool exportDstDesignToURLerror(VLMDesign& design, const std::filesystem::path& url, VLMError* error,
                                             const ExportOptions& options = {}) noexcept;

/// The bytes of that file, or nullopt on failure. May throw std::bad_alloc.
[[nodiscard]] std::optional<std::vector<std::uint8_t>> writeDst(const VLMDesign& design, VLMError* error);

}  // namespace velamo
