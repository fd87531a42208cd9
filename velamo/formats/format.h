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

/// One kind of embroidery file, known by the extension of its name.
struct VELAMO_API Format {
    using Reader = bool (*)(VLMDesign& design, const std::filesystem::path& url, VLMError* error,
                            const ImportOptions& options) noexcept;
    using Writer = bool (*)(VLMDesign& design, const std::filesystem::path& url, VLMError* error,
                            const ExportOptions& options) noexcept;

    std::string_view extension;  // lower case
    std::string_view type;       // the design type that its reader sets
    Reader reader;
    Writer writer = nullptr;  // null: such files are only read
};

/// All formats, in the order in which import tells them apart.
[[nodiscard]] VELAMO_API std::span<const Format> allFormats() noexcept;

/// The format of files with the extension, which is compared without regard to case; null when it is none of ours.
[[nodiscard]] VELAMO_API const Format* formatWithExtension(std::string_view extension) noexcept;

/// The last component of the path; a slash behind it changes nothing.
[[nodiscard]] VELAMO_API std::filesystem::path fileNameOf(const std::filesystem::path& url);

/// The extension of a file name without its dot, in lower case, or "".
[[nodiscard]] VELAMO_API std::string extensionOf(const std::filesystem::path& url);

/// Whether a file is a design by its name: whether its extension is one of ours.
[[nodiscard]] VELAMO_API bool hasDesignName(const std::filesystem::path& url);

}  // namespace velamo
