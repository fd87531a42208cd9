#pragma once

#include <cstdint>
#include <filesystem>
#include <set>
#include <system_error>

namespace velamo {

/// Removes the marks by which file managers remember that they could make no picture of a file, so that they try again:
/// those of the given files below `folder`, "thumbnails/fail" among the user's caches. How many there were; `failure`
/// is the system's reason where some could not be looked at or removed, else cleared.
[[nodiscard]] std::int64_t forgetFailedThumbnails(const std::filesystem::path& folder,
                                                  const std::set<std::filesystem::path>& files,
                                                  std::error_code& failure);

}  // namespace velamo
