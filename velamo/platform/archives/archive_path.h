#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace velamo {

/// Whether a file's name is that of an archive: .zip, .7z, .rar, .tar, or a compressed .tar (.tar.gz, .tgz and their
/// like), in any case.
[[nodiscard]] bool hasArchiveName(const std::filesystem::path& path);

/// A path that leads into an archive, in its two parts.
struct ArchivePath {
    std::filesystem::path archive;
    std::string member;  // its location in the archive: no slash at its ends
};

/// The parts of a path that runs through an archive: a regular file, links followed, with an archive's name. Nothing
/// where it leads elsewhere, or ends at the archive. The file system decides: a folder "x.zip" is a folder.
[[nodiscard]] std::optional<ArchivePath> pathThroughArchive(const std::filesystem::path& path);

}  // namespace velamo
