#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <unordered_map>
#include <vector>

namespace velamo {

/// Whether `path` is `top` or lies below it.
[[nodiscard]] bool isWithin(const std::filesystem::path& path, const std::filesystem::path& top);

/// Whether there is anything at the path. What cannot be looked at may be there.
[[nodiscard]] bool isThere(const std::filesystem::path& path);

/// Tells which folders are on disks that are away: somebody may bring them back.
class AwayPlaces {
public:
    /// `roots`: the folders that are indexed with all that lies below them.
    explicit AwayPlaces(std::vector<std::filesystem::path> roots);

    /// Whether the folder, which was on the disk `device` (0: nobody knows), is away: it lies in an indexed folder that
    /// is not there, or in an empty one on another disk, as a mount point is that waits for its own. Each folder is
    /// looked at once.
    [[nodiscard]] bool contains(const std::filesystem::path& folder, std::uint64_t device);

private:
    [[nodiscard]] bool isAway(const std::filesystem::path& folder, std::uint64_t device) const;

    std::vector<std::filesystem::path> missingRoots_;
    std::unordered_map<std::string, bool> known_;
};

}  // namespace velamo
