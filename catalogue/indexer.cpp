#include "catalogue/indexer.h"

#include <algorithm>
#include <cerrno>
#include <set>
#include <unordered_set>
#include <utility>

#include "catalogue/places.h"
#include "velamo/formats/format.h"
#include "velamo/formats/import.h"
#include "velamo/formats/thread_file.h"
#include "velamo/model/failure.h"
#include "velamo/platform/archives/archive_path.h"
#include "velamo/platform/processes/worker_pool.h"
#include "velamo/platform/system/files.h"
#include "velamo/platform/system/folder_walk.h"

namespace velamo {
namespace {

using Path = std::filesystem::path;
using FolderId = Catalogue::FolderId;

constexpr std::size_t batchesPerReader = 4;

VLMError systemError(int code) {
    VLMError error;
    failWithSystemError(code, &error);
    return error;
}

VLMError notARegularFile(FileKind kind) {
    if (kind == FileKind::folder) return systemError(EISDIR);
    VLMError error = systemError(EINVAL);
    error.failureReason = "not a regular file";
    return error;
}

/// A stick that is not plugged in and a folder that was deleted look the same; only a person can tell.
VLMError awayError(int code = ENOENT) {
    VLMError error = systemError(code);
    const std::string reason = code == ENODEV ? "it is empty, and its disk is not there" : error.message();
    error.failureReason = reason + "; the catalogue keeps what it knows of it";
    return error;
}

/// Nothing where the design has no side file; `error` is set where the system could not tell this time.
std::optional<FileStamp> stampOfSideFile(const Path& design, std::error_code& error) {
    const FileState state = stateOfFile(threadFileOf(design), error);
    if (error && isAbsence(error)) {
        error.clear();
        return std::nullopt;
    }
    if (error || state.kind != FileKind::regular) return std::nullopt;
    return FileStamp{state.size, state.modified};
}

/// Whether the name is that of something that is looked into.
bool hasWantedName(const Path& name) {
    return hasDesignName(name) || hasArchiveName(name);
}

/// A design, or an archive of designs, to be read.
struct Job {
    FolderId folder;
    Path file;
    DesignStamp stamp;
    bool isKnown;                              // is in the catalogue
    std::optional<std::uint64_t> device = {};  // of an archive
};
/// Jobs go to the readers in batches: a reader that lives in another process is asked for many at once.
using Batch = std::vector<Job>;
constexpr std::size_t largestBatch = 16;
struct BatchResult {
    Batch batch;
    std::vector<FactsOutcome> outcomes;  // none when nothing can be read any more
    std::optional<WorkerLoss> loss;
};
using Readers = WorkerPool<Batch, BatchResult>;

BatchResult readSafely(const FactsReader& reader, Batch&& batch) noexcept {
    VLMError error;
    BatchResult result{.batch = std::move(batch), .outcomes = {}, .loss = {}};
    const bool isDone = operation(&error, [&] {
        std::vector<Path> files;
        files.reserve(result.batch.size());
        for (const Job& job : result.batch) files.push_back(job.file);
        try {
            result.outcomes = reader(files);
        } catch (const WorkerLoss& loss) {
            result.loss = loss;
        }
        return true;
    });
    if (!isDone) result.outcomes.assign(result.batch.size(), std::error_code(error.code, std::generic_category()));
    return result;
}

std::vector<Readers::Work> worksOf(std::vector<FactsReader> readers) {
    std::vector<Readers::Work> works;
    works.reserve(readers.size());
    for (FactsReader& reader : readers)
        works.emplace_back(
            [reader = std::move(reader)](Batch&& batch) { return readSafely(reader, std::move(batch)); });
    return works;
}

/// What was asked for, by its name in the catalogue.
struct Root {
    Path path;
    FileState state;
    bool isNamed;  // for this run
};

/// One run of the indexer.
class Indexing {
public:
    Indexing(Catalogue& catalogue, std::vector<FactsReader> readers, std::int64_t readerNumber,
             const IndexObserver& observer)
        : catalogue_(catalogue),
          observer_(observer),
          readerNumber_(readerNumber),
          mostBatches_(readers.size() * batchesPerReader),
          readers_(worksOf(std::move(readers)), mostBatches_) {}

