#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
#include <string>

#include "model/error.h"

namespace velamo {

/// What a caller may want to say about a file that is written.
struct ExportOptions {
    /// The date and time that the file carries, where its format does so: 14 digits, year to second. Empty: now, by the
    /// user's clock.
    std::string dateText;
};

/// Puts a finished file at `url` in one step, as replaceFile does. False on failure, with the system's error.
[[nodiscard]] bool saveFile(const std::filesystem::path& url, std::span<const std::uint8_t> file, VLMError* error);

}  // namespace velamo
