#pragma once

#include <cstdint>
#include <filesystem>
#include <string_view>
#include <vector>

#include "velamo/api.h"
#include "velamo/formats/saving.h"
#include "velamo/model/design.h"

namespace velamo {

/// Writes the design to a file; the extension of its name, in any case, decides the format. The design takes the file's
/// name, but keeps its location. Its moves are fitted to the format first (see optimizeJumpsFor), then the format's
/// writer makes the file and sets type, version and whatever else the design has in common with what the file holds:
/// see its own header. The file is replaced in one step: on failure the old one is there, untouched.
///
/// After success the thread side file beside the design's location, the file that it was read from, is written when
/// useThreadFile is set, else removed. A design without a location has none.
///
/// False on failure, with 13 (no threads), 14 (no stitches), 50 (we do not write such files; a line in the system's log
/// says so too), 52 (moves that are not finite, or far too large, could not be cut; the writer has run, but its file
/// is not saved), or the writer's or the system's own error in `error`, when that is not null. From 50 on the design
/// has its new name; what fitting and writer did to it stays.
[[nodiscard]] VELAMO_API bool exportDesignToURLerror(VLMDesign& design, const std::filesystem::path& url,
                                                     VLMError* error, const ExportOptions& options = {}) noexcept;

/// The same without the disk: `bytes` becomes what the file would hold, and stays as it is on failure. The extension
/// ("pes", in any case) decides the format. The design keeps its name, and no side file is touched: where the format
/// holds no threads of one's own, threadFileWith gives what belongs beside the file. `options.save` is not asked.
[[nodiscard]] VELAMO_API bool exportDesignToBytes(VLMDesign& design, std::string_view extension,
                                                  std::vector<std::uint8_t>& bytes, VLMError* error,
                                                  const ExportOptions& options = {}) noexcept;

}  // namespace velamo
