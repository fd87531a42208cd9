#pragma once

#include <filesystem>
#include <span>
#include <string>

#include "cli/console.h"
#include "cli/reading.h"

namespace velamo {

/// Describes each design in a few lines for a person, with an empty line between two, and below a small picture of it
/// where that is asked for.
[[nodiscard]] ExitStatus info(std::span<const std::string> files, bool withPicture, const ReadingOptions& reading,
                              const Console& console);

/// A JSON list with an object for each file, in their order: "file", "width" and "height" in millimetres, "stitches"
/// and "colors" as the indexer stores them, and "statistics"; or "file" and "error".
[[nodiscard]] ExitStatus infoAsJson(std::span<const std::string> files, const ReadingOptions& reading,
                                    const Console& console);

}  // namespace velamo
