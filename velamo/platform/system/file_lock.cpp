#include "velamo/platform/system/file_lock.h"

#include <fcntl.h>
#include <sys/file.h>

#include <cerrno>
#include <system_error>

#include "velamo/platform/system/system_call.h"

namespace velamo {
namespace {

constexpr mode_t forUser = 0600;

[[noreturn]] void throwLastError() {
    throw std::system_error(lastSystemError());
}

bool lock(const Descriptor& descriptor, int how) noexcept {
    return uninterrupted([&] { return ::flock(descriptor.number(), how); }) == 0;
}

}  // namespace

FileLock::FileLock(const std::filesystem::path& file, const std::function<void()>& onWaiting)
    : descriptor_(uninterrupted(
          [&] { return ::open(file.c_str(), O_RDWR | O_CREAT | O_NONBLOCK | O_NOCTTY | O_CLOEXEC, forUser); })) {
    if (!descriptor_.isOpen()) throwLastError();
    if (lock(descriptor_, LOCK_EX | LOCK_NB)) return;
    if (errno != EWOULDBLOCK) throwLastError();
    onWaiting();
    if (!lock(descriptor_, LOCK_EX)) throwLastError();
}

}  // namespace velamo
