#pragma once

#include <filesystem>

#include "velamo/private_api.h"

namespace velamo {

/// Makes the folder, and those above it that are not there, for the user alone. Throws std::system_error when one
/// cannot be made; a folder that is there stays as it is.
VELAMO_PRIVATE_API void makePrivateFolders(const std::filesystem::path& folder);

/// Makes an empty file for the user alone, where there is none. Throws std::system_error when it cannot be made, or one
/// that is there cannot be read.
VELAMO_PRIVATE_API void makePrivateFile(const std::filesystem::path& file);

/// Makes a new folder for the user alone, which the caller removes. Throws std::system_error when it cannot be made.
[[nodiscard]] VELAMO_PRIVATE_API std::filesystem::path makePrivateTemporaryFolder();

/// Takes all rights to the file or folder from those who are neither its owner nor in its group; does nothing where
/// there is none, or where it is another user's.
VELAMO_PRIVATE_API void closeToOthers(const std::filesystem::path& path) noexcept;

}  // namespace velamo
