#include "reading/archive_members.h"

#include <cerrno>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "velamo/formats/format.h"
#include "velamo/formats/import.h"
#include "velamo/formats/thread_file.h"
#include "velamo/model/failure.h"
#include "velamo/platform/archives/archive_reader.h"
#include "velamo/platform/archives/member_names.h"

namespace velamo {
namespace {

using Bytes = std::vector<std::uint8_t>;

ArchiveError systemError(int code) noexcept {
    return {{code, std::generic_category()}, {}};
}

/// Whether the path is that of something in the folder.
bool isBelow(std::string_view path, std::string_view folder) noexcept {
    return path.size() > folder.size() && path.starts_with(folder) && path[folder.size()] == '/';
}

/// A file that is looked for while an archive is gone through.
class SoughtMember {
public:
    SoughtMember(std::string location, bool isRead)
        : location_(std::move(location)), name_(textOfName(location_)), isRead_(isRead) {}

    /// Takes the member that the reader is at, if it is the one.
    void look(const ArchiveMember& member, ArchiveReader& archive) {
        const bool isExact = member.location == location_;
        const bool isNamed = isExact || member.name == name_;
        if (member.isFolder ? isNamed : isBelow(member.location, location_) || isBelow(member.name, name_))
            absence_ = systemError(EISDIR);
        if (member.isFolder || isFound()) return;
        if (isBelow(location_, member.location) || isBelow(name_, member.name))
            absence_ =
                hasArchiveName(member.location) ? errorOf(ArchiveFault::isInArchiveInArchive) : systemError(ENOTDIR);
        if (isExact || (isNamed && !isThere_)) take(member, archive, isExact);
    }

    /// Whether a better one can follow no more.
    [[nodiscard]] bool isFound() const noexcept { return isExact_; }
    [[nodiscard]] bool isThere() const noexcept { return isThere_; }
    /// Why there are no bytes of it: what is wrong with it, or what stands in its place, if anything does.
    [[nodiscard]] const ArchiveError& error() const noexcept { return isThere_ ? error_ : absence_; }
    [[nodiscard]] const Bytes& bytes() const noexcept { return bytes_; }

private:
    void take(const ArchiveMember& member, ArchiveReader& archive, bool isExact) {
        isThere_ = true;
        isExact_ = isExact;
        error_ = member.error;
        bytes_.clear();
        if (!isRead_ || error_) return;
        auto bytes = archive.read(error_);
        if (bytes) bytes_ = std::move(*bytes);
    }

    std::string location_;
    std::string name_;
    bool isRead_;
    bool isThere_ = false;
    bool isExact_ = false;
    Bytes bytes_;
    ArchiveError error_;
    ArchiveError absence_;
};

SoughtMember sideFileOf(const ArchivePath& place) {
    return {threadFileOf(place.member).native(), true};
}

/// Why the member's bytes cannot be had; none where they can.
ArchiveError reasonAgainst(const SoughtMember& member, const ArchiveReader& archive) {
    if (member.isThere() || member.error()) return member.error();
    return archive.error() ? archive.error() : systemError(ENOENT);
}

}  // namespace

bool failAsArchive(const ArchiveError& reason, VLMError* error) {
    failWithSystemError(reason.reason.value(), error);
    if (error != nullptr) error->failureReason = reason.words;
    return false;
}

bool readDesignInArchive(VLMDesign& design, const ArchivePath& place, const std::filesystem::path& url,
                         VLMError* error) noexcept {
    return operation(error, [&] {
        const auto name = fileNameOf(url);
        design.setDesignName(name.native());
        design.setDesignLocation(url);
        design.threads().clear();
        design.stitches().clear();
        SoughtMember file(place.member, hasDesignName(name));
        SoughtMember sideFile = sideFileOf(place);
        ArchiveReader archive(place.archive);
        while (!file.isFound() || !sideFile.isFound()) {
            const auto member = archive.next();
            if (!member) break;
            file.look(*member, archive);
            sideFile.look(*member, archive);
        }
        if (const auto reason = reasonAgainst(file, archive)) return failAsArchive(reason, error);
        return importDesignFromBytes(design, file.bytes(), extensionOf(name), error, sideFile.bytes());
    });
}

bool takeThreadsOfSideFileInArchive(VLMDesign& design, const ArchivePath& place) {
    SoughtMember sideFile = sideFileOf(place);
    ArchiveReader archive(place.archive);
    while (!sideFile.isFound()) {
        const auto member = archive.next();
        if (!member) break;
        sideFile.look(*member, archive);
    }
    return takeThreadsOf(design, sideFile.bytes());
}

}  // namespace velamo
