#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "velamo/platform/archives/archive_error.h"
#include "velamo/platform/system/files.h"

namespace velamo {

/// What an archive may take. One that takes more is not read on.
struct ArchiveLimits {
    /// Each member takes time and a place in lists, even where it is empty.
    std::size_t members = 100'000;
    /// Of all names together, as they are remembered.
    std::size_t bytesOfNames = std::size_t{64} << 20;
    /// A member of more bytes is refused, and those behind it are read on.
    std::uint64_t bytesOfMember = mostBytesOfFile;
    /// All that is unpacked in one pass,
    std::uint64_t bytesUnpacked = std::uint64_t{4} << 30;
    /// and so many times the archive's own bytes, which no designs unpack to,
    std::uint64_t timesUnpacked = 1000;
    /// unless it is less than this: a few empty designs pack as well as any bomb.
    std::uint64_t alwaysUnpacked = std::uint64_t{64} << 20;
};
/// The longest name of a member; the system has none longer.
inline constexpr std::size_t mostBytesOfMemberName = 4096;

/// A file or folder in an archive.
struct ArchiveMember {
    std::string location;       // the bytes of its name, its parts with one slash between them
    std::string name;           // the same as text
    std::int64_t modified = 0;  // nanoseconds since the start of 1970; 0 where the archive does not say
    bool isFolder = false;
    ArchiveError error;  // why its bytes cannot be had, as far as one knows without reading them
};

/// Goes through an archive once, from its start to its end: zip, 7z, rar, and tar, plain or compressed with gzip,
/// bzip2, xz, lzma or zstd. Its bytes tell the kind, not its name. Nothing is written, and no other program is started.
/// Sizes that it claims count for nothing, and what it makes of a member is that member's: those behind it are still
/// read where the kind of archive allows. What is for the system's own use is left out (see isHidden), as are pipes and
/// devices, and of members with one name all but the first: it was handed over already.
///
/// To be used in a confined process. The text of names needs the locale "C.UTF-8"; without it members of 7z and rar
/// archives whose names are not ASCII may have no readable name.
class ArchiveReader {
public:
    /// Where the file cannot be read, next() gives nothing, and error() the system's reason. May throw std::bad_alloc.
    explicit ArchiveReader(const std::filesystem::path& file, const ArchiveLimits& limits = {});
    /// The bytes must stay.
    explicit ArchiveReader(std::span<const std::uint8_t> bytes, const ArchiveLimits& limits = {});
    ~ArchiveReader();
    ArchiveReader(const ArchiveReader&) = delete;
    ArchiveReader& operator=(const ArchiveReader&) = delete;

    /// The next member, or nothing at the end. May throw std::bad_alloc.
    [[nodiscard]] std::optional<ArchiveMember> next();

    /// All bytes of the member that next() gave last; once. Nothing and the reason where they cannot be had. May throw
    /// std::bad_alloc.
    [[nodiscard]] std::optional<std::vector<std::uint8_t>> read(ArchiveError& error);

    /// Why the archive ended where it did; none at its true end.
    [[nodiscard]] const ArchiveError& error() const noexcept;

private:
    class Pass;
    std::unique_ptr<Pass> pass_;
};

}  // namespace velamo
