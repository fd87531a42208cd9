#pragma once

#include <sqlite3.h>

#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "catalogue/indexer.h"
#include "tests/support/dst.h"
#include "tests/support/temporary_folder.h"
#include "velamo/formats/import.h"

namespace velamo::test {

/// A sound DST file: `stitches` stitches of 1 mm to the right, so the design is stitches - 1 millimetres wide.
inline Bytes soundDst(std::size_t stitches = 2) {
    Bytes records;
    for (std::size_t i = 0; i < stitches; ++i) append(records, bytes(0x05, 0x00, 0x03));  // +1 +9
    return dstFile(records);
}

inline const Bytes brokenDst = bytes('L', 'A', ':');

/// What the run told its observer.
struct Told {
    std::map<std::string, int> problems;  // codes by path
    double finishedShare = 0;
    bool everWentBack = false;
    std::int64_t files = 0;

    IndexObserver observer() {
        return {.problem = [this](const std::filesystem::path& file,
                                  const VLMError& error) { problems[file.native()] = error.code; },
                .progress =
                    [this](const IndexProgress& progress) {
                        everWentBack = everWentBack || progress.finishedShare < finishedShare;
                        finishedShare = progress.finishedShare;
                        files = progress.files;
                    }};
    }
};

/// Reads without the plug-in: what is under test is the indexer.
inline ReadOutcome readDirectly(const std::filesystem::path& file) {
    VLMDesign design;
    VLMError error;
    if (importDesignFromURLerror(design, file, &error)) return attributesOfDesign(design);
    if (const auto reason = reasonAgainstReading(file)) return reason;
    return DesignFailure{std::string(error.domain), error.code, error.message()};
}

using FileReader = std::function<ReadOutcome(const std::filesystem::path& file)>;

inline IndexSummary runIndexer(Catalogue& catalogue, const std::vector<std::filesystem::path>& folders, Told& told,
                               std::int64_t readerNumber = 1, const FileReader& readFile = readDirectly) {
    const DesignReader reader = [readFile](std::span<const std::filesystem::path> files) {
        std::vector<ReadOutcome> outcomes;
        for (const auto& file : files) outcomes.push_back(readFile(file));
        return outcomes;
    };
    return indexFolders(catalogue, {folders}, {reader, reader}, readerNumber, told.observer());
}

/// The paths that a search finds.
inline std::vector<std::string> pathsFound(const Catalogue& catalogue, const SearchRequest& request = {}) {
    std::vector<std::string> paths;
    for (const FoundDesign& design : catalogue.search(request)) paths.push_back(design.file.native());
    return paths;
}

/// Runs SQL on a file behind the catalogue's back; the first column of the last row, as text.
inline std::string runSql(const std::filesystem::path& file, const std::string& sql) {
    sqlite3* database = nullptr;
    ::sqlite3_open(file.c_str(), &database);
    std::string last;
    ::sqlite3_exec(
        database, sql.c_str(),
        [](void* text, int count, char** columns, char**) {
            if (count > 0 && columns[0] != nullptr) *static_cast<std::string*>(text) = columns[0];
            return 0;
        },
        &last, nullptr);
    ::sqlite3_close(database);
    return last;
}

}  // namespace velamo::test
