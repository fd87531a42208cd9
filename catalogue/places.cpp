#include "catalogue/places.h"

#include <algorithm>
#include <utility>

#include "velamo/platform/system/file_state.h"

namespace velamo {
bool waitsForDisk(std::uint64_t device, std::optional<std::uint64_t> before) noexcept {
    return before && *before != device;
}

bool isWithin(const std::filesystem::path& path, const std::filesystem::path& top) {
    const std::string& inner = path.native();
    const std::string& outer = top.native();
    if (!inner.starts_with(outer)) return false;
    return inner.size() == outer.size() || outer.ends_with('/') || inner[outer.size()] == '/';
}

bool isThere(const std::filesystem::path& path) {
    std::error_code error;
    static_cast<void>(stateOfFile(path, error));
    return error != std::errc::no_such_file_or_directory;
}

AwayPlaces::AwayPlaces(std::vector<std::filesystem::path> roots) : missingRoots_(std::move(roots)) {
    std::erase_if(missingRoots_, isThere);
}

bool AwayPlaces::contains(const std::filesystem::path& folder, std::optional<std::uint64_t> device) {
    const auto [known, isNew] = known_.try_emplace(folder.native());
    if (isNew) known->second = isAway(folder, device);
    return known->second;
}

bool AwayPlaces::isAway(const std::filesystem::path& folder, std::optional<std::uint64_t> device) const {
    const auto holds = [&folder](const std::filesystem::path& root) { return isWithin(folder, root); };
    if (std::any_of(missingRoots_.begin(), missingRoots_.end(), holds)) return true;
    auto place = folder;
    while (!isThere(place) && place.has_relative_path()) place = place.parent_path();
    const auto identity = identityOfFile(place);
    std::error_code error;
    return identity && waitsForDisk(identity->device, device) && std::filesystem::is_empty(place, error) && !error;
}

}  // namespace velamo
