#pragma once

#include <cstdint>
#include <string_view>
#include <system_error>

namespace velamo {

/// What may be wrong with an archive, or with one member of it.
enum class ArchiveFault : std::uint8_t {
    unknownFormat,  // the bytes are no archive of a kind that is read
    unreadable,     // damaged, cut, or packed in a way that is not known
    protectedByPassword,
    tooManyMembers,
    unpacksToTooMuch,
    tooLarge,        // a member of more bytes than a file may have
    nameLeadsOut,    // an absolute name, or one with ".."
    nameUnreadable,  // no name, or a longer one than a file can have
    isLink,
    isInArchiveInArchive,
};

/// Why an archive, or a member of it, cannot be read.
struct ArchiveError {
    std::error_code reason;  // the system's code that is nearest; 0: no error
    std::string_view words;  // for a person; empty where the system's own do
    explicit operator bool() const noexcept { return static_cast<bool>(reason); }
};

[[nodiscard]] ArchiveError errorOf(ArchiveFault fault) noexcept;

}  // namespace velamo
