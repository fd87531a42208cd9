#pragma once

#include <filesystem>
#include <optional>

#include "cli/console.h"

namespace velamo {

struct RefreshRequest {
    std::filesystem::path catalogue;
    std::optional<std::filesystem::path> folder;  // absolute; only designs in it or below
    bool isJson = false;
};

/// Has the searches of the desktops look again at all designs that are in the catalogue and still there, and has file
/// managers try again to draw those that they could not. Says of each what was done, or that it is not there; a failure
/// stops none of the others.
[[nodiscard]] ExitStatus refreshDesktop(const RefreshRequest& request, const Console& console);

}  // namespace velamo
