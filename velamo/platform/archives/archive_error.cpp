#include "velamo/platform/archives/archive_error.h"

#include <algorithm>
#include <array>
#include <cerrno>

namespace velamo {
namespace {

struct FaultRow {
    ArchiveFault fault;
    int code;
    std::string_view words;
};
constexpr std::array<FaultRow, 10> faults{{
    {ArchiveFault::unknownFormat, EBADMSG, "this is no archive that can be read"},
    {ArchiveFault::unreadable, EBADMSG, "the archive is damaged here, or packed in a way that cannot be read"},
    {ArchiveFault::protectedByPassword, EACCES, "it is protected by a password"},
    {ArchiveFault::tooManyMembers, E2BIG, "the archive holds too many files"},
    {ArchiveFault::unpacksToTooMuch, EFBIG, "the archive unpacks to far more than it could hold"},
    {ArchiveFault::tooLarge, EFBIG, "it is too large for a design"},
    {ArchiveFault::nameLeadsOut, EINVAL, "its name leads out of the archive"},
    {ArchiveFault::nameUnreadable, EINVAL, "its name cannot be read"},
    {ArchiveFault::isLink, ENOTSUP, "it is a link to another file of the archive"},
    {ArchiveFault::isInArchiveInArchive, ENOTSUP, "an archive within an archive is not opened"},
}};

}  // namespace

ArchiveError errorOf(ArchiveFault fault) noexcept {
    const auto row =
        std::find_if(faults.begin(), faults.end(), [fault](const FaultRow& each) { return each.fault == fault; });
    return {{row->code, std::generic_category()}, row->words};
}

}  // namespace velamo
