#include "velamo/platform/system/file_features.h"

#include <unistd.h>

#include <cerrno>
#include <string_view>

#include "velamo/platform/system/system_call.h"

#ifdef __linux__
#include <sys/xattr.h>
#endif

namespace velamo {
namespace {

constexpr mode_t newFile = 0666;
constexpr mode_t allPermissions = 07777;
constexpr mode_t ordinaryPermissions = 0777;

constexpr auto sameUser = static_cast<uid_t>(-1);
constexpr auto sameGroup = static_cast<gid_t>(-1);

/// The permissions for a file that could not keep its owner or its group.
mode_t permissionsWithout(mode_t permissions, bool isOwnerKept, bool isGroupKept) noexcept {
    constexpr int fromOthersToGroup = 3;
    if (!isOwnerKept) permissions &= ~mode_t{S_ISUID};
    if (isGroupKept) return permissions;
    const mode_t ofOthers = (permissions & S_IRWXO) << fromOthersToGroup;
    return permissions & ~mode_t{S_ISGID} & (~mode_t{S_IRWXG} | ofOthers);
}

}  // namespace

bool isRefusalOfFileSystem(int code) noexcept {
    return code == EPERM || code == EACCES || code == EINVAL || code == ENOTSUP || code == ENOSYS;
}

FileFeatures::FileFeatures(const std::filesystem::path& file, std::error_code& error) {
    error.clear();
    isThere_ = uninterrupted([&] { return ::stat(file.c_str(), &status_); }) == 0;
    if (!isThere_) {
        if (errno != ENOENT && errno != ENOTDIR) error = lastSystemError();
    } else if (S_ISDIR(status_.st_mode)) {
        error = std::make_error_code(std::errc::is_a_directory);
    } else if (!S_ISREG(status_.st_mode)) {  // it would be gone afterwards
        error = std::make_error_code(std::errc::invalid_argument);
    } else {
        error = readAttributes(file);
    }
}

mode_t FileFeatures::permissions() const noexcept {
    return isThere_ ? status_.st_mode & ordinaryPermissions : newFile;
}

mode_t FileFeatures::permissionsOfNamedFile() const noexcept {
    return isThere_ ? status_.st_mode & S_IRWXU : newFile;
}

bool FileFeatures::giveTo(int descriptor) const noexcept {
    if (!isThere_) return true;
    struct stat own = {};
    if (::fstat(descriptor, &own) != 0) return false;
    // The group first: the owner may give the file to another of his groups, and is its owner no more afterwards.
    const auto gives = [&](uid_t user, gid_t group) {
        return uninterrupted([&] { return ::fchown(descriptor, user, group); }) == 0;
    };
    const bool isGroupKept = own.st_gid == status_.st_gid || gives(sameUser, status_.st_gid);
    if (!isGroupKept && !isRefusalOfFileSystem(errno)) return false;
    const bool isOwnerKept = own.st_uid == status_.st_uid || gives(status_.st_uid, sameGroup);
    if (!isOwnerKept && !isRefusalOfFileSystem(errno)) return false;
    giveAttributes(descriptor);
    // Without its access list, the permissions of the group are those that the list allows at most to anybody in it.
    const bool isListKept = isGroupKept && giveAccessList(descriptor);
    const mode_t permissions = permissionsWithout(status_.st_mode & allPermissions, isOwnerKept, isListKept);
    return uninterrupted([&] { return ::fchmod(descriptor, permissions); }) == 0 || isRefusalOfFileSystem(errno);
}

bool FileFeatures::giveAgainTo(int descriptor) const noexcept {
    constexpr mode_t lostByWriting = S_ISUID | S_ISGID;
    return !isThere_ || (status_.st_mode & lostByWriting) == 0 || giveTo(descriptor);
}

#ifdef __linux__

namespace {

constexpr const char* accessListName = "system.posix_acl_access";

/// What `read(pointer, size)` gives, which tells the size when it is asked for no bytes.
template <class Read>
std::string valueOf(const Read& read, std::error_code& error) {
    const ssize_t size = read(nullptr, 0);
    std::string value(size > 0 ? static_cast<std::size_t>(size) : 0, '\0');
    const ssize_t count = size > 0 ? read(value.data(), value.size()) : size;
    if (count < 0 && !isRefusalOfFileSystem(errno) && errno != ENODATA) error = lastSystemError();
    value.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
    return value;
}

std::string attributeOf(const std::filesystem::path& file, const char* name, std::error_code& error) {
    return valueOf(
        [&](char* bytes, std::size_t size) {
            return uninterrupted([&] { return ::getxattr(file.c_str(), name, bytes, size); });
        },
        error);
}

}  // namespace

/// The attributes of the system itself, its labels and capabilities, are for the system to give.
std::error_code FileFeatures::readAttributes(const std::filesystem::path& file) {
    std::error_code error;
    const std::string names =
        valueOf([&](char* bytes,
                    std::size_t size) { return uninterrupted([&] { return ::listxattr(file.c_str(), bytes, size); }); },
                error);
    for (std::size_t start = 0; start < names.size() && !error;) {
        const char* const name = names.c_str() + start;
        start += std::string_view(name).size() + 1;
        if (std::string_view(name) == accessListName)
            accessList_ = attributeOf(file, name, error);
        else if (std::string_view(name).starts_with("user."))
            attributes_.push_back({name, attributeOf(file, name, error)});
    }
    return error;
}

void FileFeatures::giveAttributes(int descriptor) const noexcept {
    for (const auto& [name, value] : attributes_) ::fsetxattr(descriptor, name.c_str(), value.data(), value.size(), 0);
}

/// The folder may have given the new file a list that the old one does not have.
bool FileFeatures::giveAccessList(int descriptor) const noexcept {
    if (!accessList_.empty())
        return ::fsetxattr(descriptor, accessListName, accessList_.data(), accessList_.size(), 0) == 0;
    return ::fremovexattr(descriptor, accessListName) == 0 || errno == ENODATA || isRefusalOfFileSystem(errno);
}

#else  // Other systems have calls of their own for these.

std::error_code FileFeatures::readAttributes(const std::filesystem::path&) {
    return {};
}
void FileFeatures::giveAttributes(int) const noexcept {}
bool FileFeatures::giveAccessList(int) const noexcept {
    return true;
}

#endif

}  // namespace velamo
