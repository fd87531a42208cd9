#pragma once

#include <cstdint>
#include <filesystem>
#include <span>

#include "velamo/formats/loading.h"
#include "velamo/model/design.h"

namespace velamo {

/// Janome SEW files, little-endian:
///   offset  bytes  meaning
///   0       2      number of threads n, 1 to 12
///   2       2n     thread indices
///   7544           stitches, to the end (see janome.h)
/// Indices from 13 on came with the second generation of the machines.

/// Fills `design` from the SEW file at `url`. Sets type "SEW" and version 10 (20 for a file of the second generation),
/// then threads, stitches and bounds. The number of colour changes is not compared with that of the threads. Returns
/// false on failure, with 90 (fewer than 7545 bytes, or unreadable) or 91 (number of threads) in `error`, when that is
/// not null.
[[nodiscard]] bool importSewDesignFromURLerror(VLMDesign& design, const std::filesystem::path& url, VLMError* error,
                                               const ImportOptions& options = {}) noexcept;

/// The same from bytes in memory; the type is left alone, and the version unless it is 20. May throw std::bad_alloc.
[[nodiscard]] bool readSew(VLMDesign& design, std::span<const std::uint8_t> file, VLMError* error);

}  // namespace velamo
