#include <unordered_set>

#include "fuzz/claims.h"
#include "velamo/platform/archives/archive_reader.h"
#include "velamo/platform/archives/member_names.h"

namespace velamo::fuzz {
namespace {

constexpr ArchiveLimits limits{.members = 50,
                               .bytesOfNames = 10'000,
                               .bytesOfMember = 100'000,
                               .bytesUnpacked = 1'000'000,
                               .timesUnpacked = 100,
                               .alwaysUnpacked = 200'000};

void checkMember(const ArchiveMember& member) {
    claim(textOfName(member.name) == member.name, "a name is text");
    claim(member.error || locationOf(member.location) == member.location, "a location stays inside");
    claim(member.error || !isHidden(member.location), "what is hidden is left out");
}

/// All members with their bytes, where they are asked for.
void checkArchive(Input bytes, bool isRead) {
    ArchiveReader archive(bytes, limits);
    std::unordered_set<std::string> locations;
    std::size_t unpacked = 0;
    while (const auto member = archive.next()) {
        checkMember(*member);
        claim(locations.insert(member->location).second, "each location comes once");
        ArchiveError error;
        const auto content = isRead ? archive.read(error) : std::nullopt;
        claim(!isRead || content.has_value() != static_cast<bool>(error), "there are bytes, or a reason");
        claim(!content || content->size() <= limits.bytesOfMember, "no member is too large");
        unpacked += content ? content->size() : 0;
    }
    claim(!archive.next(), "the end stays the end");
    claim(locations.size() <= limits.members, "there are not too many members");
    claim(unpacked <= limits.bytesUnpacked, "not too much is unpacked");
}

}  // namespace
}  // namespace velamo::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    velamo::fuzz::checkArchive({data, size}, true);
    velamo::fuzz::checkArchive({data, size}, false);
    return 0;
}
