#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "catalogue/database.h"
#include "catalogue/search.h"
#include "reading/facts_reader.h"
#include "velamo/platform/system/file_state.h"

namespace velamo {

/// What tells whether a file has changed.
struct FileStamp {
    std::int64_t size = 0;      // bytes
    std::int64_t modified = 0;  // nanoseconds since the start of 1970
    friend bool operator==(const FileStamp&, const FileStamp&) = default;
};

/// What tells whether a design has to be read again.
struct DesignStamp {
    FileStamp design;
    std::optional<FileStamp> sideFile;  // nothing where there is none
    std::int64_t reader = 0;            // which build of the importer read it
    friend bool operator==(const DesignStamp&, const DesignStamp&) = default;
};

/// What the catalogue knows of a file in a folder.
struct KnownDesign {
    DesignStamp stamp;
    bool isBroken = false;
};

/// What the catalogue knows of an archive as a whole.
struct KnownArchive {
    FileStamp stamp;
    std::int64_t reader = 0;   // which build read it
    std::int64_t designs = 0;  // in it
    std::int64_t broken = 0;   // of them, and itself where it could not be read to its end
    friend bool operator==(const KnownArchive&, const KnownArchive&) = default;
};

/// The catalogue of a person's designs: one SQLite file. Paths are absolute and kept byte for byte.
///
/// Changes are committed in batches, so that a process that is killed loses the last batch at most and damages nothing;
/// what is not committed when the object goes is undone. One process at a time has the catalogue open for indexing,
/// while any number search in it. All operations throw CatalogueError when the file cannot be read or written.
class Catalogue {
public:
    /// A folder's number in the catalogue.
    using FolderId = std::int64_t;

    /// Opens the catalogue to change it; makes it, and the folder it is in, for the user alone when it is not there.
    /// One that is there is closed to those who are neither its owner nor in its group. Waits while another process has
    /// it open so, after having called `onWaiting` once. A catalogue of an older layout is brought up to date; its
    /// designs are to be read again (see bringLayoutUpToDate). A file that is damaged, of a newer layout or no
    /// catalogue at all throws CatalogueError and is left alone; a folder or lock that cannot be had throws
    /// std::system_error.
    [[nodiscard]] static Catalogue openForIndexing(
        const std::filesystem::path& file, const std::function<void()>& onWaiting = [] {});
    /// Opens a catalogue that is there, to search in it; it need not be writable. Throws CatalogueError as above, and
    /// for an older layout; std::system_error where the system does not let it be read.
    [[nodiscard]] static Catalogue openForSearching(const std::filesystem::path& file);
    ~Catalogue();
    Catalogue(Catalogue&&) noexcept;
    Catalogue& operator=(Catalogue&&) noexcept;

    /// The folders (or single files) that were asked for in runs so far, and so are kept up to date.
    [[nodiscard]] std::vector<std::filesystem::path> roots() const;
    void addRoot(const std::filesystem::path& root);
    void removeRoot(const std::filesystem::path& root);

    /// The folder's number; nothing when it is not in the catalogue.
    [[nodiscard]] std::optional<FolderId> findFolder(const std::filesystem::path& folder);
    /// The same, after having put it into the catalogue where it was not. `words` is what searched words are looked for
    /// in, `device` the number of the disk on which the folder is, as far as one knows.
    FolderId putFolder(const std::filesystem::path& folder, std::string_view words,
                       std::optional<std::uint64_t> device = {});
    /// The number of the disk on which the folder was, or one below it; nothing where none is known.
    [[nodiscard]] std::optional<std::uint64_t> deviceOf(const std::filesystem::path& folder) const;

    /// The designs of a folder by name, without those of its subfolders.
    [[nodiscard]] std::map<std::string, KnownDesign> designsIn(FolderId folder);
    /// Puts a design in, in place of what was known of it. `words`: its name as text; empty: the name is text.
    void putDesign(FolderId folder, const std::string& name, const DesignStamp& stamp, const FileFacts& facts,
                   std::string_view words = {});
    void removeDesign(FolderId folder, const std::string& name);

    /// What is known of the archive with this path; its designs lie in the folder of that name, and below it.
    [[nodiscard]] std::optional<KnownArchive> findArchive(const std::filesystem::path& archive);
    void putArchive(const std::filesystem::path& archive, const KnownArchive& known);
    void removeArchive(const std::filesystem::path& archive);
    /// The archives at and below a folder.
    [[nodiscard]] std::vector<std::filesystem::path> archivesBelow(const std::filesystem::path& folder) const;
    /// The folders at and below a path.
    [[nodiscard]] std::vector<FolderId> foldersBelow(const std::filesystem::path& top) const;

    /// Tells whether a folder stays.
    using IsKept = std::function<bool(FolderId, const std::filesystem::path&)>;
    /// Removes the folder `top` and those below it with their designs, but for the folders that are to be kept. The
    /// number of designs removed.
    std::int64_t removeFolders(const std::filesystem::path& top, const IsKept& isKept);

    /// Forgets the folder, or single design, and what lies below it, whether it is there or not: nothing of it is kept
    /// up to date any more, unless an indexed folder around it is. The number of designs removed, or nothing where the
    /// catalogue knows nothing of the place.
    std::optional<std::int64_t> forget(const std::filesystem::path& place);

    /// Forgets the folders that hold no design any more.
    void removeEmptyFolders();

    /// Ends the batch when it is full or has been open for long.
    void commitIfDue();
    /// Ends the batch.
    void commit();

    [[nodiscard]] std::vector<FoundDesign> search(const SearchRequest& request) const;
    /// How many designs the request finds, whatever its limit and offset.
    [[nodiscard]] std::int64_t count(const SearchRequest& request) const;

private:
    struct State;
    explicit Catalogue(std::unique_ptr<State> state) noexcept;
    std::unique_ptr<State> state_;
};

}  // namespace velamo