    IndexSummary run(const std::vector<Path>& named) {
        takeRoots(named);
        for (const Root& root : roots_)
            if (root.state.kind == FileKind::regular && !liesInRootFolder(root.path)) takeSingleFile(root);
        walkFolders();
        submitBatch();
        while (auto result = readers_.take()) record(*result);
        removeVanishedFolders();
        catalogue_.commit();
        return summary_;
    }

private:
    void takeRoots(const std::vector<Path>& named) {
        knownRoots_ = catalogue_.roots();
        const std::vector<Path> asked = named.empty() ? knownRoots_ : named;
        for (const Path& path : asked) takeRoot(path, !named.empty());
        labelRoots_ = catalogue_.roots();
    }

    void takeRoot(const Path& given, bool isNamed) {
        Root root{.path = catalogueName(given), .state = {}, .isNamed = isNamed};
        std::error_code error;
        root.state = stateOfFile(root.path, error);
        if (error == std::errc::no_such_file_or_directory) {
            refuseMissingRoot(root, given);
        } else if (error) {
            refuseRoot(given, systemError(error.value()), true);
        } else if (root.state.kind == FileKind::other) {
            refuseRoot(given, notARegularFile(root.state.kind), true);
        } else if (root.state.kind == FileKind::regular && !hasWantedName(root.path.filename())) {
            refuseRoot(given, errorOf(refusalOf(root.path)), true);
        } else {
            catalogue_.addRoot(root.path);
            roots_.push_back(std::move(root));
        }
    }

    void refuseMissingRoot(const Root& root, const Path& given) {
        const bool isKept = isAway(root.path);
        if (!isKept) {
            catalogue_.removeRoot(root.path);
            vanishedRoots_.push_back(root.path);
        }
        refuseRoot(given, isKept ? awayError() : systemError(ENOENT), root.isNamed);
    }

    /// Whether what is not there may come back. A design has vanished when its folder is there, and so has whatever lay
    /// in an indexed folder that is.
    [[nodiscard]] bool isAway(const Path& path) {
        const bool isRoot = std::find(knownRoots_.begin(), knownRoots_.end(), path) != knownRoots_.end();
        if (isRoot && !isKnownFile(path)) return true;
        if (isRoot && isThere(path.parent_path())) return false;
        bool liesInRoot = isRoot;
        for (const Path& root : knownRoots_) {
            if (root == path || !isWithin(path, root)) continue;
            if (isThere(root)) return false;
            liesInRoot = true;
        }
        return liesInRoot;
    }

    /// Whether the catalogue has it as a file.
    [[nodiscard]] bool isKnownFile(const Path& path) {
        if (catalogue_.findArchive(path)) return true;
        const auto folder = catalogue_.findFolder(path.parent_path());
        return folder && catalogue_.designsIn(*folder).contains(path.filename());
    }

    void refuseRoot(const Path& given, const VLMError& error, bool isFailure) {
        observer_.problem(given, error);
        if (isFailure) summary_.isComplete = false;
    }

    [[nodiscard]] bool liesInRootFolder(const Path& file) const {
        return std::any_of(roots_.begin(), roots_.end(), [&file](const Root& root) {
            return root.state.kind == FileKind::folder && isWithin(file, root.path);
        });
    }

    void takeSingleFile(const Root& root) {
        const FolderEntry entry{.name = root.path.filename(), .state = root.state, .error = {}};
        const auto folder = identityOfFile(root.path.parent_path());
        FolderContent content(*this, root.path.parent_path(), folder ? std::optional(folder->device) : std::nullopt);
        content.take(entry, false);
    }

