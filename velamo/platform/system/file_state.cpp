#include "velamo/platform/system/file_state.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <limits>
#include <utility>

#include "velamo/platform/system/descriptor.h"
#include "velamo/platform/system/files.h"
#include "velamo/platform/system/system_call.h"
#include "velamo/platform/system/system_state.h"

namespace velamo {

namespace {

/// Disks keep times of thousands of years, and the counter holds those from 1677 to 2262: the others count as the
/// nearest of these.
std::int64_t nanosecondsOf(const timespec& time) noexcept {
    using Limits = std::numeric_limits<std::int64_t>;
    constexpr std::int64_t nanosecondsInSecond = 1'000'000'000;
    constexpr std::int64_t mostSeconds = Limits::max() / nanosecondsInSecond;
    const std::int64_t seconds = time.tv_sec;
    if (seconds >= mostSeconds) return Limits::max();
    if (seconds < -mostSeconds) return Limits::min();
    return seconds * nanosecondsInSecond + time.tv_nsec;
}

}  // namespace

FileState stateFromSystem(const struct stat& status) noexcept {
#ifdef __APPLE__
    const timespec& modified = status.st_mtimespec;
#else
    const timespec& modified = status.st_mtim;
#endif
    return {.kind = S_ISREG(status.st_mode)   ? FileKind::regular
                    : S_ISDIR(status.st_mode) ? FileKind::folder
                                              : FileKind::other,
            .size = status.st_size,
            .modified = nanosecondsOf(modified)};
}

FileState stateOfFile(const std::filesystem::path& path, std::error_code& error) noexcept {
    struct stat status = {};
    error.clear();
    if (::stat(path.c_str(), &status) == 0) return stateFromSystem(status);
    error.assign(errno, std::generic_category());
    return {};
}

std::optional<FileIdentity> identityOfFile(const std::filesystem::path& path) noexcept {
    struct stat status = {};
    if (::stat(path.c_str(), &status) != 0) return std::nullopt;
    return FileIdentity{static_cast<std::uint64_t>(status.st_dev), static_cast<std::uint64_t>(status.st_ino)};
}

std::error_code reasonAgainstReading(const FileState& state) noexcept {
    if (state.kind == FileKind::folder) return std::make_error_code(std::errc::is_a_directory);
    if (state.kind == FileKind::other) return std::make_error_code(std::errc::invalid_argument);
    if (std::cmp_greater(state.size, mostBytesOfFile)) return std::make_error_code(std::errc::file_too_large);
    return {};
}

std::error_code reasonAgainstReading(const std::filesystem::path& path) noexcept {
    std::error_code error;
    const FileState state = stateOfFile(path, error);
    if (!error) error = reasonAgainstReading(state);
    if (error) return error;
    const Descriptor file(
        uninterrupted([&] { return ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC); }));
    return file.isOpen() ? std::error_code() : lastSystemError();
}

}  // namespace velamo
