#include "cli/conversion_plan.h"

#include <algorithm>
#include <map>
#include <set>

#include "formats/thread_file.h"
#include "platform/search_words.h"

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

bool liesWithin(const fs::path& path, const fs::path& top) {
    return std::mismatch(top.begin(), top.end(), path.begin(), path.end()).first == top.end();
}

/// Tells where writing to a file would lead.
class Places {
public:
    /// The place as a name that is the same whichever way leads there, and for all names that some file system takes
    /// for one: those that differ in case, or in how a letter with a mark is made up.
    std::string identityOf(const fs::path& file) { return foldedForSearch(placeOf(file).native()); }

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
        if (isNew) entry->second = resolved(folder);
        return entry->second;
    }

    std::map<std::string, fs::path> folders_;
};

/// The names that are spoken for.
class Names {
public:
    Names(const std::vector<fs::path>& designs, Places& places) : places_(places) {
        for (const fs::path& design : designs) {
            taken_.insert(places.identityOf(design));
            ++owners_[places.identityOf(threadFileOf(design))];
        }
    }
    /// Whether the name could be taken for the new design of `source`. A design's own side file serves the new one as
    /// well, unless others have it too.
    [[nodiscard]] bool take(const fs::path& target, const fs::path& source) {
        const auto sideFile = owners_.find(places_.identityOf(threadFileOf(target)));
        const bool isFree = sideFile == owners_.end() ||
                            (sideFile->second == 1 && sideFile->first == places_.identityOf(threadFileOf(source)));
        return isFree && taken_.insert(places_.identityOf(target)).second;
    }

private:
    Places& places_;
    std::set<std::string> taken_;
    std::map<std::string, std::size_t> owners_;  // of side files: how many designs that are read
};

}  // namespace

OutputFolder::OutputFolder(const fs::path& outFolder, const fs::path& folder) {
    const fs::path place = resolved(outFolder);
    if (!liesWithin(resolved(folder), place)) place_ = place;
}

bool OutputFolder::holds(const fs::path& listedFolder) const {
    return !place_.empty() && liesWithin(resolved(listedFolder), place_);
}

std::vector<Conversion> planConversions(const std::vector<fs::path>& designs, const fs::path& folder,
                                        const fs::path& outFolder, const std::string& extension) {
    const auto targetOf = [&](const fs::path& design, const fs::path& name) {
        return outFolder / design.lexically_relative(folder).parent_path() / (name.native() + '.' + extension);
    };
    Places places;
    std::map<std::string, std::size_t> namesakes;
    for (const fs::path& design : designs) ++namesakes[places.identityOf(targetOf(design, design.stem()))];
    Names names(designs, places);
    std::vector<Conversion> conversions;
    conversions.reserve(designs.size());
    for (const fs::path& design : designs) {
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
