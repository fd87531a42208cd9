#pragma once

#include <sys/stat.h>

#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

namespace velamo {

/// What a file has besides its name and its bytes, to be given to the one that replaces it: owner, group, permissions
/// and, on Linux, its access list and the attributes that users set. For the files of this folder alone.
class FileFeatures {
public:
    /// Those of the file at the path, or of a new file where there is none. `error` holds the system's reason where
    /// they cannot be told, EISDIR for a folder, EINVAL for a pipe or device; else it is cleared. May throw
    /// std::bad_alloc.
    FileFeatures(const std::filesystem::path& file, std::error_code& error);

    /// With which permissions the new file is to be made: those of the old one, or what the user's mask leaves of all.
    [[nodiscard]] mode_t permissions() const noexcept;
    /// The same where others see the new file at once: they may not open it before it has its group.
    [[nodiscard]] mode_t permissionsOfNamedFile() const noexcept;

    /// Returns false, with errno, when that fails. What the file system does not have, or the system does not allow, is
    /// left out; where group or access list cannot be kept, the group has no more permissions than everybody. Needs no
    /// memory.
    [[nodiscard]] bool giveTo(int descriptor) const noexcept;
    /// The same for what writing takes away: the system lets no file run as its owner or its group any longer when
    /// somebody writes into it.
    [[nodiscard]] bool giveAgainTo(int descriptor) const noexcept;

private:
    struct Attribute {
        std::string name;
        std::string value;
    };

    std::error_code readAttributes(const std::filesystem::path& file);
    void giveAttributes(int descriptor) const noexcept;
    [[nodiscard]] bool giveAccessList(int descriptor) const noexcept;

    bool isThere_ = false;
    struct stat status_ = {};
    std::vector<Attribute> attributes_;
    std::string accessList_;  // as the system keeps it; empty where there is none
};

/// Whether a call fails with this because a file system has no such thing, or the user may not do it, and not because
/// it went wrong.
[[nodiscard]] bool isRefusalOfFileSystem(int code) noexcept;

}  // namespace velamo