    void walkFolders() {
        FolderWalk walk(hasWantedName);
        for (const Root& root : roots_)
            if (root.state.kind == FileKind::folder) walk.enter(root.path);
        while (const auto listing = walk.next()) {
            takeListing(*listing, walk.finishedShare());
            while (auto result = readers_.takeIfDone()) record(*result);
        }
        tellProgress(walk.finishedShare());
    }

    void takeListing(const FolderListing& listing, double finishedShare) {
        if (listing.error) noteUnreadFolder(listing);
        if (isMountPointOfAnother(listing)) return noteAwayDisk(listing.folder);
        FolderContent content(*this, listing.folder, listing.device);
        const double sharePerEntry =
            listing.share / static_cast<double>(std::max<std::size_t>(listing.entries.size(), 1));
        for (const FolderEntry& entry : listing.entries) {
            content.take(entry, listing.deadLinks.contains(entry.name));
            finishedShare += sharePerEntry;
            tellProgress(finishedShare);
        }
        if (!listing.error) content.removeRest();
        for (const std::string& link : listing.deadLinks) deadLinks_.push_back(listing.folder / link);
        tellProgress(finishedShare);
    }

    /// What stays out of reach is skipped, as it is each time, and what somebody writes at the moment is read the next
    /// time, as if it were written a moment later. Where the system could not read what it has, the run has not done
    /// what it was asked for.
    void noteReason(std::error_code reason) {
        const bool isBeingWritten = reason == std::errc::resource_unavailable_try_again;
        if (!isAbsence(reason) && !isBeingWritten) summary_.isComplete = false;
    }

    [[nodiscard]] bool isMountPointOfAnother(const FolderListing& listing) const {
        return !listing.error && listing.isEmpty && waitsForDisk(listing.device, catalogue_.deviceOf(listing.folder));
    }

    void noteAwayDisk(const Path& folder) {
        awayFolders_.push_back(folder);
        const auto isNamed = [&folder](const Root& root) { return root.isNamed && root.path == folder; };
        refuseRoot(folder, awayError(ENODEV), std::any_of(roots_.begin(), roots_.end(), isNamed));
    }

    void noteUnreadFolder(const FolderListing& listing) {
        observer_.problem(listing.folder, systemError(listing.error.value()));
        noteReason(listing.error);
        unreadFolders_.push_back(listing.folder);
        for (const Root& root : roots_)
            if (root.path == listing.folder) summary_.isComplete = false;
    }

    void tellProgress(double finishedShare) {
        finishedShare_ = std::max(finishedShare_, finishedShare);
        observer_.progress({.finishedShare = finishedShare_, .files = files_});
        catalogue_.commitIfDue();
    }

    /// What a folder holds, compared with what the catalogue has of it.
    class FolderContent {
    public:
        FolderContent(Indexing& indexing, Path folder, std::optional<std::uint64_t> device)
            : indexing_(indexing), folder_(std::move(folder)), device_(device) {
            if (indexing.catalogue_.findFolder(folder_)) rest_ = indexing.catalogue_.designsIn(id());
        }
        void take(const FolderEntry& entry, bool isDeadLink) {
            if (entry.state.kind == FileKind::folder && hasArchiveName(entry.name)) return;  // it is walked into
            const auto known = rest_.find(entry.name);
            const bool isVanished = !isDeadLink && entry.error == std::errc::no_such_file_or_directory;
            if (entry.error) indexing_.noteReason(entry.error);
            if (entry.error)
                skip(entry, systemError(entry.error.value()));
            else if (entry.state.kind != FileKind::regular)
                skip(entry, notARegularFile(entry.state.kind));
            else if (hasArchiveName(entry.name))
                compareArchive(entry, known == rest_.end() ? nullptr : &known->second);
            else
                compare(entry, known == rest_.end() ? nullptr : &known->second);
            // What may still be there, and is only out of reach today, stays in the catalogue.
            const bool stays = entry.error ? !isVanished : entry.state.kind == FileKind::regular;
            if (stays && known != rest_.end()) rest_.erase(known);
        }
        /// Removes the designs that were not among the entries.
        void removeRest() {
            for (const auto& [name, design] : rest_) indexing_.remove(*id_, name);
        }

