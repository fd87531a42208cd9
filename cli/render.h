#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "cli/console.h"
#include "cli/reading.h"
#include "velamo/render/design_picture.h"

namespace velamo {

struct RenderRequest {
    std::filesystem::path file;
    std::filesystem::path picture;       // .png, .svg or .pdf, in any case
    double scale = 1;                    // pixels for each tenth of a millimetre
    std::optional<std::int32_t> size;    // pixels of the longer side, in place of the scale
    DesignLook look;                     // its thread counts for nothing
    std::optional<std::int32_t> thread;  // the one to be drawn alone
    std::vector<std::string> commands;   // of the edit language, carried out before
    ReadingOptions reading{};
};

/// Draws the design into the file `picture`, which is replaced in one step. Whatever goes wrong leaves that as it was.
[[nodiscard]] ExitStatus render(const RenderRequest& request, const Console& console);

}  // namespace velamo
