#pragma once

#include <cstddef>
#include <filesystem>
#include <vector>

#include "catalogue/indexer.h"
#include "cli/console.h"
#include "cli/reading.h"

namespace velamo {

struct IndexOptions {
    std::vector<std::filesystem::path> folders;  // empty: those of earlier runs
    std::filesystem::path catalogue;
    std::size_t jobs = 1;
    ReadingOptions reading{};
};

/// Brings the catalogue up to date and prints a summary. Broken files are reported and do not make it fail.
[[nodiscard]] ExitStatus index(const IndexOptions& options, const Console& console);

/// Opens the catalogue to change it; a person is told where another program does so at the moment.
[[nodiscard]] Catalogue openToChange(const std::filesystem::path& catalogue, const Console& console);

/// "5 designs: 2 new, 0 changed, 3 unchanged; 1 removed, 1 broken, 0 skipped; 0.2 s"
[[nodiscard]] std::string summaryText(const IndexSummary& summary, double seconds);

}  // namespace velamo
