#pragma once

#include <cstdint>
#include <filesystem>
#include <string_view>
#include <vector>

#include "velamo/api.h"
#include "velamo/formats/saving.h"
#include "velamo/model/design.h"

namespace velamo {

/// Writes the design to a file; the extension of the file's name, in any case, decides the format. The design takes the
/// file's name but keeps its location. Its moves are fitted to the format first (see optimizeJumpsFor). Then the
/// format's writer makes the file and sets the design's type, version and whatever else design and file have in common;
/// the writer's own header says what. The file is replaced in one step: on failure the old one is untouched.
///
/// After success the thread side file is brought up to date. It lies beside the design's location, the file that the
/// design was read from; a design without a location has none. It is written when useThreadFile is set, and removed
/// otherwise. Whether that worked is not reported.
///
/// Returns false on failure. `error`, unless null, then holds
///   13  The design has no threads.
///   14  The design has no stitches, or nothing but jumps.
///   50  We do not write files with this extension; a line in the system's log says so too.
///   52  Moves that are not finite or far too large could not be fitted. The writer has run, but its file is not saved.
/// or the error of the writer or of the system. A design without threads or stitches is unchanged then. Any other one
/// has its new name, and whatever the fitting and the writer did to it stays.
[[nodiscard]] VELAMO_API bool exportDesignToURLerror(VLMDesign& design, const std::filesystem::path& url,
                                                     VLMError* error, const ExportOptions& options = {}) noexcept;

/// The same without the disk: on success `bytes` is replaced by what the file would hold; on failure it stays as it is.
/// The extension ("pes", in any case) decides the format. The design keeps its name, and no side file is touched: for a
/// format that cannot hold a design's own threads, threadFileWith gives the bytes to keep beside the file.
/// `options.save` is not called. Error 50 is not logged.
[[nodiscard]] VELAMO_API bool exportDesignToBytes(VLMDesign& design, std::string_view extension,
                                                  std::vector<std::uint8_t>& bytes, VLMError* error,
                                                  const ExportOptions& options = {}) noexcept;

}  // namespace velamo
