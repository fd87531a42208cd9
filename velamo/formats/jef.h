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

/// Janome JEF files and their variant JEF+, little-endian:
///   offset     bytes  meaning
///   0          4      offset s of the stitches
///   4          1      version, signed (JEF+: tenfold)
///   8          14     date and time, digits from the year to the second; two zero bytes
///   24         4      number of threads n
///   28         4      length of the stitches in pairs of bytes, with the end mark
///   32         4      Janome code of the hoop
///   36         16     how far the design reaches from its start: left, down, right, up; 64 zero bytes
///   116        4n     thread indices
///   116 + 4n   4n     thread tensions
///   s                 stitches, to the end (see janome.h)

/// Fills `design` from the JEF or JEF+ file at `url`; its extension tells which of the two it is. Type, version and
/// hoop are set as soon as the header is read; then threads, stitches and bounds. Threads that the file lacks for its
/// colour changes are added. Returns false on failure, with 20 (fewer than 52 bytes, or unreadable), 21 (thread tables
/// incomplete), 23 (no stitches at the offset) or 24 (more threads than colour blocks, or none at all; everything is in
/// the design then) in `error`, when that is not null.
[[nodiscard]] bool importJefDesignFromURLerror(VLMDesign& design, const std::filesystem::path& url, VLMError* error,
                                               const ImportOptions& options = {}) noexcept;

/// The same from bytes in memory, with the extension of the file's name. May throw std::bad_alloc.
[[nodiscard]] bool readJef(VLMDesign& design, std::span<const std::uint8_t> file, std::string_view extension,
                           VLMError* error);

/// Writes the design, whose moves were fitted to JEF files, to the JEF file at `url`. Threads of other palettes become
/// the nearest of the palette "Janome"; one that Janome machines do not know is written as "220". Moves become whole,
/// with the fractions carried into the next one; of one beyond a signed byte the lower eight bits are kept. Of the
/// options the date is used. After success type is "JEF", version 10, and the design has the hoop and, unless
/// useThreadFile is set, the threads that the file holds. Returns false on failure, with an error of the hoop (see
/// hoop_choice.h; nothing is changed then) or the system's own (the design has its new hoop and threads) in `error`,
/// when that is not null.
[[nodiscard]] bool exportJefDesignToURLerror(VLMDesign& design, const std::filesystem::path& url, VLMError* error,
                                             const ExportOptions& options = {}) noexcept;

/// The bytes of that file, or nullopt on failure. Sets the design's hoop and threads. May throw std::bad_alloc.
[[nodiscard]] std::optional<std::vector<std::uint8_t>> writeJef(VLMDesign& design, const ExportOptions& options,
                                                                VLMError* error);

}  // namespace velamo
