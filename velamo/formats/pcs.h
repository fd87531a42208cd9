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

/// Pfaff's PCS files and the older PCD and PCQ, little-endian:
///   offset   bytes   meaning
///   0        1       0x32
///   1        1       0 PCD, 1 PCQ, 2 or 3 PCS; for PCS also the code of the Pfaff hoop
///   2        2       number of palette colours c, at most 16
///   4        4c      red, green, blue, and an unused byte, of each
///   4 + 4c   2       number of stitch records; colour records do not count
///   6 + 4c   9 each  records: palette index, x (3 bytes), an unused byte, y (3 bytes), kind (3 colour change, 4 jump,
///                    both in PCS only; anything else a stitch)
/// Coordinates are absolute places in sixths of a millimetre from the hoop's corner, y upward; a negative one is kept
/// as the number above it by 0xFFFFFF.

/// Fills `design` from the PCS, PCD or PCQ file at `url`; its second byte tells which of the three it is. Sets type,
/// version (20; 21 where a colour record has a place of its own) and, for PCS, the hoop, on whose middle the design is
/// centred; then threads, stitches and bounds. Returns false on failure, with 160 (too short, or unreadable), 161 (no
/// mark), 162 (type), 163 (more than 16 colours), 164 (a palette index) or 165 (a place outside the largest hoop) in
/// `error`, when that is not null; what was read before stays.
[[nodiscard]] bool importPcxDesignFromURLerror(VLMDesign& design, const std::filesystem::path& url, VLMError* error,
                                               const ImportOptions& options = {}) noexcept;

/// The same from bytes in memory. May throw std::bad_alloc.
[[nodiscard]] bool readPcx(VLMDesign& design, std::span<const std::uint8_t> file, VLMError* error);

/// Writes the design to the PCS file at `url`, for a Pfaff hoop with the design's origin in its middle. Each colour
/// block begins with a record of its own, whose place is not used; a colour change has its stitch's record as well. The
/// file counts the stitches as numberOfStitches does, so readers that rely on the count miss the last few of a design
/// of several colours. After success type is "PCS", version 20, the design has the file's hoop, and, unless
/// useThreadFile is set, its threads have colours of their own in place of a palette's. Returns false on failure, with
/// 180 (more than 16 threads), 181 (more than 14000 stitches), an error of the hoop (see hoop_choice.h; nothing is
/// changed then) or the system's own (the design has its new hoop and threads) in `error`, when that is not null.
[[nodiscard]] bool exportPcsDesignToURLerror(VLMDesign& design, const std::filesystem::path& url, VLMError* error,
                                             const ExportOptions& options = {}) noexcept;

/// The bytes of that file, or nullopt on failure. Sets the design's hoop and threads. May throw std::bad_alloc.
[[nodiscard]] std::optional<std::vector<std::uint8_t>> writePcs(VLMDesign& design, VLMError* error);

}  // namespace velamo