    private:
        void skip(const FolderEntry& entry, const VLMError& error) {
            ++indexing_.files_;
            ++indexing_.summary_.skipped;
            indexing_.observer_.problem(folder_ / entry.name, error);
        }
        void compare(const FolderEntry& entry, const KnownDesign* known) {
            Path file = folder_ / entry.name;
            std::error_code error;
            const auto sideFile = stampOfSideFile(file, error);
            if (error) {
                indexing_.noteReason(error);
                return skip(entry, systemError(error.value()));
            }
            const DesignStamp stamp{.design = {entry.state.size, entry.state.modified},
                                    .sideFile = sideFile,
                                    .reader = indexing_.readerNumber_};
            if (known != nullptr && known->stamp == stamp)
                indexing_.countUnchanged(*known);
            else
                indexing_.submit({id(), std::move(file), stamp, known != nullptr});
        }
        /// `known`: the row of its own that an archive has which could not be read to its end.
        void compareArchive(const FolderEntry& entry, const KnownDesign* known) {
            Path file = folder_ / entry.name;
            indexing_.visitedArchives_.insert(file.native());
            const FileStamp stamp{entry.state.size, entry.state.modified};
            const auto archive = indexing_.catalogue_.findArchive(file);
            if (archive && archive->stamp == stamp && archive->reader == indexing_.readerNumber_)
                return indexing_.countUnchanged(*archive, known != nullptr);
            indexing_.submit({.folder = id(),
                              .file = std::move(file),
                              .stamp = {.design = stamp, .sideFile = {}, .reader = indexing_.readerNumber_},
                              .isKnown = known != nullptr,
                              .device = device_});
        }
        /// A folder gets into the catalogue with its first design. Its words change with the indexed folders around it.
        FolderId id() {
            if (!id_) {
                id_ = indexing_.catalogue_.putFolder(folder_, indexing_.wordsOf(folder_).native(), device_);
                indexing_.visitedFolders_.insert(*id_);
            }
            return *id_;
        }

        Indexing& indexing_;
        Path folder_;
        std::optional<std::uint64_t> device_;
        std::optional<FolderId> id_;
        std::map<std::string, KnownDesign> rest_;
    };

    /// The part of a folder's path that its owner chose: from the name of the outermost indexed folder on, so that a
    /// search for "rose" does not find everything that the user rose has.
    [[nodiscard]] Path wordsOf(const Path& folder) const {
        const Path* outermost = nullptr;
        for (const Path& root : labelRoots_)
            if (isWithin(folder, root) && (outermost == nullptr || isWithin(*outermost, root))) outermost = &root;
        if (outermost == nullptr) return folder.filename();
        return folder.native().substr(outermost->parent_path().native().size());
    }

    void countUnchanged(const KnownDesign& known) {
        ++files_;
        ++summary_.unchanged;
        if (known.isBroken) ++summary_.broken;
    }

    void countUnchanged(const KnownArchive& archive, bool hasRow) {
        const std::int64_t rows = archive.designs + (hasRow ? 1 : 0);
        files_ += rows;
        summary_.unchanged += rows;
        summary_.broken += archive.broken;
    }

    void submit(Job job) {
        batch_.push_back(std::move(job));
        if (batch_.size() == largestBatch) submitBatch();
    }

    void submitBatch() {
        if (batch_.empty()) return;
        while (readers_.isFull()) record(*readers_.take());
        readers_.submit(std::exchange(batch_, {}));
    }

    /// What the readers had done before they were lost stays in the catalogue.
    void record(const BatchResult& result) {
        if (result.loss) {
            catalogue_.commit();
            throw WorkerLoss(*result.loss);
        }
        for (std::size_t i = 0; i < result.batch.size(); ++i) record(result.batch[i], result.outcomes[i]);
    }

