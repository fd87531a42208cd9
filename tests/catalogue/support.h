#pragma once

#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "catalogue/indexer.h"
#include "tests/support/dst.h"
#include "tests/support/run_sql.h"
#include "tests/support/temporary_folder.h"

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

/// What is known of a design with these attributes alone.
inline FileFacts factsWith(const DesignAttributes& attributes) {
    DesignFacts facts;
    facts.attributes = attributes;
    facts.format = "DST";
    return {.content = std::move(facts)};
}

using FileReader = std::function<FactsOutcome(const std::filesystem::path& file)>;

inline IndexSummary runIndexer(Catalogue& catalogue, const std::vector<std::filesystem::path>& folders, Told& told,
                               std::int64_t readerNumber = 1, const FileReader& readFile = readFacts) {
    const FactsReader reader = [readFile](std::span<const std::filesystem::path> files) {
        std::vector<FactsOutcome> outcomes;
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

}  // namespace velamo::test
