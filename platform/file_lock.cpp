#include "platform/file_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace velamo {
namespace {

[[noreturn]] void throwLastError() {
    throw std::system_error(errno, std::generic_category());
}

bool lock(int descriptor, int how) noexcept {
    int result = 0;
    do result = ::flock(descriptor, how);
    while (result != 0 && errno == EINTR);
    return result == 0;
}

}  // namespace

FileLock::FileLock(const std::filesystem::path& file, const std::function<void()>& onWaiting)
    : descriptor_(::open(file.c_str(), O_RDWR | O_CREAT | O_NONBLOCK | O_NOCTTY | O_CLOEXEC, 0666)) {
    if (descriptor_ < 0) throwLastError();
    if (lock(descriptor_, LOCK_EX | LOCK_NB)) return;
    if (errno == EWOULDBLOCK) {
        onWaiting();
        if (lock(descriptor_, LOCK_EX)) return;
    }
    const int code = errno;
    ::close(descriptor_);
    throw std::system_error(code, std::generic_category());
}

FileLock::~FileLock() {
    ::close(descriptor_);
}

}  // namespace velamo