    void record(const Job& job, const FactsOutcome& outcome) {
        if (const auto* reason = std::get_if<std::error_code>(&outcome))
            recordUnreadable(job, *reason);
        else if (const auto* archive = std::get_if<ArchiveFacts>(&outcome))
            recordArchive(job, *archive);
        else if (hasArchiveName(job.file))  // which ended its reader
            recordArchive(job,
                          {.members = {}, .failure = std::get<DesignFailure>(std::get<FileFacts>(outcome).content)});
        else
            recordFacts(job, std::get<FileFacts>(outcome));
        tellProgress(finishedShare_);
    }

    void recordFacts(const Job& job, const FileFacts& facts, std::string_view words = {}) {
        ++files_;
        if (const auto* failure = std::get_if<DesignFailure>(&facts.content)) {
            ++summary_.broken;
            observer_.problem(job.file, errorOf(*failure));
        }
        ++(job.isKnown ? summary_.changed : summary_.added);
        catalogue_.putDesign(job.folder, job.file.filename(), job.stamp, facts, words);
    }

    /// What was in the archive before and is not now leaves the catalogue.
    void recordArchive(const Job& job, const ArchiveFacts& archive) {
        const std::int64_t brokenBefore = summary_.broken;
        std::map<FolderId, std::map<std::string, KnownDesign>> rest;
        for (const FolderId folder : catalogue_.foldersBelow(job.file))
            rest.emplace(folder, catalogue_.designsIn(folder));
        for (const MemberFacts& member : archive.members) recordMember(job, member, rest);
        for (const auto& [folder, designs] : rest)
            for (const auto& [name, design] : designs) remove(folder, name);
        if (archive.failure)
            recordFacts(job, {.content = *archive.failure});
        else if (job.isKnown)
            remove(job.folder, job.file.filename());
        catalogue_.putArchive(job.file, {.stamp = job.stamp.design,
                                         .reader = job.stamp.reader,
                                         .designs = static_cast<std::int64_t>(archive.members.size()),
                                         .broken = summary_.broken - brokenBefore});
    }

    void recordMember(const Job& job, const MemberFacts& member,
                      std::map<FolderId, std::map<std::string, KnownDesign>>& rest) {
        const Path file = job.file / member.location;
        const auto words = Path(member.name);
        const FolderId folder = catalogue_.putFolder(
            file.parent_path(),
            (wordsOf(job.file.parent_path()) / job.file.filename() / words.relative_path().parent_path()).native(),
            job.device);
        visitedFolders_.insert(folder);
        const auto known = rest.find(folder);
        const bool isKnown = known != rest.end() && known->second.erase(file.filename()) > 0;
        // An archive need not say when its members were made.
        const std::int64_t modified = member.modified != 0 ? member.modified : job.stamp.design.modified;
        const DesignStamp stamp{
            .design = {static_cast<std::int64_t>(member.size), modified}, .sideFile = {}, .reader = job.stamp.reader};
        recordFacts({.folder = folder, .file = file, .stamp = stamp, .isKnown = isKnown}, member.facts,
                    words.filename().native());
    }

    void recordUnreadable(const Job& job, std::error_code reason) {
        ++files_;
        if (reason != std::errc::no_such_file_or_directory) {
            ++summary_.skipped;
            observer_.problem(job.file, systemError(reason.value()));
            noteReason(reason);
        } else if (job.isKnown && isThere(job.file.parent_path())) {  // vanished between listing and reading
            remove(job.folder, job.file.filename());
        }
    }

    void remove(FolderId folder, const std::string& name) {
        ++summary_.removed;
        catalogue_.removeDesign(folder, name);
    }

