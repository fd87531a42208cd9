#pragma once

#include <filesystem>

#include "velamo/platform/system/user.h"
#include "velamo/private_api.h"

namespace velamo {

/// The folder for data that programs keep for the user: $XDG_DATA_HOME where that is an absolute path, else
/// "~/.local/share". An empty path when there is no home folder either.
[[nodiscard]] VELAMO_PRIVATE_API std::filesystem::path userDataFolder(
    const Environment& environment = processEnvironment);

/// The folder for what programs can make again: $XDG_CACHE_HOME where that is an absolute path, else "~/.cache".
[[nodiscard]] VELAMO_PRIVATE_API std::filesystem::path userCacheFolder(
    const Environment& environment = processEnvironment);

}  // namespace velamo
