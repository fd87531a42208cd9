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

/// Puts `bytes` at `path` in one step: a temporary file in the same folder is written, flushed to the disk and renamed
/// over the target, so that the old or the new file is there, whole, at any moment. A link's target is replaced, not
/// the link; an existing file's permissions are kept. On failure the temporary file is removed, the target untouched
/// and the system's error returned.
[[nodiscard]] std::error_code replaceFile(const std::filesystem::path& path, std::span<const std::uint8_t> bytes);

}  // namespace velamo
