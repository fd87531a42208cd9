#pragma once

#include <filesystem>

#include "cli/console.h"
#include "cli/reading.h"

namespace velamo {

/// Writes the design in the file as JSON. Where the import fails, what was read so far is written, too.
[[nodiscard]] ExitStatus dump(const std::filesystem::path& file, const ReadingOptions& reading, const Console& console);

}  // namespace velamo
