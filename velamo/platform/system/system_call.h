#pragma once

#include <cerrno>
#include <system_error>

namespace velamo {

/// Makes a system call that gives -1 where it fails, and makes it again for as long as signals break it off.
template <class Call>
auto uninterrupted(const Call& call) noexcept {
    auto result = call();
    while (result == -1 && errno == EINTR) result = call();
    return result;
}

/// Why the last system call of this thread failed.
[[nodiscard]] inline std::error_code lastSystemError() noexcept {
    return {errno, std::generic_category()};
}

}  // namespace velamo
