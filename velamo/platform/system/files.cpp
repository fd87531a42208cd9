#include "velamo/platform/system/files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <random>
#include <string>
#include <utility>

#include "velamo/platform/system/descriptor.h"
#include "velamo/platform/system/file_features.h"
#include "velamo/platform/system/interruption.h"
#include "velamo/platform/system/system_call.h"
#include "velamo/platform/system/system_state.h"

namespace velamo {
namespace {

bool writeFully(int descriptor, std::span<const std::uint8_t> bytes) noexcept {
    while (!bytes.empty()) {
        const ssize_t count = uninterrupted([&] { return ::write(descriptor, bytes.data(), bytes.size()); });
        if (count == 0) errno = EIO;  // there would be no end of it
        if (count <= 0) return false;
        bytes = bytes.subspan(static_cast<std::size_t>(count));
    }
    return true;
}

/// A file system that cannot be asked to flush a file leaves that to itself.
bool flush(int descriptor) noexcept {
    return uninterrupted([&] { return ::fsync(descriptor); }) == 0 || isRefusalOfFileSystem(errno);
}

/// What the producer makes, written as it comes. Where it gives up by itself, errno says that it was cancelled.
bool writeMade(int descriptor, const ByteProducer& produce) {
    int failure = ECANCELED;
    const bool isMade = produce([&](std::span<const std::uint8_t> bytes) {
        const bool isWritten = writeFully(descriptor, bytes);
        if (!isWritten) failure = errno;
        return isWritten;
    });
    errno = failure;
    return isMade && failure == ECANCELED;
}

/// Writes the bytes to the disk, with the features of the file that is to be replaced.
bool fill(int descriptor, const ByteProducer& produce, const FileFeatures& features) {
    return features.giveTo(descriptor) && writeMade(descriptor, produce) && features.giveAgainTo(descriptor) &&
           flush(descriptor);
}

/// Takes a name away at the end of the scope, also where making the file's bytes throws. It is nobody's where the file
/// has been renamed.
class Removal {
public:
    explicit Removal(const std::string& name) noexcept : name_(name) {}
    ~Removal() {
        uninterrupted([this] { return ::unlink(name_.c_str()); });
    }
    Removal(const Removal&) = delete;
    Removal& operator=(const Removal&) = delete;

private:
    const std::string& name_;
};

int renameOver(const char* whole, const char* target) noexcept {
    return uninterrupted([&] { return ::rename(whole, target); }) == 0 ? 0 : errno;
}

/// A name in the folder that no other file has.
std::string nameIn(const std::filesystem::path& folder) {
    const auto unique = std::to_string(::getpid()) + "-" + std::to_string(std::random_device{}());
    return (folder / (".velamo-" + unique)).native();
}

/// A file in the target's folder of a name that no other has, put in the target's place when it is whole. A process
/// that is killed meanwhile leaves it behind.
std::error_code putTemporaryFile(const std::filesystem::path& target, const ByteProducer& produce,
                                 const FileFeatures& features, const HandOver& handOver) {
    constexpr int mostAttempts = 100;
    for (int attempt = 0; attempt < mostAttempts; ++attempt) {
        const std::string name = nameIn(target.parent_path());
        const InterruptionPause pause;
        Descriptor file(uninterrupted([&] {
            return ::open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, features.permissionsOfNamedFile());
        }));
        if (!file.isOpen() && errno == EEXIST) continue;
        if (!file.isOpen()) return lastSystemError();
        const Removal removal(name);
        if (!fill(file.number(), produce, features) || !file.close()) return lastSystemError();
        return {handOver(name.c_str(), target.c_str()), std::generic_category()};
    }
    return std::make_error_code(std::errc::file_exists);
}

/// A file in the target's folder that has no name until it is whole, so that nothing is left of it when the process is
/// killed. Not every file system has such files.
class NamelessFile {
public:
    NamelessFile(const std::filesystem::path& target, const FileFeatures& features)
        : descriptor_(openIn(target.parent_path(), features)),
          self_("/proc/self/fd/" + std::to_string(descriptor_.number())),
          isUsable_(descriptor_.isOpen() && ::access(self_.c_str(), F_OK) == 0) {}

    /// Whether there is one that can be given a name. Once and for all: who was told no has filled another file.
    [[nodiscard]] bool isUsable() const noexcept { return isUsable_; }
    [[nodiscard]] int number() const noexcept { return descriptor_.number(); }

