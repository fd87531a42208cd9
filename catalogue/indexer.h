#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <vector>

#include "catalogue/catalogue.h"
#include "reading/facts_reader.h"
#include "velamo/model/error.h"

namespace velamo {

struct IndexRequest {
    /// Folders to bring up to date with all that lies below them, or single files. Empty: those of earlier runs.
    std::vector<std::filesystem::path> folders;
};

/// What one run found. Designs include the broken ones.
struct IndexSummary {
    std::int64_t added = 0;
    std::int64_t changed = 0;    // read again
    std::int64_t unchanged = 0;  // not opened
    std::int64_t removed = 0;    // vanished
    std::int64_t broken = 0;     // no sound designs, among the first three
    std::int64_t skipped = 0;    // bear a design's name and are not to be read
    bool isComplete = true;      // false when what was asked for could not be read at all, or the system failed to read
                                 // something that is there
    [[nodiscard]] std::int64_t designs() const noexcept { return added + changed + unchanged; }
    friend bool operator==(const IndexSummary&, const IndexSummary&) = default;
};

struct IndexProgress {
    double finishedShare = 0;  // 0 to 1, never decreasing
    std::int64_t files = 0;    // dealt with so far
};

/// Who is told what happens, always on the thread that called indexFolders.
struct IndexObserver {
    std::function<void(const std::filesystem::path& file, const VLMError& error)> problem =
        [](const std::filesystem::path&, const VLMError&) {};
    std::function<void(const IndexProgress&)> progress = [](const IndexProgress&) {};
};

/// Brings the catalogue up to date: reads new and changed designs, one at a time with each of `readers` (at least one),
/// and removes the vanished. A design is read again when its own stamp, its side file's or `readerNumber` changed. What
/// cannot be read is told to the observer and never stops the run; below a folder that cannot be read, the catalogue
/// keeps what it has. So it does with a folder of an earlier run that is not there (on a disk that is away, perhaps),
/// which is told each time, with ENOENT; only where it was named is the run not complete. Throws CatalogueError when
/// the catalogue cannot be written, and WorkerLoss when no reader can read any more: what was read before is in the
/// catalogue then.
IndexSummary indexFolders(Catalogue& catalogue, const IndexRequest& request, std::vector<FactsReader> readers,
                          std::int64_t readerNumber, const IndexObserver& observer);

/// The absolute path of a file or folder without links and dots, as the catalogue names it; also of one that is not
/// there.
[[nodiscard]] std::filesystem::path catalogueName(const std::filesystem::path& path);

}  // namespace velamo
