#include "velamo/platform/system/private_files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <string>
#include <system_error>

#include "velamo/platform/system/descriptor.h"

namespace velamo {
namespace {

[[noreturn]] void throwLastError() {
    throw std::system_error(errno, std::generic_category());
}

}  // namespace

void makePrivateFolders(const std::filesystem::path& folder) {
    constexpr mode_t forUser = 0700;
    std::error_code error;
    if (folder.empty() || std::filesystem::is_directory(folder, error)) return;
    makePrivateFolders(folder.parent_path());
    if (::mkdir(folder.c_str(), forUser) == 0) return;
    const int code = errno == EEXIST ? ENOTDIR : errno;
    // Another process may have made it meanwhile; and "x/." is there once "x" is.
    if (!std::filesystem::is_directory(folder, error)) throw std::system_error(code, std::generic_category());
}

void makePrivateFile(const std::filesystem::path& file) {
    constexpr mode_t forUser = 0600;
    Descriptor descriptor(::open(file.c_str(), O_RDONLY | O_CREAT | O_NONBLOCK | O_NOCTTY | O_CLOEXEC, forUser));
    if (!descriptor.isOpen() || !descriptor.close()) throwLastError();
}

void closeToOthers(const std::filesystem::path& path) noexcept {
    constexpr mode_t allRights = 07777;
    struct stat status = {};
    if (::stat(path.c_str(), &status) != 0 || (status.st_mode & S_IRWXO) == 0) return;
    // Who may not change it did not make it, and it is not theirs to close.
    static_cast<void>(::chmod(path.c_str(), status.st_mode & allRights & ~static_cast<mode_t>(S_IRWXO)));
}

std::filesystem::path makePrivateTemporaryFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "velamo-XXXXXX").native();
    if (::mkdtemp(name.data()) == nullptr) throwLastError();
    return name;
}

}  // namespace velamo
