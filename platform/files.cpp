#include "platform/files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <random>
#include <string>

namespace velamo {
namespace {

/// A file descriptor that is closed at the end of its scope.
class Descriptor {
public:
    explicit Descriptor(int number) noexcept : number_(number) {}
    ~Descriptor() { close(); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    [[nodiscard]] bool isOpen() const noexcept { return number_ >= 0; }
    [[nodiscard]] int number() const noexcept { return number_; }
    /// Closes now and says whether that went well: a network disk may report a failed write only here.
    bool close() noexcept {
        const int number = number_;
        number_ = -1;
        return number < 0 || ::close(number) == 0;
    }

private:
    int number_;
};

std::error_code lastError() noexcept {
    return {errno, std::generic_category()};
}

/// Reads until the bytes are full or the file ends; the number of bytes read.
std::size_t readFully(int descriptor, std::span<std::uint8_t> bytes) noexcept {
    std::size_t filled = 0;
    while (filled < bytes.size()) {
        const ssize_t count = ::read(descriptor, bytes.data() + filled, bytes.size() - filled);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) break;
        filled += static_cast<std::size_t>(count);
    }
    return filled;
}

bool writeFully(int descriptor, std::span<const std::uint8_t> bytes) noexcept {
    while (!bytes.empty()) {
        const ssize_t count = ::write(descriptor, bytes.data(), bytes.size());
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return false;
        bytes = bytes.subspan(static_cast<std::size_t>(count));
    }
    return true;
}

constexpr mode_t newFile = 0666;  // what the user's mask leaves of it

/// A new file of a name that no other file in the folder has.
int createBeside(const std::filesystem::path& target, std::string& name) {
    constexpr int mostAttempts = 100;
    for (int attempt = 0; attempt < mostAttempts; ++attempt) {
        const auto unique = std::to_string(::getpid()) + "-" + std::to_string(std::random_device{}());
        name = (target.parent_path() / (".velamo-" + unique)).native();
        const int descriptor = ::open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, newFile);
        if (descriptor >= 0 || errno != EEXIST) return descriptor;
    }
    return -1;
}

/// Writes the bytes to the disk, with the permissions of the file that is to be replaced, if there is one.
bool fill(int descriptor, std::span<const std::uint8_t> bytes, const std::filesystem::path& target) noexcept {
    constexpr mode_t allPermissions = 07777;
    struct stat status = {};
    const bool isThere = ::stat(target.c_str(), &status) == 0;
    return (!isThere || ::fchmod(descriptor, status.st_mode & allPermissions) == 0) && writeFully(descriptor, bytes) &&
           ::fsync(descriptor) == 0;
}

/// A temporary file beside the target, removed again unless it was put in the target's place. A process that is killed
/// leaves it behind.
class TemporaryFile {
public:
    explicit TemporaryFile(const std::filesystem::path& target) : descriptor_(createBeside(target, name_)) {}
    ~TemporaryFile() {
        if (exists_) ::unlink(name_.c_str());
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    [[nodiscard]] bool replace(const std::filesystem::path& target, std::span<const std::uint8_t> bytes) noexcept {
        if (!exists_ || !fill(descriptor_.number(), bytes, target) || !descriptor_.close()) return false;
        if (::rename(name_.c_str(), target.c_str()) != 0) return false;
        exists_ = false;
        return true;
    }

private:
    std::string name_;
    Descriptor descriptor_;
    bool exists_ = descriptor_.isOpen();
};

/// A file in the target's folder that has no name until it is whole, so that nothing is left of it when the process is
/// killed. Not every file system has such files.
class NamelessFile {
public:
    explicit NamelessFile(const std::filesystem::path& target)
        : descriptor_(openIn(target.parent_path())), self_("/proc/self/fd/" + std::to_string(descriptor_.number())) {}

    [[nodiscard]] bool isOpen() const noexcept { return descriptor_.isOpen() && ::access(self_.c_str(), F_OK) == 0; }
    [[nodiscard]] bool fillFor(const std::filesystem::path& target, std::span<const std::uint8_t> bytes) noexcept {
        return fill(descriptor_.number(), bytes, target);
    }

