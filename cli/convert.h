#pragma once

#include <cstddef>
#include <filesystem>
#include <string>

#include "cli/console.h"
#include "cli/reading.h"
#include "velamo/formats/saving.h"

namespace velamo {

struct ConvertRequest {
    std::filesystem::path source;
    std::filesystem::path target;
    ExportOptions options;
    bool isDumped = false;
    ReadingOptions reading{};
};

/// Imports the design and saves it to the target, whose extension decides the format, as saveDesign does. Where it is
/// dumped, prints the design as it is in memory afterwards, whether that went well or not.
[[nodiscard]] ExitStatus convert(const ConvertRequest& request, const Console& console);

struct ConvertAllRequest {
    std::filesystem::path folder;
    std::string extension;  // of a format that can be written
    std::filesystem::path outFolder;
    ExportOptions options;
    std::size_t jobs = 1;
    ReadingOptions reading{};
};

/// Converts every design in the folder and below it, several at a time, into the same places below `outFolder`. Designs
/// of one name, such as rose.dst and rose.exp, keep their extension in the new one, rose.dst.pes; so does one whose new
/// name belongs to a design of the folder (see planConversions). What lies below `outFolder` is not read. A failure
/// stops none of the others; all are listed at the end, behind what the files lost. The folder's files stay as they
/// are; side files are kept in step beside the new ones, see saveDesign.
[[nodiscard]] ExitStatus convertAll(const ConvertAllRequest& request, const Console& console);

}  // namespace velamo
