#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace velamo {

/// A file's location as URLs have it: percent-encoded, so that any byte of the path survives, with "file://" before one
/// that is absolute.
[[nodiscard]] std::string locationText(const std::filesystem::path& path);

/// The path that such a text stands for. Nothing for a URL of another scheme or another machine, and where a percent
/// sign introduces no byte, or one of zero.
[[nodiscard]] std::optional<std::filesystem::path> pathOfLocation(std::string_view url);

}  // namespace velamo
