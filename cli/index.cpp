#include "cli/index.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <chrono>
#include <cmath>
#include <memory>
#include <ostream>

#include "cli/catalogue_file.h"
#include "cli/commands.h"
#include "cli/jobs_option.h"
#include "cli/progress_bar.h"
#include "velamo/platform/system/private_files.h"
#include "velamo/platform/text/text.h"

namespace velamo {
namespace {

ExitStatus reportNoFolder(const Console& console) {
    reportWrongUsage(console, "no folder has been indexed yet: name one, as in 'velamo index ~/Designs'");
    return ExitStatus::wrongUsage;
}

ExitStatus runIndexer(Catalogue& catalogue, const IndexOptions& options, const Console& console) {
    const std::int64_t number = readerNumber();
    auto made = factsReaders(options.jobs, workerLimitsOf(options.reading));
    if (!reportConfinement(options.reading, made.areConfined, console)) return ExitStatus::failure;
    const auto start = std::chrono::steady_clock::now();
    ProgressBar bar(console);
    const IndexObserver observer{
        .problem =
            [&](const std::filesystem::path& file, const VLMError& error) {
                bar.hide();
                reportProblem(console, file, error);
            },
        .progress = [&bar](const IndexProgress& progress) { bar.show(progress.finishedShare, progress.files); }};
    const auto summary = indexFolders(catalogue, {options.folders}, std::move(made.readers), number, observer);
    bar.hide();
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
    console.out << summaryText(summary, seconds.count()) << '\n';
    return summary.isComplete ? ExitStatus::success : ExitStatus::failure;
}

}  // namespace

Catalogue openToChange(const std::filesystem::path& catalogue, const Console& console) {
    return Catalogue::openForIndexing(catalogue, [&console] {
        if (console.problemsIsTerminal) console.problems << "velamo: waiting for another run\n" << std::flush;
    });
}

std::string summaryText(const IndexSummary& summary, double seconds) {
    const auto count = [](std::int64_t number, const char* what) { return std::to_string(number) + what; };
    const auto tenths = std::llround(seconds * 10);
    return counted(summary.designs(), "design") + ": " + count(summary.added, " new, ") +
           count(summary.changed, " changed, ") + count(summary.unchanged, " unchanged; ") +
           count(summary.removed, " removed, ") + count(summary.broken, " broken, ") +
           count(summary.skipped, " skipped; ") + std::to_string(tenths / 10) + '.' + std::to_string(tenths % 10) +
           " s";
}

ExitStatus index(const IndexOptions& options, const Console& console) {
    return withCatalogue(options.catalogue, console, [&] {
        // Asking for nothing must not leave an empty catalogue behind.
        if (options.folders.empty() && !std::filesystem::exists(options.catalogue)) return reportNoFolder(console);
        Catalogue catalogue = openToChange(options.catalogue, console);
        // Folders that other names lead to may be meant for others.
        if (options.catalogue == catalogueOfUser()) closeToOthers(options.catalogue.parent_path());
        if (options.folders.empty() && catalogue.roots().empty()) return reportNoFolder(console);
        return withoutReaderLoss(console, [&] { return runIndexer(catalogue, options, console); });
    });
}

void describeIndex(CLI::App& program, Action& chosen) {
    struct Options {
        std::vector<std::string> folders;
        std::string catalogue = catalogueOfUser();
        std::size_t jobs = usualJobs();
        ReadingOptions reading;
    };
    auto* command = program.add_subcommand("index", "Bring the catalogue of designs up to date");
    const auto options = std::make_shared<Options>();
    command->add_option("FOLDER", options->folders,
                        "Folders to index with all that lies below them, or single designs; without any, those of "
                        "earlier runs are brought up to date");
    addJobsOption(*command, options->jobs, "How many files to read at a time");
    command->add_option("--catalogue", options->catalogue, "The catalogue's file")->capture_default_str();
    addReadingOptions(*command, options->reading);
    command->callback([&chosen, options] {
        chosen = [options](const Console& console) {
            return index({.folders = {options->folders.begin(), options->folders.end()},
                          .catalogue = options->catalogue,
                          .jobs = options->jobs,
                          .reading = options->reading},
                         console);
        };
    });
}

}  // namespace velamo
