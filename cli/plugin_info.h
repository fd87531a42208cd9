#pragma once

#include <span>
#include <string>

#include "cli/console.h"
#include "cli/reading.h"

namespace velamo {

/// Prints the attributes that the desktop's indexer gets of each file from the importer plug-in, which is loaded as the
/// indexer does it, in a process that may only read. `isJson`: as a list with an object for each file.
[[nodiscard]] ExitStatus pluginInfo(std::span<const std::string> files, bool isJson, const ReadingOptions& reading,
                                    const Console& console);

}  // namespace velamo
