#include "velamo/platform/system/folder_walk.h"

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <string_view>

#include "velamo/platform/system/system_state.h"

namespace velamo {
namespace {

std::error_code systemError(int code) noexcept {
    return {code, std::generic_category()};
}

bool isFolderItself(std::string_view name) noexcept {
    return name == "." || name == "..";
}

/// What the folder says of a name, as far as it does.
enum class NameKind : std::uint8_t { folder, link, file, unknown };

NameKind kindOf(const dirent& entry) noexcept {
    switch (entry.d_type) {
        case DT_DIR:
            return NameKind::folder;
        case DT_LNK:
            return NameKind::link;
        case DT_UNKNOWN:
            return NameKind::unknown;
        default:
            return NameKind::file;
    }
}

enum class LinkEnd : std::uint8_t { folder, noFolder, nowhere };

/// Some file systems do not keep the kind with the name.
NameKind askedKind(int folder, const char* name) noexcept {
    struct stat status = {};
    if (::fstatat(folder, name, &status, AT_SYMLINK_NOFOLLOW) != 0) return NameKind::unknown;
    if (S_ISLNK(status.st_mode)) return NameKind::link;
    return S_ISDIR(status.st_mode) ? NameKind::folder : NameKind::file;
}

}  // namespace

/// An open folder.
struct FolderWalk::FolderHandle {
    explicit FolderHandle(const std::filesystem::path& folder) noexcept {
        const int descriptor = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_NONBLOCK | O_CLOEXEC);
        if (descriptor >= 0) stream = ::fdopendir(descriptor);
        if (stream != nullptr) return;
        error = systemError(errno);
        if (descriptor >= 0) ::close(descriptor);
    }
    ~FolderHandle() {
        if (stream != nullptr) ::closedir(stream);
    }
    FolderHandle(const FolderHandle&) = delete;
    FolderHandle& operator=(const FolderHandle&) = delete;

    [[nodiscard]] int number() const noexcept { return ::dirfd(stream); }
    [[nodiscard]] FolderEntry entry(const char* name) const {
        FolderEntry entry{.name = name, .state = {}, .error = {}};
        struct stat status = {};
        if (::fstatat(number(), name, &status, 0) == 0)
            entry.state = stateFromSystem(status);
        else
            entry.error = systemError(errno);
        return entry;
    }
    /// To a folder also when the system does not let one see: it must not seem to have vanished.
    [[nodiscard]] LinkEnd endOfLink(const char* name) const noexcept {
        struct stat status = {};
        if (::fstatat(number(), name, &status, 0) == 0)
            return S_ISDIR(status.st_mode) ? LinkEnd::folder : LinkEnd::noFolder;
        if (errno == ENOENT) return LinkEnd::nowhere;
        return errno == ELOOP || errno == ENOTDIR ? LinkEnd::noFolder : LinkEnd::folder;
    }

    DIR* stream = nullptr;
    std::error_code error;
};

std::size_t FolderWalk::IdentityHash::operator()(const Identity& identity) const noexcept {
    constexpr std::uint64_t spread = 0x9E3779B97F4A7C15U;
    return static_cast<std::size_t>((identity.number ^ identity.device * spread) * spread);
}

void FolderWalk::enter(std::filesystem::path folder) {
    pending_.push_back({std::move(folder), 1.0});
    for (Pending& pending : pending_) pending.share = 1.0 / static_cast<double>(pending_.size());
}

std::optional<FolderWalk::Pending> FolderWalk::takePending() {
    auto& source = pending_.empty() ? pendingLinks_ : pending_;
    if (source.empty()) return std::nullopt;
    Pending taken = std::move(source.back());
    source.pop_back();
    return taken;
}

std::optional<FolderListing> FolderWalk::next() {
    finishedShare_ += lentShare_;
    lentShare_ = 0;
    while (auto pending = takePending()) {
        const double share = pending->share;
        if (auto listing = list(std::move(*pending))) {
            lentShare_ = listing->share;
            return listing;
        }
        finishedShare_ += share;
    }
    return std::nullopt;
}

std::optional<FolderListing> FolderWalk::list(Pending pending) {
    const FolderHandle handle(pending.folder);
    if (handle.error == std::errc::no_such_file_or_directory) return std::nullopt;
    FolderListing listing{.folder = std::move(pending.folder),
                          .entries = {},
                          .deadLinks = {},
                          .error = handle.error,
                          .device = 0,
                          .isEmpty = true,
                          .share = pending.share};
    if (handle.error) return listing;
    struct stat status = {};
    if (::fstat(handle.number(), &status) != 0) {
        listing.error = systemError(errno);
        return listing;
    }
    listing.device = static_cast<std::uint64_t>(status.st_dev);
    if (!listed_.insert({listing.device, status.st_ino}).second) return std::nullopt;
    readNames(handle, listing);
    return listing;
}

void FolderWalk::readNames(const FolderHandle& handle, FolderListing& listing) {
    const std::size_t firstFolder = pending_.size();
    const std::size_t firstLink = pendingLinks_.size();
    errno = 0;
    while (const dirent* entry = ::readdir(handle.stream)) {  // NOLINT(concurrency-mt-unsafe): a stream of its own
        const char* name = entry->d_name;
        if (!isFolderItself(name)) {
            listing.isEmpty = false;
            NameKind kind = kindOf(*entry);
            if (kind == NameKind::unknown) kind = askedKind(handle.number(), name);
            if (kind == NameKind::folder) pending_.push_back({listing.folder / name, 0});
            if (kind == NameKind::link || kind == NameKind::unknown) {
                const LinkEnd end = handle.endOfLink(name);
                if (end == LinkEnd::folder) pendingLinks_.push_back({listing.folder / name, 0});
                if (end == LinkEnd::nowhere && kind == NameKind::link) listing.deadLinks.emplace(name);
            }
            if (wanted_(name)) listing.entries.push_back(handle.entry(name));
        }
        errno = 0;
    }
    if (errno != 0) listing.error = systemError(errno);

    const std::size_t parts = 1 + (pending_.size() - firstFolder) + (pendingLinks_.size() - firstLink);
    listing.share /= static_cast<double>(parts);
    for (std::size_t i = firstFolder; i < pending_.size(); ++i) pending_[i].share = listing.share;
    for (std::size_t i = firstLink; i < pendingLinks_.size(); ++i) pendingLinks_[i].share = listing.share;
}

}  // namespace velamo
