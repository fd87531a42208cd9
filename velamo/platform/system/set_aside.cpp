#include "velamo/platform/system/set_aside.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <string>

#include "velamo/platform/system/files.h"
#include "velamo/platform/system/system_call.h"

namespace velamo {
namespace {

/// A path with ".old" behind it, then ".old2" and so on. Going on takes no memory.
class OldNames {
public:
    explicit OldNames(const std::filesystem::path& path) : name_(path.native() + ".old"), fixedSize_(name_.size()) {
        name_.reserve(fixedSize_ + digits_.size());
    }
    [[nodiscard]] const std::string& name() const noexcept { return name_; }
    /// False after the last one that is tried.
    [[nodiscard]] bool next() noexcept {
        constexpr int most = 10000;
        if (number_ == most) return false;
        const auto end = std::to_chars(digits_.begin(), digits_.end(), ++number_).ptr;
        name_.replace(fixedSize_, name_.npos, digits_.data(), static_cast<std::size_t>(end - digits_.data()));
        return true;
    }

private:
    std::array<char, 8> digits_{};
    std::string name_;
    std::size_t fixedSize_;
    int number_ = 1;
};

/// 0, or the system's error; EEXIST where the new name is taken.
using Rename = int (*)(const char* from, const char* to) noexcept;

int resultOf(int returned) noexcept {
    return returned == 0 ? 0 : errno;
}

int renameAtOnce(const char* from, const char* to) noexcept {
#ifdef RENAME_NOREPLACE
    return resultOf(uninterrupted([&] { return ::renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE); }));
#else
    static_cast<void>(from);
    static_cast<void>(to);
    return ENOSYS;
#endif
}

int unlinkFile(const char* name) noexcept {
    return resultOf(uninterrupted([name] { return ::unlink(name); }));
}

/// Gives a file, or a link itself, a second name. That is never given over another file, either.
int linkTo(const char* from, const char* to) noexcept {
    return resultOf(uninterrupted([&] { return ::linkat(AT_FDCWD, from, AT_FDCWD, to, 0); }));
}

int renameByLinking(const char* from, const char* to) noexcept {
    if (const int error = linkTo(from, to)) return error;
    const int failure = unlinkFile(from);
    if (failure != 0) unlinkFile(to);
    return failure;
}

/// For file systems that know neither: another program could take the name between the look and the renaming.
int renameWhereFree(const char* from, const char* to) noexcept {
    struct stat status = {};
    if (::lstat(to, &status) == 0) return EEXIST;
    return errno == ENOENT ? resultOf(uninterrupted([&] { return ::rename(from, to); })) : errno;
}

/// Whether this says that the file system cannot do it in this way.
bool isRefusedWay(int error) noexcept {
    return error == EINVAL || error == ENOSYS || error == ENOTSUP || error == EPERM || error == EMLINK;
}

/// Lets two files trade names.
int exchange(const char* one, const char* other) noexcept {
#ifdef RENAME_EXCHANGE
    return resultOf(uninterrupted([&] { return ::renameat2(AT_FDCWD, one, AT_FDCWD, other, RENAME_EXCHANGE); }));
#else
    static_cast<void>(one);
    static_cast<void>(other);
    return ENOSYS;
#endif
}

bool isSameFile(const char* one, const char* other) noexcept {
    struct stat status = {};
    struct stat otherStatus = {};
    return ::lstat(one, &status) == 0 && ::lstat(other, &otherStatus) == 0 && status.st_dev == otherStatus.st_dev &&
           status.st_ino == otherStatus.st_ino;
}

/// Takes the first of the names, from the present one on, that `give` finds free. 0, or an error.
template <class Give>
int takeFreeName(OldNames& names, const Give& give) noexcept {
    int error = give(names.name().c_str());
    while (error == EEXIST && names.next()) error = give(names.name().c_str());
    return error;
}

int renameAside(const char* path, OldNames& names) noexcept {
    return takeFreeName(names, [path](const char* name) { return renameWithoutReplacing(path, name); });
}

/// The old file has both names when the new one takes its place. What another program has put there just before comes
/// back with the exchange, and is set aside as well.
int replaceLinked(const char* whole, const char* path, OldNames& names) noexcept {
    int error = exchange(whole, path);
    if (error == 0) {
        if (isSameFile(whole, names.name().c_str())) return 0;
        error = renameAside(whole, names);
        if (error != 0) exchange(whole, path);
        return error;
    }
    if (isRefusedWay(error)) error = resultOf(uninterrupted([&] { return ::rename(whole, path); }));
    if (error != 0) unlinkFile(names.name().c_str());
    return error;
}

/// Where files have but one name, nothing is at the path for a moment.
int replaceMoved(const char* whole, const char* path, OldNames& names) noexcept {
    int error = renameAside(path, names);
    if (error != 0) return error;
    error = renameWithoutReplacing(whole, path);
    if (error != 0) static_cast<void>(renameWithoutReplacing(names.name().c_str(), path));
    return error;
}

int replaceWith(const char* whole, const char* path, OldNames& names) noexcept {
    const int error = takeFreeName(names, [path](const char* name) { return linkTo(path, name); });
    if (error == 0) return replaceLinked(whole, path, names);
    return isRefusedWay(error) ? replaceMoved(whole, path, names) : error;
}

}  // namespace

int renameWithoutReplacing(const char* from, const char* to) noexcept {
    int error = 0;
    for (const Rename rename : {renameAtOnce, renameByLinking, renameWhereFree}) {
        error = rename(from, to);
        if (!isRefusedWay(error)) break;
    }
    return error;
}

std::error_code setAside(const std::filesystem::path& path, std::filesystem::path& newName) {
    OldNames names(path);
    const int error = renameAside(path.c_str(), names);
    if (error == 0) newName = names.name();
    return {error, std::generic_category()};
}

std::error_code replaceSettingAside(const std::filesystem::path& path, std::span<const std::uint8_t> bytes,
                                    std::filesystem::path& newName) {
    OldNames names(path);
    const auto failure = writeAndHandOver(path, bytes, [&names](const char* whole, const char* target) noexcept {
        return replaceWith(whole, target, names);
    });
    if (!failure) newName = names.name();
    return failure;
}

std::error_code createFile(const std::filesystem::path& path, std::span<const std::uint8_t> bytes) {
    return writeAndHandOver(path, bytes, renameWithoutReplacing);
}

}  // namespace velamo
