#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <system_error>

#include "velamo/private_api.h"

namespace velamo {

/// What a path leads to. `other`: a pipe, a socket or a device.
enum class FileKind : std::uint8_t { regular, folder, other };

/// What the system tells of a file without opening it.
struct FileState {
    FileKind kind = FileKind::other;
    std::int64_t size = 0;      // bytes
    std::int64_t modified = 0;  // nanoseconds since the start of 1970, the nearest there are
    friend bool operator==(const FileState&, const FileState&) = default;
};

/// The state of what `path` leads to, links followed. `error` is cleared on success, else holds the system's reason.
[[nodiscard]] VELAMO_PRIVATE_API FileState stateOfFile(const std::filesystem::path& path,
                                                       std::error_code& error) noexcept;

/// What tells files and folders apart whichever paths lead there, be it by links or because a folder is mounted twice.
struct FileIdentity {
    std::uint64_t device = 0;
    std::uint64_t number = 0;
    friend bool operator==(const FileIdentity&, const FileIdentity&) = default;
    friend bool operator<(const FileIdentity& one, const FileIdentity& other) noexcept {
        return one.device != other.device ? one.device < other.device : one.number < other.number;
    }
};

/// The identity of what `path` leads to, links followed, or nullopt when the system does not tell.
[[nodiscard]] VELAMO_PRIVATE_API std::optional<FileIdentity> identityOfFile(const std::filesystem::path& path) noexcept;

/// Why a file in this state is not read: EISDIR for a folder, EINVAL for a pipe, socket or device, EFBIG for a file of
/// more than mostBytesOfFile (see files.h); no error when it is.
[[nodiscard]] VELAMO_PRIVATE_API std::error_code reasonAgainstReading(const FileState& state) noexcept;

/// Why the file cannot be read: the system's reason, or that of its state; no error when it can. Never waits.
[[nodiscard]] VELAMO_PRIVATE_API std::error_code reasonAgainstReading(const std::filesystem::path& path) noexcept;

}  // namespace velamo
