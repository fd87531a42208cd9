#pragma once

#include <filesystem>
#include <span>
#include <string_view>

#include "model/design.h"

namespace velamo {

/// One kind of embroidery file, known by the extension of its name.
struct Format {
    using Reader = bool (*)(VLMDesign& design, const std::filesystem::path& url, VLMError* error) noexcept;

    std::string_view extension;  // lower case
    std::string_view type;       // the design type that its reader sets
    Reader reader;
};

/// All formats, in the order in which import tells them apart.
[[nodiscard]] std::span<const Format> allFormats() noexcept;

/// The format of files with the extension, which is compared without regard to case; null when it is none of ours.
[[nodiscard]] const Format* formatWithExtension(std::string_view extension) noexcept;

/// The extension of a file name without its dot, or "".
[[nodiscard]] std::string extensionOf(const std::filesystem::path& url);

}  // namespace velamo
