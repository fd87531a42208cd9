#include <algorithm>
#include <cerrno>
#include <iterator>
#include <memory>
#include <optional>
#include <ostream>

#include "cli/archive_target.h"
#include "cli/conversion_plan.h"
#include "cli/convert.h"
#include "cli/progress_bar.h"
#include "cli/save_design.h"
#include "velamo/formats/format.h"
#include "velamo/model/failure.h"
#include "velamo/platform/processes/worker_pool.h"
#include "velamo/platform/system/folder_walk.h"
#include "velamo/platform/text/text.h"

namespace velamo {
namespace {

namespace fs = std::filesystem;

struct Problem {
    fs::path file;
    VLMError error;
};

/// What came of a conversion.
struct Outcome {
    SaveOutcome saved;
    std::optional<WorkerLoss> loss;  // it was not tried
};

Problem systemProblem(const fs::path& file, std::error_code code) {
    Problem problem{file, {}};
    failWithSystemError(code.value(), &problem.error);
    return problem;
}

/// The designs in the folder and below it, by name; what cannot be looked at becomes a problem.
DesignsOfFolder designsIn(const ConvertAllRequest& request, std::vector<Problem>& problems) {
    DesignsOfFolder designs;
    const Format* const format = formatWithExtension(request.extension);
    const OutputFolder output(request.outFolder, request.folder);
    FolderWalk walk(hasDesignName);
    walk.enter(request.folder);
    while (const auto listing = walk.next()) {
        if (output.holds(listing->folder)) continue;
        if (listing->error) problems.push_back(systemProblem(listing->folder, listing->error));
        const bool isMixed = output.isMixedWith(listing->folder);
        for (const FolderEntry& entry : listing->entries) {
            const fs::path file = listing->folder / entry.name;
            if (entry.error) problems.push_back(systemProblem(file, entry.error));
            if (entry.error || entry.state.kind != FileKind::regular) continue;
            const bool isBystander = isMixed && formatWithExtension(extensionOf(file)) == format;
            (isBystander ? designs.bystanders : designs.sources).push_back(file);
        }
    }
    std::sort(designs.sources.begin(), designs.sources.end());
    return designs;
}

SaveOutcome failureAt(const fs::path& file, VLMError error) {
    return {.isSaved = false, .file = file, .error = std::move(error), .notes = {}};
}

SaveOutcome systemFailureAt(const fs::path& file, int code) {
    VLMError error;
    failWithSystemError(code, &error);
    return failureAt(file, std::move(error));
}

SaveOutcome convertOne(const Conversion& conversion, const DesignSource& source, const ThreadSource& threadsBeside,
                       const ExportOptions& options) {
    std::error_code failure;
    if (fs::equivalent(conversion.source, conversion.target, failure))
        return systemFailureAt(conversion.target, EEXIST);
    VLMDesign design;
    VLMError error;
    if (!source(design, conversion.source, &error)) return failureAt(conversion.source, std::move(error));
    fs::create_directories(conversion.target.parent_path(), failure);
    if (failure) return systemFailureAt(conversion.target, failure.value());
    return saveDesign(design, conversion.target, {conversion.source, design.useThreadFile()}, options, threadsBeside);
}

/// Whatever fails becomes an outcome: a thread has no one else to tell.
SaveOutcome convertSafely(const Conversion& conversion, const DesignSource& source, const ThreadSource& threadsBeside,
                          const ExportOptions& options) noexcept {
    SaveOutcome outcome;
    VLMError error;
    const bool isDone = operation(&error, [&] {
        outcome = convertOne(conversion, source, threadsBeside, options);
        return true;
    });
    return isDone ? std::move(outcome) : failureAt(conversion.target, std::move(error));
}

using Converters = WorkerPool<Conversion, Outcome>;

Outcome outcomeOf(const Conversion& conversion, ConfinedReader& reader, const ExportOptions& options) {
    Outcome outcome;
    const DesignSource source = [&](VLMDesign& design, const fs::path& file, VLMError* error) {
        try {
            return reader.readDesign(design, file, error);
        } catch (const WorkerLoss& loss) {
            outcome.loss = loss;
            return false;
        }
    };
    outcome.saved = convertSafely(conversion, source, threadsFrom(reader), options);
    return outcome;
}

/// What there is to say in the end.
struct Findings {
    std::vector<Problem> problems;
    std::vector<Note> notes;
};

Converters startConverters(std::vector<ConfinedReader> readers, const ExportOptions& options) {
    const std::size_t capacity = 2 * readers.size();
    std::vector<Converters::Work> works;
    works.reserve(readers.size());
    for (ConfinedReader& reader : readers)
        works.emplace_back([&options, own = std::make_shared<ConfinedReader>(std::move(reader))](
                               Conversion&& conversion) { return outcomeOf(conversion, *own, options); });
    return {std::move(works), capacity};
}

/// Carries the conversions out; those that fail become problems. Throws WorkerLoss when nothing can be read any more.
void carryOut(std::vector<Conversion> conversions, std::vector<ConfinedReader> readers, const ExportOptions& options,
              ProgressBar& bar, Findings& findings) {
    Converters converters = startConverters(std::move(readers), options);
    std::size_t done = 0;
    const auto take = [&] {
        auto outcome = converters.take();
        if (!outcome) return false;
        if (outcome->loss) throw WorkerLoss(*outcome->loss);
        SaveOutcome& saved = outcome->saved;
        std::move(saved.notes.begin(), saved.notes.end(), std::back_inserter(findings.notes));
        if (!saved.isSaved) findings.problems.push_back({saved.file, std::move(saved.error)});
        ++done;
        bar.show(static_cast<double>(done) / static_cast<double>(conversions.size()), static_cast<std::int64_t>(done));
        return true;
    };
    for (Conversion& conversion : conversions) {
        while (converters.isFull()) take();
        converters.submit(std::move(conversion));
    }
    while (take()) continue;
}

template <class About>
void sortByFile(std::vector<About>& list) {
    std::stable_sort(list.begin(), list.end(),
                     [](const About& one, const About& other) { return one.file < other.file; });
}

}  // namespace

ExitStatus convertAll(const ConvertAllRequest& request, const Console& console) {
    VLMError refusal;
    if (isInArchive(request.outFolder / "design", &refusal)) {
        reportProblem(console, request.outFolder, refusal);
        return ExitStatus::failure;
    }
    Findings findings;
    auto& [problems, notes] = findings;
    std::error_code failure;
    if (!fs::is_directory(request.folder, failure)) {
        if (!failure) failure = std::make_error_code(std::errc::not_a_directory);
        problems.push_back(systemProblem(request.folder, failure));
    }
    auto conversions =
        planConversions(designsIn(request, problems), request.folder, request.outFolder, request.extension);
    const std::size_t count = conversions.size();
    const std::size_t unseen = problems.size();
    const auto status =
        withReaders(request.reading, std::clamp<std::size_t>(count, 1, request.jobs), console,
                    [&](std::vector<ConfinedReader> readers) {
                        ProgressBar bar(console);
                        carryOut(std::move(conversions), std::move(readers), request.options, bar, findings);
                        return ExitStatus::success;
                    });
    if (status != ExitStatus::success) return status;
    sortByFile(notes);
    sortByFile(problems);
    for (const Note& note : notes) report(note, console);
    for (const Problem& problem : problems) reportProblem(console, problem.file, problem.error);
    const std::size_t failed = problems.size() - unseen;
    console.out << counted(static_cast<std::int64_t>(count - failed), "design") << " converted, " << failed
                << " failed\n";
    return problems.empty() ? ExitStatus::success : ExitStatus::failure;
}

}  // namespace velamo