    /// Gives the file the target's name. One that is there already can only be replaced by renaming, so the file needs
    /// another name for a moment. It is the same each time: what a process leaves that is killed in this very moment,
    /// the next one takes away. Another process may do that to this one's too, or rename it; then it tries again.
    [[nodiscard]] bool moveTo(const std::filesystem::path& target) {
        constexpr int mostAttempts = 1000;
        if (linkTo(target)) return true;
        const auto name = target.parent_path() / ("." + target.filename().native() + ".velamo");
        for (int attempt = 0; attempt < mostAttempts && errno == EEXIST; ++attempt) {
            const InterruptionPause pause;
            if (linkTo(name)) {
                if (rename(name, target)) return true;
                if (errno == ENOENT) errno = EEXIST;
            } else if (errno == EEXIST) {
                uninterrupted([&] { return ::unlink(name.c_str()); });
                errno = EEXIST;
            }
        }
        return false;
    }

    /// The same by way of a name that no other process gives. False where the file got none.
    [[nodiscard]] bool handOverTo(const std::filesystem::path& target, const HandOver& handOver,
                                  std::error_code& failure) {
        const std::string name = nameIn(target.parent_path());
        const InterruptionPause pause;
        if (!linkTo(name)) return false;
        const Removal removal(name);
        failure.assign(handOver(name.c_str(), target.c_str()), std::generic_category());
        return true;
    }

private:
    static int openIn(const std::filesystem::path& folder, const FileFeatures& features) noexcept {
#ifdef O_TMPFILE
        return uninterrupted([&] {
            return ::open(folder.empty() ? "." : folder.c_str(), O_WRONLY | O_TMPFILE | O_CLOEXEC,
                          features.permissions());
        });
#else  // Linux alone has such files.
        static_cast<void>(folder);
        static_cast<void>(features);
        return -1;
#endif
    }
    [[nodiscard]] bool linkTo(const std::filesystem::path& name) const noexcept {
        return uninterrupted(
                   [&] { return ::linkat(AT_FDCWD, self_.c_str(), AT_FDCWD, name.c_str(), AT_SYMLINK_FOLLOW); }) == 0;
    }
    /// Takes the old name away in any case: of two names of the same file, renaming leaves both.
    static bool rename(const std::filesystem::path& name, const std::filesystem::path& target) noexcept {
        const bool isRenamed = uninterrupted([&] { return ::rename(name.c_str(), target.c_str()); }) == 0;
        const int failure = errno;
        uninterrupted([&] { return ::unlink(name.c_str()); });
        errno = failure;
        return isRenamed;
    }

