#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <span>
#include <system_error>
#include <vector>

#include "velamo/platform/system/byte_sink.h"
#include "velamo/private_api.h"

namespace velamo {

/// The most bytes that a file may have to be read. None of the formats holds more; a sparse file that claims gigabytes
/// would fill the memory with zeros.
inline constexpr std::uintmax_t mostBytesOfFile = std::uintmax_t{256} << 20;

/// What came of reading a file.
struct FileContent {
    std::vector<std::uint8_t> bytes;  // all of the file, or none
    /// Why there are none: the system's reason; EISDIR for a folder, EINVAL for a pipe or device, EFBIG for a file of
    /// more than mostBytesOfFile, EAGAIN for one that somebody changed while it was read.
    std::error_code error;
    /// Whether there is a regular file that the system let be opened, so that an error comes from reading it.
    bool isOpened = false;
};

/// Reads a regular file once and whole. Never waits for somebody to write into it. May throw std::bad_alloc.
[[nodiscard]] VELAMO_PRIVATE_API FileContent readFile(const std::filesystem::path& path);

/// Whether this is what the system says of a file that is not there, is not for this user, or is none that is read: a
/// folder, a pipe, a device, or too large. Any other reason tells that the system could not do it this time.
[[nodiscard]] VELAMO_PRIVATE_API bool isAbsence(std::error_code reason) noexcept;

/// The bytes of a regular file, as readFile reads them, for what may as well be absent: a file that is so reads as no
/// bytes. Throws any other reason as a std::system_error. May throw std::bad_alloc.
[[nodiscard]] VELAMO_PRIVATE_API std::vector<std::uint8_t> readWholeFile(const std::filesystem::path& path);

/// Puts `bytes` at `path` in one step: a file without a name is written in the same folder, flushed to the disk and
/// named, so that the old or the new file is there, whole, at any moment, whatever becomes of the process. (To replace
/// a file it has the name ".<file name>.velamo" for an instant; if the process is killed then, the next call for the
/// same path takes that away. On file systems without nameless files it has a name, ".velamo-" and numbers, all the
/// time, and stays when the process is killed. SIGINT, SIGTERM and SIGHUP wait meanwhile: see InterruptionPause.)
///
/// A link's target is replaced, not the link. An existing file's owner, group, permissions, access list and attributes
/// are kept as far as the system and the file system allow; a group that cannot be kept hands none of its permissions
/// to another. What is no regular file stays: EISDIR for a folder, EINVAL for a pipe or device. On failure the target
/// is untouched, nothing is left beside it and the system's error is returned.
[[nodiscard]] VELAMO_PRIVATE_API std::error_code replaceFile(const std::filesystem::path& path,
                                                             std::span<const std::uint8_t> bytes);

/// Writes `bytes` into the empty file that is there, for somebody who keeps it open and reads on in this very one. On
/// failure it is empty again and the system's error is returned: EEXIST where the file has bytes already, EINVAL where
/// it is no regular file.
[[nodiscard]] VELAMO_PRIVATE_API std::error_code fillEmptyFile(const std::filesystem::path& path,
                                                               std::span<const std::uint8_t> bytes) noexcept;

/// Makes all bytes of a file, passing them to the sink piece by piece, and says whether it could.
using ByteProducer = std::function<bool(const ByteSink&)>;

/// The same with bytes that are written as they are made, so that a large file takes no memory. Where the first way of
/// writing does not work, `produce` is asked once more. ECANCELED when it gives up although every piece was written.
/// For programs of one thread: `produce` may run within an InterruptionPause, which forbids others to wait for each
/// other.
[[nodiscard]] VELAMO_PRIVATE_API std::error_code replaceFileBy(const std::filesystem::path& path,
                                                               const ByteProducer& produce);

/// Lets the whole new file, which has the name `whole` in the target's folder, take the target's place in some way.
/// 0, or the system's error. What has that name afterwards is taken away. Must not allocate memory.
using HandOver = std::function<int(const char* whole, const char* target)>;

/// Writes the bytes aside and flushes them, as replaceFile does, and leaves the last step to `handOver`; links are not
/// followed. (The name is ".velamo-" and numbers; a process that is killed in the last step leaves it.)
[[nodiscard]] std::error_code writeAndHandOver(const std::filesystem::path& path, std::span<const std::uint8_t> bytes,
                                               const HandOver& handOver);

}  // namespace velamo
