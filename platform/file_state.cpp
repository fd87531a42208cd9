#include "platform/file_state.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <utility>

#include "platform/descriptor.h"
#include "platform/files.h"
#include "platform/system_call.h"
#include "platform/system_state.h"

namespace velamo {

FileState stateFromSystem(const struct stat& status) noexcept {
    constexpr std::int64_t nanosecondsInSecond = 1'000'000'000;
#ifdef __APPLE__
    const timespec& modified = status.st_mtimespec;
#else
    const timespec& modified = status.st_mtim;
#endif
    return {.kind = S_ISREG(status.st_mode)   ? FileKind::regular
                    : S_ISDIR(status.st_mode) ? FileKind::folder
                                              : FileKind::other,
            .size = status.st_size,
            .modified = std::int64_t{modified.tv_sec} * nanosecondsInSecond + modified.tv_nsec};
}

FileState stateOfFile(const std::filesystem::path& path, std::error_code& error) noexcept {
    struct stat status = {};
    error.clear();
    if (::stat(path.c_str(), &status) == 0) return stateFromSystem(status);
    error.assign(errno, std::generic_category());
    return {};
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
