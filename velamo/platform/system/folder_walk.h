#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <system_error>
#include <unordered_set>
#include <utility>
#include <vector>

#include "velamo/platform/system/file_state.h"
#include "velamo/private_api.h"

namespace velamo {

/// A name in a folder that the walk was asked to tell about.
struct FolderEntry {
    std::string name;       // as the file system has it: any bytes but '/' and zero
    FileState state;        // of what the name leads to, links followed
    std::error_code error;  // why the state is not known (a link that leads nowhere, a folder that hides its files)
};

/// One folder of a walk.
struct FolderListing {
    std::filesystem::path folder;
    std::vector<FolderEntry> entries;  // those wanted, in the system's order
    std::set<std::string> deadLinks;   // names of links that lead nowhere today, wanted or not
    std::error_code error;             // why the folder could not be read, or not to its end
    std::uint64_t device = 0;          // the number of the disk that it is on
    bool isEmpty = true;               // no name at all is in it
    double share = 0;                  // its part of the whole walk, see FolderWalk::finishedShare
};

/// Lists folders and all that lies below them, one at a time. Links to folders are followed, but every folder is
/// listed once however many names lead to it, so that circles end; names without links in them come first, so that
/// a folder is listed under its own name wherever that name is part of the walk. Folders still to be listed are kept in
/// memory, and one folder is open at a time.
class VELAMO_PRIVATE_API FolderWalk {
public:
    /// Tells which names are reported as entries. Folders are walked into whatever their names.
    using Wanted = std::function<bool(const std::string& name)>;

    explicit FolderWalk(Wanted wanted) : wanted_(std::move(wanted)) {}

    /// Adds a folder to the walk; before the first call of next().
    void enter(std::filesystem::path folder);

    /// The next folder, or nullopt at the end. A folder that has vanished since its name was seen is passed over.
    [[nodiscard]] std::optional<FolderListing> next();

    /// The part of the walk that is done, 0 to 1, as far as one can know: a folder's part is shared out evenly between
    /// its own files and each of its subfolders. Never decreases.
    [[nodiscard]] double finishedShare() const noexcept { return finishedShare_; }

private:
    struct Pending {
        std::filesystem::path folder;
        double share;
    };
    struct FolderHandle;
    struct Identity {
        std::uint64_t device;
        std::uint64_t number;
        friend bool operator==(const Identity&, const Identity&) = default;
    };
    struct IdentityHash {
        std::size_t operator()(const Identity& identity) const noexcept;
    };

    [[nodiscard]] std::optional<Pending> takePending();
    [[nodiscard]] std::optional<FolderListing> list(Pending pending);
    void readNames(const FolderHandle& handle, FolderListing& listing);

    Wanted wanted_;
    std::vector<Pending> pending_;
    std::vector<Pending> pendingLinks_;  // walked when no other folder is left
    std::unordered_set<Identity, IdentityHash> listed_;
    double finishedShare_ = 0;
    double lentShare_ = 0;  // of the listing that next() gave last
};

}  // namespace velamo
