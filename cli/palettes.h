#pragma once

#include <filesystem>
#include <span>

#include "cli/console.h"

namespace velamo {

/// Lists the palettes in the resource folders by name, each with its colours in file order.
[[nodiscard]] ExitStatus palettes(std::span<const std::filesystem::path> resourceFolders, const Console& console);

/// The same as a JSON list: "name", "displayName", "count" and "colors", each with "key", "name" and "color" (red,
/// green, blue from 0 to 1).
[[nodiscard]] ExitStatus palettesAsJson(std::span<const std::filesystem::path> resourceFolders, const Console& console);

}  // namespace velamo
