#pragma once

#include <filesystem>
#include <span>
#include <string>

#include "cli/console.h"

namespace velamo {

/// Removes what the catalogue knows of the folders, or single designs, and keeps them up to date no longer. The files
/// themselves stay.
[[nodiscard]] ExitStatus forget(const std::filesystem::path& catalogue, std::span<const std::string> places,
                                const Console& console);

}  // namespace velamo