    void removeVanishedFolders() {
        for (const Path& root : knownRoots_)  // which may lie below one that is there
            if (!isThere(root) && isAway(root)) awayFolders_.push_back(root);
        for (const Root& root : roots_) {
            if (root.state.kind != FileKind::folder || isThere(root.path)) continue;
            awayFolders_.push_back(root.path);  // in the middle of the run
            refuseRoot(root.path, awayError(), root.isNamed);
        }
        for (const Path& root : vanishedRoots_) removeSingleFile(root);
        for (const Path& root : vanishedRoots_) removeUnvisitedFolders(root);
        for (const Root& root : roots_) removeUnvisitedFolders(root.path);
        for (const Path& link : missedLinks_) refuseRoot(link, awayError(), false);
        catalogue_.removeEmptyFolders();
    }

    void removeSingleFile(const Path& file) {
        const auto folder = catalogue_.findFolder(file.parent_path());
        if (folder && catalogue_.designsIn(*folder).contains(file.filename())) remove(*folder, file.filename());
    }

    /// Whether what was known of the path stays, though this run did not come to it.
    [[nodiscard]] bool stays(const Path& path) {
        const auto isBelow = [&path](const Path& unread) { return isWithin(path, unread); };
        const auto link = std::find_if(deadLinks_.begin(), deadLinks_.end(), isBelow);
        if (link != deadLinks_.end()) missedLinks_.insert(*link);
        return link != deadLinks_.end() || std::any_of(unreadFolders_.begin(), unreadFolders_.end(), isBelow) ||
               std::any_of(awayFolders_.begin(), awayFolders_.end(), isBelow);
    }

    /// Whether the folder lies in an archive that was seen.
    [[nodiscard]] bool liesInVisitedArchive(Path folder) const {
        while (folder.has_relative_path()) {
            if (visitedArchives_.contains(folder.native())) return true;
            folder = folder.parent_path();
        }
        return false;
    }

    void removeUnvisitedFolders(const Path& top) {
        summary_.removed += catalogue_.removeFolders(top, [this](FolderId id, const Path& folder) {
            return visitedFolders_.contains(id) || liesInVisitedArchive(folder) || stays(folder);
        });
        for (const Path& archive : catalogue_.archivesBelow(top))
            if (!visitedArchives_.contains(archive.native()) && !stays(archive)) catalogue_.removeArchive(archive);
    }

    static DesignFailure refusalOf(const Path& file) {
        VLMError error;
        VLMDesign design;
        static_cast<void>(importDesignFromURLerror(design, file, &error));
        return failureOf(error);
    }

    Catalogue& catalogue_;
    const IndexObserver& observer_;
    std::int64_t readerNumber_;
    std::vector<Root> roots_;
    std::vector<Path> vanishedRoots_;
    std::vector<Path> knownRoots_;  // before this run
    std::vector<Path> labelRoots_;  // all that the catalogue knows
    std::vector<Path> awayFolders_;
    std::vector<Path> deadLinks_;  // what was found behind them before is away
    std::set<Path> missedLinks_;   // those of them that designs lie behind
    std::vector<Path> unreadFolders_;
    std::unordered_set<FolderId> visitedFolders_;
    std::unordered_set<std::string> visitedArchives_;
    IndexSummary summary_;
    std::int64_t files_ = 0;
    double finishedShare_ = 0;
    Batch batch_;  // of jobs that no reader has yet
    std::size_t mostBatches_;
    Readers readers_;  // last: its threads end before anything else goes
};

}  // namespace

IndexSummary indexFolders(Catalogue& catalogue, const IndexRequest& request, std::vector<FactsReader> readers,
                          std::int64_t readerNumber, const IndexObserver& observer) {
    return Indexing(catalogue, std::move(readers), readerNumber, observer).run(request.folders);
}

std::filesystem::path catalogueName(const std::filesystem::path& path) {
    std::error_code error;
    Path name = std::filesystem::weakly_canonical(path, error);
    if (error) name = std::filesystem::absolute(path, error).lexically_normal();
    // The path of a folder that is not there keeps a slash at its end.
    return name.has_filename() || name == name.root_path() ? name : name.parent_path();
}

}  // namespace velamo
