#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "velamo/private_api.h"

namespace velamo {

/// A file's location as URLs have it: percent-encoded, so that any byte of the path survives, with "file://" before one
/// that is absolute.
[[nodiscard]] VELAMO_PRIVATE_API std::string locationText(const std::filesystem::path& path);

/// The path that such a text stands for. Returns nullopt for a URL of another scheme or another machine, and when a
/// percent sign introduces no byte or a zero byte.
[[nodiscard]] VELAMO_PRIVATE_API std::optional<std::filesystem::path> pathOfLocation(std::string_view url);

}  // namespace velamo
