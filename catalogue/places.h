#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace velamo {

/// Whether `path` is `top` or lies below it.
[[nodiscard]] bool isWithin(const std::filesystem::path& path, const std::filesystem::path& top);

/// Whether there is anything at the path. What cannot be looked at may be there.
[[nodiscard]] bool isThere(const std::filesystem::path& path);

/// Whether an empty folder on the disk `device` is a mount point that waits for the one on which it was before
/// (nothing: nobody knows). An emptied folder is where it was.
[[nodiscard]] bool waitsForDisk(std::uint64_t device, std::optional<std::uint64_t> before) noexcept;

/// Tells which folders are on disks that are away: somebody may bring them back.
class AwayPlaces {
public:
    /// `roots`: the folders that are indexed with all that lies below them.
    explicit AwayPlaces(std::vector<std::filesystem::path> roots);

    /// Whether the folder, which was on the disk `device`, is away: it lies in an indexed folder that is not there, or
    /// in a mount point that waits for that disk. Each folder is looked at once.
    [[nodiscard]] bool contains(const std::filesystem::path& folder, std::optional<std::uint64_t> device);

private:
    [[nodiscard]] bool isAway(const std::filesystem::path& folder, std::optional<std::uint64_t> device) const;

    std::vector<std::filesystem::path> missingRoots_;
    std::unordered_map<std::string, bool> known_;
};

}  // namespace velamo
