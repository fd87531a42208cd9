#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
#include <string_view>

#include "velamo/api.h"
#include "velamo/formats/loading.h"
#include "velamo/formats/saving.h"
#include "velamo/model/design.h"

namespace velamo {

/// A kind of embroidery file, recognised by the extension of the file's name.
struct VELAMO_API Format {
    /// Fills a design, whose lists are empty, from the file at `url` or from `options.bytes`. Ignores the side file.
    using Reader = bool (*)(VLMDesign& design, const std::filesystem::path& url, VLMError* error,
                            const ImportOptions& options) noexcept;
    /// Writes a design, whose moves fit the format already, to `url` or to `options.save`. Ignores the side file.
    using Writer = bool (*)(VLMDesign& design, const std::filesystem::path& url, VLMError* error,
                            const ExportOptions& options) noexcept;

    std::string_view extension;  // lower case
    std::string_view type;       // the design type that its reader sets
    Reader reader;
    Writer writer = nullptr;  // null: such files are only read
};

/// Returns all formats; the span stays valid for the life of the process.
[[nodiscard]] VELAMO_API std::span<const Format> allFormats() noexcept;

/// Returns the format with the extension (without its dot, in any case), or null when we do not know it.
[[nodiscard]] VELAMO_API const Format* formatWithExtension(std::string_view extension) noexcept;

/// Returns the last component of the path, ignoring a slash at its end.
[[nodiscard]] VELAMO_API std::filesystem::path fileNameOf(const std::filesystem::path& url);

/// Returns the extension of a file name in lower case and without its dot, or "" when it has none.
[[nodiscard]] VELAMO_API std::string extensionOf(const std::filesystem::path& url);

/// Returns whether a file's name is that of a design, that is, whether it has an extension that we know.
[[nodiscard]] VELAMO_API bool hasDesignName(const std::filesystem::path& url);

}  // namespace velamo
