#pragma once

#include <filesystem>
#include <functional>

#include "cli/console.h"

namespace velamo {

/// The catalogue of the user: "velamo/catalogue.sqlite" in the folder for user data; empty where there is no such
/// folder.
[[nodiscard]] std::filesystem::path catalogueOfUser();

/// Runs what works with the catalogue in `file`, and reports what it throws as a problem of that file.
[[nodiscard]] ExitStatus withCatalogue(const std::filesystem::path& file, const Console& console,
                                       const std::function<ExitStatus()>& body);

}  // namespace velamo
