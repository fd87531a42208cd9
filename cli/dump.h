#pragma once

#include <filesystem>

#include "cli/console.h"

namespace velamo {

/// Writes the design in the file as JSON. Where the import fails, what was read so far is written, too.
[[nodiscard]] ExitStatus dump(const std::filesystem::path& file, const Console& console);

}  // namespace velamo
