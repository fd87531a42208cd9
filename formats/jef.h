#pragma once

#include <cstdint>
#include <filesystem>
#include <span>

#include "model/design.h"

namespace velamo {

/// Janome JEF files and their variant JEF+, little-endian:
///   offset     bytes  meaning
///   0          4      offset s of the stitches
///   4          1      version, signed (JEF+: tenfold)
///   24         4      number of threads n
///   32         4      Janome code of the hoop
///   116        4n     thread indices
///   116 + 4n   4n     thread tensions
///   s                 stitches, to the end (see janome.h)

/// Fills `design` from the JEF or JEF+ file at `url`; its extension tells which of the two it is. Type, version and
/// hoop are set as soon as the header is read; then threads, stitches and bounds. Threads that the file lacks for its
/// colour changes are added. False on failure, with 20 (fewer than 52 bytes, or unreadable), 21 (thread tables
/// incomplete), 23 (no stitches at the offset) or 24 (more threads than colour blocks, or none at all; everything is in
/// the design then) in `error`, when that is not null.
[[nodiscard]] bool importJefDesignFromURLerror(VLMDesign& design, const std::filesystem::path& url,
                                               VLMError* error) noexcept;

/// The same from bytes in memory, with the extension of the file's name. May throw std::bad_alloc.
[[nodiscard]] bool readJef(VLMDesign& design, std::span<const std::uint8_t> file, std::string_view extension,
                           VLMError* error);

}  // namespace velamo
