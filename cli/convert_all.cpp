#include <algorithm>
#include <cerrno>
#include <map>
#include <ostream>
#include <set>

#include "catalogue/worker_pool.h"
#include "cli/convert.h"
#include "cli/progress_bar.h"
#include "formats/export.h"
#include "formats/format.h"
#include "platform/folder_walk.h"
#include "reading/read_design.h"

namespace velamo {
namespace {

namespace fs = std::filesystem;

struct Conversion {
    fs::path source;
    fs::path target;
};

struct Problem {
    fs::path file;
    VLMError error;
};

/// What came of a conversion.
struct Outcome {
    fs::path source;
    bool isDone = false;
    VLMError error;
};

Problem systemProblem(const fs::path& file, std::error_code code) {
    Problem problem{file, {}};
    failWithSystemError(code.value(), &problem.error);
    return problem;
}

/// The designs in the folder and below it, by name; what cannot be looked at becomes a problem.
std::vector<fs::path> designsIn(const fs::path& folder, std::vector<Problem>& problems) {
    std::vector<fs::path> designs;
    FolderWalk walk(hasDesignName);
    walk.enter(folder);
    while (const auto listing = walk.next()) {
        if (listing->error) problems.push_back(systemProblem(listing->folder, listing->error));
        for (const FolderEntry& entry : listing->entries) {
            if (entry.error) problems.push_back(systemProblem(listing->folder / entry.name, entry.error));
            if (!entry.error && entry.state.kind == FileKind::regular) designs.push_back(listing->folder / entry.name);
        }
    }
    std::sort(designs.begin(), designs.end());
    return designs;
}

/// A name for the file that is the same whichever way leads to its folder.
fs::path identityOf(const fs::path& file) {
    std::error_code failure;
    const fs::path folder = fs::weakly_canonical(fs::absolute(file, failure).parent_path(), failure);
    return failure ? file : folder / file.filename();
}

/// Gives each design a target of its own, which is no other design that is to be read.
std::vector<Conversion> planConversions(const std::vector<fs::path>& designs, const ConvertAllRequest& request) {
    const auto placeOf = [&](const fs::path& design, const fs::path& name) {
        return request.outFolder / design.lexically_relative(request.folder).parent_path() /
               (name.native() + '.' + request.extension);
    };
    std::map<fs::path, std::size_t> namesakes;
    for (const fs::path& design : designs) ++namesakes[placeOf(design, design.stem())];
    std::set<fs::path> taken;
    for (const fs::path& design : designs) taken.insert(identityOf(design));
    std::vector<Conversion> conversions;
    conversions.reserve(designs.size());
    for (const fs::path& design : designs) {
        fs::path target = placeOf(design, design.stem());
        if (namesakes[target] > 1 || taken.contains(identityOf(target))) target = placeOf(design, design.filename());
        for (int number = 2; !taken.insert(identityOf(target)).second; ++number)
            target = placeOf(design, design.filename().native() + '-' + std::to_string(number));
        conversions.push_back({design, target});
    }
    return conversions;
}

bool convertOne(const Conversion& conversion, const ExportOptions& options, VLMError* error) noexcept {
    return operation(error, [&] {
        std::error_code failure;
        if (fs::equivalent(conversion.source, conversion.target, failure)) return failWithSystemError(EEXIST, error);
        fs::create_directories(conversion.target.parent_path(), failure);
        if (failure) return failWithSystemError(failure.value(), error);
        VLMDesign design;
        if (!readDesign(design, conversion.source, error)) return false;
        // Export keeps a side file beside the design's source in step. Designs of one name share theirs, and
        // conversions of them at the same time would take it from each other: the folder that is read stays as it is.
        design.setDesignLocation(std::nullopt);
        return exportDesignToURLerror(design, conversion.target, error, options);
    });
}

using Converters = WorkerPool<Conversion, Outcome>;

Converters startConverters(const ConvertAllRequest& request) {
    const auto work = [&options = request.options](Conversion&& conversion) {
        Outcome outcome{conversion.source, false, {}};
        outcome.isDone = convertOne(conversion, options, &outcome.error);
        return outcome;
    };
    return {std::vector<Converters::Work>(request.jobs, work), 2 * request.jobs};
}

/// Carries the conversions out; those that fail become problems.
void carryOut(std::vector<Conversion> conversions, const ConvertAllRequest& request, ProgressBar& bar,
              std::vector<Problem>& problems) {
    Converters converters = startConverters(request);
    std::size_t done = 0;
    const auto take = [&] {
        auto outcome = converters.take();
        if (!outcome) return false;
        if (!outcome->isDone) problems.push_back({outcome->source, std::move(outcome->error)});
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

}  // namespace

ExitStatus convertAll(const ConvertAllRequest& request, const Console& console) {
    std::vector<Problem> problems;
    std::error_code failure;
    if (!fs::is_directory(request.folder, failure)) {
        if (!failure) failure = std::make_error_code(std::errc::not_a_directory);
        problems.push_back(systemProblem(request.folder, failure));
    }
    auto conversions = planConversions(designsIn(request.folder, problems), request);
    const std::size_t count = conversions.size();
    const std::size_t unseen = problems.size();
    {
        ProgressBar bar(console);
        carryOut(std::move(conversions), request, bar, problems);
    }
    const auto byName = [](const Problem& one, const Problem& other) { return one.file < other.file; };
    std::sort(problems.begin(), problems.end(), byName);
    for (const Problem& problem : problems) reportProblem(console, problem.file, problem.error);
    const std::size_t failed = problems.size() - unseen;
    console.out << counted(static_cast<std::int64_t>(count - failed), "design") << " converted, " << failed
                << " failed\n";
    return problems.empty() ? ExitStatus::success : ExitStatus::failure;
}

}  // namespace velamo