    /// Gives the file the target's name. One that is there already can only be replaced by renaming, so the file needs
    /// another name for a moment. It is the same each time: what a process leaves that is killed in this very moment,
    /// the next one takes away. Another process may do that to this one's too, or rename it; then it tries again.
    [[nodiscard]] bool moveTo(const std::filesystem::path& target) {
        constexpr int mostAttempts = 1000;
        if (linkTo(target)) return true;
        const auto name = target.parent_path() / ("." + target.filename().native() + ".velamo");
        for (int attempt = 0; attempt < mostAttempts && errno == EEXIST; ++attempt) {
            if (linkTo(name)) {
                if (rename(name, target)) return true;
                if (errno == ENOENT) errno = EEXIST;
            } else if (errno == EEXIST) {
                ::unlink(name.c_str());
                errno = EEXIST;
            }
        }
        return false;
    }

private:
    static int openIn(const std::filesystem::path& folder) noexcept {
#ifdef O_TMPFILE
        return ::open(folder.empty() ? "." : folder.c_str(), O_WRONLY | O_TMPFILE | O_CLOEXEC, newFile);
#else  // Linux alone has such files.
        static_cast<void>(folder);
        return -1;
#endif
    }
    bool linkTo(const std::filesystem::path& name) noexcept {
        return ::linkat(AT_FDCWD, self_.c_str(), AT_FDCWD, name.c_str(), AT_SYMLINK_FOLLOW) == 0;
    }
    /// Takes the old name away in any case: of two names of the same file, renaming leaves both.
    static bool rename(const std::filesystem::path& name, const std::filesystem::path& target) noexcept {
        const bool isRenamed = ::rename(name.c_str(), target.c_str()) == 0;
        const int failure = errno;
        ::unlink(name.c_str());
        errno = failure;
        return isRenamed;
    }

    Descriptor descriptor_;
    std::string self_;
};

/// The file that a path leads to, with its last links followed: a link is left in place and what it names is replaced.
std::filesystem::path withoutLinks(std::filesystem::path path, std::error_code& error) {
    constexpr int mostLinks = 40;  // as the system itself allows
    for (int followed = 0; std::filesystem::is_symlink(std::filesystem::symlink_status(path, error)); ++followed) {
        if (followed == mostLinks) {
            error = std::make_error_code(std::errc::too_many_symbolic_link_levels);
            return path;
        }
        const auto named = std::filesystem::read_symlink(path, error);
        if (error) return path;
        path = named.is_absolute() ? named : path.parent_path() / named;
    }
    error.clear();  // that the target is not there yet is no failure
    return path;
}

std::error_code putInPlace(const std::filesystem::path& target, std::span<const std::uint8_t> bytes) {
    NamelessFile nameless(target);
    if (nameless.isOpen()) {
        if (!nameless.fillFor(target, bytes)) return lastError();
        if (nameless.moveTo(target)) return {};
    }
    // Where that does not work, an ordinary file does, or it fails with the reason that counts.
    TemporaryFile temporary(target);
    return temporary.replace(target, bytes) ? std::error_code() : lastError();
}

/// Makes the renaming itself durable. A folder that cannot be opened or flushed leaves that to the file system.
void flushFolder(const std::filesystem::path& folder) noexcept {
    const Descriptor descriptor(::open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (descriptor.isOpen()) ::fsync(descriptor.number());
}

}  // namespace

std::vector<std::uint8_t> readWholeFile(const std::filesystem::path& path) {
    // Without O_NONBLOCK the mere opening of a pipe would wait for somebody to write into it.
    const Descriptor file(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    struct stat status = {};
    if (!file.isOpen() || ::fstat(file.number(), &status) != 0 || !S_ISREG(status.st_mode)) return {};
    std::vector<std::uint8_t> bytes(static_cast<std::size_t>(status.st_size));
    bytes.resize(readFully(file.number(), bytes));
    return bytes;
}

std::error_code replaceFile(const std::filesystem::path& path, std::span<const std::uint8_t> bytes) {
    std::error_code error;
    const auto target = withoutLinks(path, error);
    if (error) return error;
    const auto status = std::filesystem::status(target, error);
    if (std::filesystem::is_directory(status)) return std::make_error_code(std::errc::is_a_directory);
    // A pipe or device would be gone afterwards.
    const bool isFree = !std::filesystem::exists(status);
    if (!isFree && !std::filesystem::is_regular_file(status)) return std::make_error_code(std::errc::invalid_argument);
    const auto folder = target.parent_path();  // now: when the file is in place, nothing may fail any more
    if (const auto failure = putInPlace(target, bytes)) return failure;
    flushFolder(folder);
    return {};
}

}  // namespace velamo
