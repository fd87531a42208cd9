#include "cli/save_design.h"

#include <ostream>

#include "cli/archive_target.h"
#include "cli/format_loss.h"
#include "velamo/formats/export.h"
#include "velamo/formats/format.h"
#include "velamo/formats/import.h"
#include "velamo/formats/thread_file.h"
#include "velamo/model/failure.h"
#include "velamo/platform/system/files.h"

namespace velamo {
namespace {

namespace fs = std::filesystem;

/// One design on its way to its file.
class Saving {
public:
    Saving(VLMDesign& design, const fs::path& target, const DesignOrigin& origin, const ThreadSource& threadsBeside)
        : design_(design),
          target_(target),
          origin_(origin),
          threadsBeside_(threadsBeside),
          threads_(design.threads().all()) {
        outcome_.file = target;
    }

    SaveOutcome run(ExportOptions options) {
        // A design without a location has no side file that the export would touch.
        design_.setDesignLocation(std::nullopt);
        options.save = [this](const fs::path& url, std::span<const std::uint8_t> file, VLMError* error) {
            return save(url, file, error);
        };
        outcome_.isSaved = exportDesignToURLerror(design_, target_, &outcome_.error, options);
        design_.setDesignLocation(target_);
        if (outcome_.isSaved) keepSideFileInStep();
        return std::move(outcome_);
    }

private:
    bool save(const fs::path& url, std::span<const std::uint8_t> file, VLMError* error) {
        readBack_.threads().all().reserve(threads_.size());  // a list that grows takes half as much again
        if (!importDesignFromBytes(readBack_, file, extensionOf(fileNameOf(url)), error)) {
            error->recoverySuggestion = "The new file could not be read again: " + error->message();
            return false;
        }
        if (!plan(error)) return false;
        const auto failure = replaceFile(url, file);
        return !failure || failWithSystemError(failure.value(), error);
    }

    bool plan(VLMError* error) {
        const bool isPlanned = operation(error, [&] {
            plan_ = planSideFile(target_, origin_, design_, threads_, readBack_, threadsBeside_);
            return true;
        });
        if (!isPlanned) outcome_.file = threadFileOf(target_);
        return isPlanned;
    }

    void noteLoss() {
        const auto& found = plan_.bringsThreads ? plan_.threads : readBack_.threads().all();
        const std::string loss = lossOf({threads_, design_, readBack_, found});
        std::string text = loss.empty() ? "" : "written " + loss;
        if (plan_.isInTheWay)
            text += (text.empty() ? "" : "; ") + ("'" + plan_.file.native() + "' is in the way of its threads");
        if (!text.empty()) outcome_.notes.push_back({target_, text});
    }

    void keepSideFileInStep() {
        const SideFileOutcome done = carryOutPlans();
        noteLoss();
        if (!done.newName.empty())
            outcome_.notes.push_back({plan_.file, "has other threads, and is '" + done.newName.native() + "' now"});
        if (outcome_.isSaved && done.error) {
            outcome_.isSaved = false;
            outcome_.file = plan_.file;
            failWithSystemError(done.error.value(), &outcome_.error);
        }
    }

    /// Others may be at the same side file, and each time one of them is done with it.
    SideFileOutcome carryOutPlans() {
        constexpr int mostPlans = 100;
        SideFileOutcome done = carryOut(plan_);
        for (int plans = 1; isOutdated(done.error) && plans < mostPlans; ++plans) {
            outcome_.isSaved = plan(&outcome_.error);
            if (!outcome_.isSaved) return {};
            done = carryOut(plan_);
        }
        return done;
    }
    static bool isOutdated(std::error_code error) noexcept {
        return error == std::errc::file_exists || error == std::errc::no_such_file_or_directory;
    }

    VLMDesign& design_;
    const fs::path& target_;
    const DesignOrigin& origin_;
    const ThreadSource& threadsBeside_;
    const std::vector<VLMThread> threads_;
    VLMDesign readBack_;
    SideFilePlan plan_;
    SaveOutcome outcome_;
};

}  // namespace

SaveOutcome saveDesign(VLMDesign& design, const fs::path& target, const DesignOrigin& origin,
                       const ExportOptions& options, const ThreadSource& threadsBeside) {
    SaveOutcome refused{.isSaved = false, .file = target, .error = {}, .notes = {}};
    if (isInArchive(target, &refused.error)) return refused;
    return Saving(design, target, origin, threadsBeside).run(options);
}

void report(const SaveOutcome& outcome, const Console& console) {
    for (const Note& note : outcome.notes) report(note, console);
    if (!outcome.isSaved) reportProblem(console, outcome.file, outcome.error);
}

void report(const Note& note, const Console& console) {
    reportNote(console, note.file.native(), note.text);
}

}  // namespace velamo
