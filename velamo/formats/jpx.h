#pragma once

#include <cstdint>
#include <filesystem>
#include <span>

#include "velamo/formats/loading.h"
#include "velamo/model/design.h"

namespace velamo {

/// Janome JPX files, little-endian, a relative of JEF:
///   offset    bytes  meaning
///   0         4      offset s of the stitches
///   4         1      version, signed
///   32        4      number of threads n
///   40        4      Janome code of the hoop
///   60        4n     thread indices
///   60 + 4n   4n     thread tensions
///   s                stitches, to the end (see janome.h)

/// Fills `design` from the JPX file at `url`. Sets type "JPX" before the file is read, then version, hoop, threads,
/// stitches and bounds. A file may change the colour more or less often than it names threads. Returns false on
/// failure, with 210 (fewer than 120 bytes, or unreadable), 211 (thread tables incomplete) or 212 (no stitches at the
/// offset) in `error`, when that is not null.
[[nodiscard]] bool importJpxDesignFromURLerror(VLMDesign& design, const std::filesystem::path& url, VLMError* error,
                                               const ImportOptions& options = {}) noexcept;

/// The same from bytes in memory; the type is left alone. May throw std::bad_alloc.
[[nodiscard]] bool readJpx(VLMDesign& design, std::span<const std::uint8_t> file, VLMError* error);

}  // namespace velamo
