#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
#include <system_error>
#include <vector>

namespace velamo {

/// The bytes of a regular file, read once and whole. A folder, pipe, device, missing or unreadable file reads as no
/// bytes, and never blocks; a file that shrinks while it is read gives what was there. May throw std::bad_alloc.
[[nodiscard]] std::vector<std::uint8_t> readWholeFile(const std::filesystem::path& path);

/// Puts `bytes` at `path` in one step: a file without a name is written in the same folder, flushed to the disk and
/// named, so that the old or the new file is there, whole, at any moment, whatever becomes of the process. (To replace
/// a file it has the name ".<file name>.velamo" for an instant; if the process is killed then, the next call for the
/// same path takes that away. On file systems without nameless files it has a name, ".velamo-" and numbers, all the
/// time, and stays when the process is killed. SIGINT, SIGTERM and SIGHUP wait meanwhile: see InterruptionPause.)
///
/// A link's target is replaced, not the link. An existing file's owner, group, permissions, access list and attributes
/// are kept as far as the system and the file system allow; a group that cannot be kept hands none of its permissions
/// to another. What is no regular file stays: EISDIR for a folder, EINVAL for a pipe or device. On failure the target
/// is untouched, nothing is left beside it and the system's error is returned.
[[nodiscard]] std::error_code replaceFile(const std::filesystem::path& path, std::span<const std::uint8_t> bytes);

/// Writes `bytes` into the empty file that is there, for somebody who keeps it open and reads on in this very one. On
/// failure it is empty again and the system's error is returned: EEXIST where the file has bytes already, EINVAL where
/// it is no regular file.
[[nodiscard]] std::error_code fillEmptyFile(const std::filesystem::path& path,
                                            std::span<const std::uint8_t> bytes) noexcept;

}  // namespace velamo
