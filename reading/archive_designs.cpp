#include "reading/archive_designs.h"

#include <cstddef>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "velamo/formats/format.h"
#include "velamo/formats/thread_file.h"
#include "velamo/platform/archives/archive_reader.h"

namespace velamo {
namespace {

using Bytes = std::vector<std::uint8_t>;

class DesignPass {
public:
    explicit DesignPass(const DesignMaker& make) : make_(make) {}

    ArchivedDesigns run(const std::filesystem::path& file) {
        ArchiveReader archive(file);
        while (auto member = archive.next()) {
            if (member->isFolder) continue;
            if (isSideFile(member->location)) keepSideFile(*member, archive);
            if (hasDesignName(member->location)) add(std::move(*member), archive);
        }
        found_.error = archive.error();
        if (!outdated_.empty()) makeAgain(file);
        return std::move(found_);
    }

private:
    static bool isSideFile(const std::string& location) { return threadFileOf(location) == location; }

    void keepSideFile(const ArchiveMember& member, ArchiveReader& archive) {
        ArchiveError error;
        auto bytes = archive.read(error);
        if (!bytes || bytes->size() > mostBytesOfSideFiles - bytesOfSideFiles_) return;
        bytesOfSideFiles_ += bytes->size();
        const auto designs = designsOf_.find(member.location);
        if (designs != designsOf_.end()) outdated_.insert(designs->second.begin(), designs->second.end());
        sideFiles_.emplace(member.location, std::move(*bytes));
    }

    void add(ArchiveMember member, ArchiveReader& archive) {
        designsOf_[threadFileOf(member.location).native()].push_back(found_.designs.size());
        ArchivedDesign& design = found_.designs.emplace_back();
        design.location = std::move(member.location);
        design.name = std::move(member.name);
        design.modified = member.modified;
        readAndMake(design, archive);
    }

    void readAndMake(ArchivedDesign& design, ArchiveReader& archive) {
        const auto bytes = archive.read(design.error);
        if (!bytes) return;
        design.size = bytes->size();
        const auto sideFile = sideFiles_.find(threadFileOf(design.location).native());
        design.made = make_(design, *bytes, sideFile == sideFiles_.end() ? Bytes() : sideFile->second);
    }

    /// The archive gives its members in the same order again, each location once.
    void makeAgain(const std::filesystem::path& file) {
        std::unordered_map<std::string, std::size_t> places;
        for (const std::size_t place : outdated_) places.emplace(found_.designs[place].location, place);
        ArchiveReader archive(file);
        while (!places.empty()) {
            const auto member = archive.next();
            if (!member) break;
            const auto place = places.find(member->location);
            if (place == places.end()) continue;
            readAndMake(found_.designs[place->second], archive);
            places.erase(place);
        }
    }

    const DesignMaker& make_;
    ArchivedDesigns found_;
    std::unordered_map<std::string, Bytes> sideFiles_;  // by their locations
    std::size_t bytesOfSideFiles_ = 0;
    std::unordered_map<std::string, std::vector<std::size_t>> designsOf_;  // by their side files' locations
    std::unordered_set<std::size_t> outdated_;
};

}  // namespace

ArchivedDesigns designsOfArchive(const std::filesystem::path& archive, const DesignMaker& make) {
    return DesignPass(make).run(archive);
}

}  // namespace velamo
