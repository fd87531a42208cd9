#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
#include <string_view>

#include "velamo/api.h"
#include "velamo/formats/loading.h"
#include "velamo/model/design.h"

namespace velamo {

struct Format;

/// Fills `design` from an embroidery file; the extension of the file's name, in any case, decides the format. First
/// sets the design's name and location and empties both lists; other fields keep their values until the format's reader
/// sets them. After the reader, even if it failed, looks for better threads in the thread side file (see thread_file.h)
/// and sets useThreadFile to whether it had some. On success the display range covers all stitches. Any number of
/// threads may read at the same time, each into its own design.
///
/// Returns false on failure; the design then keeps what was set so far. `error`, unless null, then holds
///   10  The extension is unknown; the side file was not looked for.
///   11  The file holds no stitches.
///   12  The file holds no threads.
/// or the reader's own error. It holds the system's error when reading the file breaks off or the file has more than
/// 256 MB, which no design has. A file that cannot be opened counts as one without bytes, and a side file that cannot
/// be read as missing, unless the options say otherwise (see ImportOptions).
[[nodiscard]] VELAMO_API bool importDesignFromURLerror(VLMDesign& design, const std::filesystem::path& url,
                                                       VLMError* error, const ImportOptions& options = {}) noexcept;

/// The same from the bytes of a file, without the disk. The extension ("dst", in any case) decides the format;
/// `sideFile` holds the bytes of the thread side file, if there is one. Both only need to live as long as the call. The
/// design's name and location stay as they are.
[[nodiscard]] VELAMO_API bool importDesignFromBytes(VLMDesign& design, std::span<const std::uint8_t> file,
                                                    std::string_view extension, VLMError* error,
                                                    std::span<const std::uint8_t> sideFile = {}) noexcept;
/// The same for a format that is known already (see allFormats).
[[nodiscard]] VELAMO_API bool importDesignFromBytes(VLMDesign& design, std::span<const std::uint8_t> file,
                                                    const Format& format, VLMError* error,
                                                    std::span<const std::uint8_t> sideFile = {}) noexcept;

}  // namespace velamo
