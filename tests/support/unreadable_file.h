#pragma once

#include <filesystem>

namespace velamo::test {

/// A regular file that can be opened, and whose first byte cannot be read: what lies at a process's address 0. Linux
/// alone has one.
inline constexpr const char* unreadableFile = "/proc/self/mem";
inline bool hasUnreadableFile() {
    return std::filesystem::exists(unreadableFile);
}

}  // namespace velamo::test
