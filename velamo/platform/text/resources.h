#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "velamo/private_api.h"

namespace velamo {

/// The folders that may hold resources, best first: $VELAMO_RESOURCES, then beside the program or library that holds
/// this code (a bundle's and an installation's layout, which a build tree has too). There is no other place.
[[nodiscard]] VELAMO_PRIVATE_API std::vector<std::filesystem::path> resourceFolders();

/// The folders where an installation or a bundle keeps the resources of the program or library in `folder`.
[[nodiscard]] std::vector<std::filesystem::path> resourceFoldersBeside(const std::filesystem::path& folder);

/// Finds and reads resources in given folders for given languages. What was read stays for the life of the object and
/// does not change; a missing or damaged resource counts as empty, and one that the system could not read this time is
/// a std::system_error, since names and colours would be lost with it. Safe to use from many threads.
class Resources {
public:
    Resources(std::vector<std::filesystem::path> folders, std::vector<std::string> languages);
    ~Resources();
    Resources(const Resources&) = delete;
    Resources& operator=(const Resources&) = delete;

    /// The resources of this process: resourceFolders() in languagesOfUser(), as found on first use.
    static const Resources& ofProcess();

    /// The text of `key` in the table (the file "<language>.lproj/<table>.strings") of the first language that has the
    /// key, or `fallback`. A table whose name is no plain file name is empty.
    [[nodiscard]] std::string text(std::string_view key, std::string_view table, std::string_view fallback) const;

    /// The path of the first "<folder>/<name>" that is a regular file, or an empty path. A name that would lead out of
    /// the folders (an absolute one, or one with "..") finds nothing.
    [[nodiscard]] std::filesystem::path find(const std::filesystem::path& name) const;

private:
    struct State;
    std::unique_ptr<State> state_;
};

/// The text of `key` in the table of the process's resources, or `fallback`.
[[nodiscard]] std::string localizedText(std::string_view key, std::string_view table, std::string_view fallback);

}  // namespace velamo