    Descriptor descriptor_;
    std::string self_;
    bool isUsable_;
};

/// The file that a path leads to, with its last links followed: a link is left in place and what it names is replaced.
std::filesystem::path withoutLinks(std::filesystem::path path, std::error_code& error) {
    constexpr int mostLinks = 40;  // as the system itself allows
    for (int followed = 0;; ++followed) {
        const auto status = std::filesystem::symlink_status(path, error);
        if (status.type() == std::filesystem::file_type::none) return path;  // who knows what there is
        error.clear();  // that the target is not there yet is no failure
        if (!std::filesystem::is_symlink(status)) return path;
        const auto named = std::filesystem::read_symlink(path, error);
        if (!error && followed == mostLinks) error = std::make_error_code(std::errc::too_many_symbolic_link_levels);
        if (error) return path;
        path = named.is_absolute() ? named : path.parent_path() / named;
    }
}

std::error_code putInPlace(const std::filesystem::path& target, const ByteProducer& produce,
                           const FileFeatures& features) {
    NamelessFile nameless(target, features);
    if (nameless.isUsable()) {
        if (!fill(nameless.number(), produce, features)) return lastSystemError();
        if (nameless.moveTo(target)) return {};
    }
    // Where that does not work, an ordinary file does, or it fails with the reason that counts.
    return putTemporaryFile(target, produce, features, renameOver);
}

/// Makes the renaming itself durable. The new file is in place, so that it is too late for a failure: where the folder
/// cannot be opened or flushed, the file system decides when the disk learns of the name.
void flushFolder(const std::filesystem::path& folder) noexcept {
    const Descriptor descriptor(uninterrupted(
        [&] { return ::open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
    if (descriptor.isOpen()) uninterrupted([&] { return ::fsync(descriptor.number()); });
}

/// The state of an open regular file that may be read, or why it may not.
std::error_code stateForReading(int descriptor, FileState& state) noexcept {
    struct stat status = {};
    if (::fstat(descriptor, &status) != 0) return lastSystemError();
    state = stateFromSystem(status);
    return reasonAgainstReading(state);
}

/// Reads until the file ends or the bytes are full.
std::error_code readFully(int descriptor, std::span<std::uint8_t> bytes, std::size_t& filled) noexcept {
    for (filled = 0; filled < bytes.size();) {
        const auto rest = bytes.subspan(filled);
        const ssize_t count = uninterrupted([&] { return ::read(descriptor, rest.data(), rest.size()); });
        if (count < 0) return lastSystemError();
        if (count == 0) break;
        filled += static_cast<std::size_t>(count);
    }
    return {};
}

/// Reads one byte more than there should be, to see the end. Bytes that were read while somebody wrote others belong to
/// no design that there ever was.
std::error_code readBytes(int descriptor, const FileState& before, std::vector<std::uint8_t>& bytes) {
    const auto size = static_cast<std::size_t>(before.size);
    bytes.resize(size + 1);
    std::size_t filled = 0;
    FileState after;
    std::error_code error = readFully(descriptor, bytes, filled);
    if (!error) error = stateForReading(descriptor, after);
    if (!error && (filled != size || after != before)) error.assign(EAGAIN, std::generic_category());
    bytes.resize(error ? 0 : size);
    return error;
}

}  // namespace

FileContent readFile(const std::filesystem::path& path) {
    FileContent content;
    // Without O_NONBLOCK the mere opening of a pipe would wait for somebody to write into it.
    const Descriptor file(
        uninterrupted([&] { return ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC); }));
    if (!file.isOpen()) {
        content.error = lastSystemError();
        return content;
    }
    FileState state{.kind = FileKind::regular};
    content.error = stateForReading(file.number(), state);
    content.isOpened = state.kind == FileKind::regular;
    if (!content.error) content.error = readBytes(file.number(), state, content.bytes);
    return content;
}

bool isAbsence(std::error_code reason) noexcept {
    constexpr std::array codes{ENOENT, ENOTDIR, EACCES, ELOOP, ENAMETOOLONG, ENXIO, ENODEV, EISDIR, EINVAL, EFBIG};
    return std::find(codes.begin(), codes.end(), reason.value()) != codes.end();
}

std::vector<std::uint8_t> readWholeFile(const std::filesystem::path& path) {
    FileContent content = readFile(path);
    if (content.error && !isAbsence(content.error)) throw std::system_error(content.error);
    return std::move(content.bytes);
}

std::error_code replaceFileBy(const std::filesystem::path& path, const ByteProducer& produce) {
    std::error_code error;
    const auto target = withoutLinks(path, error);
    if (error) return error;
    const FileFeatures features(target, error);
    if (error) return error;
    const auto folder = target.parent_path();  // now: when the file is in place, nothing may fail any more
    if (const auto failure = putInPlace(target, produce, features)) return failure;
    flushFolder(folder);
    return {};
}

std::error_code fillEmptyFile(const std::filesystem::path& path, std::span<const std::uint8_t> bytes) noexcept {
    Descriptor file(uninterrupted([&] { return ::open(path.c_str(), O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC); }));
    struct stat status = {};
    if (!file.isOpen() || ::fstat(file.number(), &status) != 0) return lastSystemError();
    if (!S_ISREG(status.st_mode)) return std::make_error_code(std::errc::invalid_argument);
    if (status.st_size != 0) return std::make_error_code(std::errc::file_exists);
    std::error_code failure;
    if (!writeFully(file.number(), bytes)) failure = lastSystemError();
    // Whoever reads on must not take a part for the whole.
    if (failure) uninterrupted([&] { return ::ftruncate(file.number(), 0); });
    if (!file.close() && !failure) failure = lastSystemError();
    return failure;
}

std::error_code replaceFile(const std::filesystem::path& path, std::span<const std::uint8_t> bytes) {
    return replaceFileBy(path, [bytes](const ByteSink& sink) { return sink(bytes); });
}

std::error_code writeAndHandOver(const std::filesystem::path& path, std::span<const std::uint8_t> bytes,
                                 const HandOver& handOver) {
    const ByteProducer produce = [bytes](const ByteSink& sink) { return sink(bytes); };
    std::error_code failure;
    const FileFeatures features(path, failure);
    if (failure) return failure;
    const auto folder = path.parent_path();
    NamelessFile nameless(path, features);
    if (nameless.isUsable() && !fill(nameless.number(), produce, features)) return lastSystemError();
    if (!nameless.isUsable() || !nameless.handOverTo(path, handOver, failure))
        failure = putTemporaryFile(path, produce, features, handOver);
    if (!failure) flushFolder(folder);
    return failure;
}

}  // namespace velamo
