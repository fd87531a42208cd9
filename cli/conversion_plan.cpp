#include "cli/conversion_plan.h"

#include <algorithm>
#include <map>
#include <set>

#include "velamo/formats/thread_file.h"
#include "velamo/platform/text/search_words.h"

namespace velamo {
namespace {

namespace fs = std::filesystem;

/// The absolute path without links, as far as it is there.
fs::path resolved(const fs::path& path) {
    std::error_code failure;
    fs::path place = fs::weakly_canonical(fs::absolute(path, failure), failure);
    if (failure) place = path;
    return place.has_filename() ? place : place.parent_path();
}

/// The way down from the folder to the path, or nothing where it does not lead there.
std::optional<fs::path> wayFrom(const FileIdentity& folder, const fs::path& path) {
    fs::path way;
    for (fs::path place = resolved(path);; place = place.parent_path()) {
        if (identityOfFile(place) == folder) return way;
        if (!place.has_relative_path()) return std::nullopt;
        way = way.empty() ? place.filename() : place.filename() / way;
    }
}

/// Tells where writing to a file would lead.
class Places {
public:
    /// The place as a name that is the same whichever way leads there, and for all names that some file system takes
    /// for one: those that differ in case, or in how a letter with a mark is made up.
    std::string identityOf(const fs::path& file) { return foldedName(placeOf(file).native()); }

private:
    /// The last link is followed here even where it leads to nothing yet.
    fs::path placeOf(const fs::path& file) {
        constexpr int mostLinks = 40;  // as the system itself allows
        fs::path place = folderPlaceOf(file) / file.filename();
        std::error_code failure;
        for (int followed = 0; followed < mostLinks && fs::is_symlink(fs::symlink_status(place, failure)); ++followed) {
            const fs::path named = fs::read_symlink(place, failure);
            if (failure) break;
            const fs::path next = place.parent_path() / named;
            place = folderPlaceOf(next) / next.filename();
        }
        return place;
    }
    /// Many files lie in one folder, which is looked up once.
    const fs::path& folderPlaceOf(const fs::path& file) {
        const fs::path folder = file.has_parent_path() ? file.parent_path() : fs::path(".");
        const auto [entry, isNew] = folders_.try_emplace(folder.native());
        if (isNew) entry->second = firstWayTo(resolved(folder));
        return entry->second;
    }
    /// A folder may be mounted at several places: the first one that was seen stands for all.
    fs::path firstWayTo(const fs::path& folder) {
        if (!folder.has_relative_path()) return folder;
        const fs::path way = firstWayTo(folder.parent_path()) / folder.filename();
        const auto identity = identityOfFile(folder);
        return identity ? ways_.try_emplace(*identity, way).first->second : way;
    }

    std::map<std::string, fs::path> folders_;
    std::map<FileIdentity, fs::path> ways_;
};

/// The names that are spoken for.
class Names {
public:
    Names(const std::vector<fs::path>& designs, Places& places) : places_(places) {
        for (const fs::path& design : designs) {
            taken_.insert(places.identityOf(design));
            if (const auto identity = identityOfFile(design)) sources_.insert(*identity);
            ++owners_[places.identityOf(threadFileOf(design))];
        }
    }
    /// Whether the name could be taken for the new design of `source`. A design's own side file serves the new one as
    /// well, unless others have it too.
    [[nodiscard]] bool take(const fs::path& target, const fs::path& source) {
        const auto sideFile = owners_.find(places_.identityOf(threadFileOf(target)));
        const bool isFree = sideFile == owners_.end() ||
                            (sideFile->second == 1 && sideFile->first == places_.identityOf(threadFileOf(source)));
        const auto identity = identityOfFile(target);
        if (identity && sources_.contains(*identity)) return false;
        return isFree && taken_.insert(places_.identityOf(target)).second;
    }

private:
    Places& places_;
    std::set<std::string> taken_;
    std::set<FileIdentity> sources_;
    std::map<std::string, std::size_t> owners_;  // of side files: how many designs that are read
};

}  // namespace

OutputFolder::OutputFolder(const fs::path& outFolder, const fs::path& folder)
    : folder_(folder),
      identity_(identityOfFile(outFolder)),
      isWithin_(identity_ && !wayFrom(*identity_, folder).has_value()) {}

bool OutputFolder::holds(const fs::path& listedFolder) const {
    return isWithin_ && wayFrom(*identity_, listedFolder).has_value();
}

bool OutputFolder::isMixedWith(const fs::path& listedFolder) const {
    if (!identity_ || isWithin_) return false;
    const auto way = wayFrom(*identity_, listedFolder);
    std::error_code failure;
    return way && fs::is_directory(folder_ / *way, failure);
}

std::vector<Conversion> planConversions(const DesignsOfFolder& designs, const fs::path& folder,
                                        const fs::path& outFolder, const std::string& extension) {
    const auto targetOf = [&](const fs::path& design, const fs::path& name) {
        return outFolder / design.lexically_relative(folder).parent_path() / (name.native() + '.' + extension);
    };
    Places places;
    std::map<std::string, std::size_t> namesakes;
    for (const fs::path& design : designs.sources) ++namesakes[places.identityOf(targetOf(design, design.stem()))];
    for (const fs::path& design : designs.bystanders) ++namesakes[places.identityOf(design)];
    Names names(designs.sources, places);
    std::vector<Conversion> conversions;
    conversions.reserve(designs.sources.size());
    for (const fs::path& design : designs.sources) {
        fs::path target = targetOf(design, design.stem());
        bool isTaken = namesakes[places.identityOf(target)] == 1 && names.take(target, design);
        for (int number = 1; !isTaken; ++number) {
            const std::string end = number == 1 ? "" : '-' + std::to_string(number);
            target = targetOf(design, design.filename().native() + end);
            isTaken = names.take(target, design);
        }
        conversions.push_back({design, target});
    }
    return conversions;
}

}  // namespace velamo
