#pragma once

#include <cstdint>
#include <filesystem>
#include <span>

#include "velamo/formats/saving.h"

namespace velamo {

/// Hands a finished file to where the options say. Returns false on failure, with the reason in `error`, when that is
/// not null.
[[nodiscard]] bool saveFile(const std::filesystem::path& url, std::span<const std::uint8_t> file,
                            const ExportOptions& options, VLMError* error);

}  // namespace velamo
