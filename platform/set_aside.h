#pragma once

#include <filesystem>
#include <system_error>

namespace velamo {

/// Gives what is at `path` the name with ".old" behind it, or with ".old2", ".old3" and so on, the first that is free:
/// nothing is overwritten, be it made in this very moment. A link is renamed itself. `newName` gets the new path; on
/// failure the file keeps its name, and the system's error is returned.
[[nodiscard]] std::error_code setAside(const std::filesystem::path& path, std::filesystem::path& newName);

}  // namespace velamo
