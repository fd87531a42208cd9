#include "platform/set_aside.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <string>

namespace velamo {
namespace {

/// 0, or the system's error; EEXIST where the new name is taken.
using Rename = int (*)(const char* from, const char* to) noexcept;

int resultOf(int returned) noexcept {
    return returned == 0 ? 0 : errno;
}

int renameWithoutReplacing(const char* from, const char* to) noexcept {
#ifdef RENAME_NOREPLACE
    return resultOf(::renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE));
#else
    static_cast<void>(from);
    static_cast<void>(to);
    return ENOSYS;
#endif
}

/// A second name is never given over another file, either.
int renameByLinking(const char* from, const char* to) noexcept {
    if (::linkat(AT_FDCWD, from, AT_FDCWD, to, 0) != 0) return errno;
    if (::unlink(from) == 0) return 0;
    const int failure = errno;
    ::unlink(to);
    return failure;
}

/// For file systems that know neither: another program could take the name between the look and the renaming.
int renameWhereFree(const char* from, const char* to) noexcept {
    struct stat status = {};
    if (::lstat(to, &status) == 0) return EEXIST;
    return errno == ENOENT ? resultOf(::rename(from, to)) : errno;
}

/// Whether this says that the file system cannot do it in this way.
bool isRefusedWay(int error) noexcept {
    return error == EINVAL || error == ENOSYS || error == ENOTSUP || error == EPERM;
}

int renameTo(const char* from, const char* to) noexcept {
    int error = 0;
    for (const Rename rename : {renameWithoutReplacing, renameByLinking, renameWhereFree}) {
        error = rename(from, to);
        if (!isRefusedWay(error)) break;
    }
    return error;
}

}  // namespace

std::error_code setAside(const std::filesystem::path& path, std::filesystem::path& newName) {
    constexpr int mostNames = 10000;
    for (int number = 1; number <= mostNames; ++number) {
        std::filesystem::path name = path;
        name += number == 1 ? ".old" : ".old" + std::to_string(number);
        const int error = renameTo(path.c_str(), name.c_str());
        if (error == EEXIST) continue;
        if (error == 0) newName = std::move(name);
        return {error, std::generic_category()};
    }
    return std::make_error_code(std::errc::file_exists);
}

}  // namespace velamo
