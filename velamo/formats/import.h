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

/// Fills `design` from an embroidery file; the extension of its name, in any case, decides the format. Name and
/// location are set and both lists emptied first; other fields keep their values until the format's reader sets them.
/// After the reader, whether it succeeded or not, the thread side file is asked for better threads (see thread_file.h)
/// and useThreadFile set to its answer. On success the display range covers all stitches.
///
/// False on failure, with 10 (unknown extension; the side file is not asked), 11 (no stitches), 12 (no threads) or the
/// reader's own error in `error`, when that is not null. A file that cannot be opened is one without bytes for its
/// reader, and a side file that cannot be read is none, unless the options say otherwise. Where reading the design's
/// file breaks off, or it has more than 256 MB, which no design has, the error is the system's. The design then keeps
/// what was set so far.
[[nodiscard]] VELAMO_API bool importDesignFromURLerror(VLMDesign& design, const std::filesystem::path& url,
                                                       VLMError* error, const ImportOptions& options = {}) noexcept;

/// The same from the bytes that such a file holds, without the disk. The extension ("dst", in any case) decides the
/// format; `sideFile` holds the bytes of the thread side file, if there is one. Name and location stay as they are. The
/// bytes have to live as long as the call. Any number of threads may read at once, each into its own design.
[[nodiscard]] VELAMO_API bool importDesignFromBytes(VLMDesign& design, std::span<const std::uint8_t> file,
                                                    std::string_view extension, VLMError* error,
                                                    std::span<const std::uint8_t> sideFile = {}) noexcept;
/// The same for a format at hand.
[[nodiscard]] VELAMO_API bool importDesignFromBytes(VLMDesign& design, std::span<const std::uint8_t> file,
                                                    const Format& format, VLMError* error,
                                                    std::span<const std::uint8_t> sideFile = {}) noexcept;

}  // namespace velamo
