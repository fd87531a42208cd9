#include "cli/side_file.h"

#include <algorithm>

#include "formats/thread_file.h"
#include "platform/files.h"
#include "platform/set_aside.h"

namespace velamo {
namespace {

namespace fs = std::filesystem;

/// What a side file keeps of a color.
bool isKeptAlike(const VLMColor& one, const VLMColor& other) noexcept {
    const auto isAlike = [](double part, double otherPart) {
        return static_cast<float>(part) == static_cast<float>(otherPart);
    };
    return isAlike(one.red(), other.red()) && isAlike(one.green(), other.green()) && isAlike(one.blue(), other.blue());
}

/// Whether a side file says the same of both lists.
bool areKeptAlike(const std::vector<VLMThread>& ones, const std::vector<VLMThread>& others) {
    return std::equal(
        ones.begin(), ones.end(), others.begin(), others.end(), [](const VLMThread& one, const VLMThread& other) {
            return isKeptAlike(one.color(), other.color()) && one.name() == other.name() && one.key() == other.key() &&
                   one.palette() == other.palette() && one.paletteName() == other.paletteName();
        });
}

/// Where the system does not tell, it will tell the reason when the file is written.
bool isThere(const fs::path& file) noexcept {
    std::error_code failure;
    return fs::exists(fs::symlink_status(file, failure));
}

bool isOwn(const fs::path& sideFile, const DesignOrigin& origin) {
    std::error_code failure;
    return origin.tookSideFile && fs::equivalent(sideFile, threadFileOf(origin.file), failure);
}

}  // namespace

SideFilePlan planSideFile(const fs::path& target, const DesignOrigin& origin, const VLMDesign& design,
                          const std::vector<VLMThread>& threads, const VLMDesign& readBack) {
    SideFilePlan plan{.file = threadFileOf(target), .result = readBack.threads().all()};
    VLMDesign probe;
    probe.setThreads(plan.result);
    const bool isTaken = takeThreadsOfSideFile(probe, target);
    const std::vector<VLMThread>& meant = design.useThreadFile() ? threads : plan.result;
    const bool saysTheSame = isTaken && areKeptAlike(probe.threads().all(), meant);
    const bool makesRoom = isTaken || (design.useThreadFile() && isOwn(plan.file, origin));
    plan.isSetAside = makesRoom && !saysTheSame;
    plan.isWritten = design.useThreadFile() && (plan.isSetAside || !isThere(plan.file));
    plan.isInTheWay = design.useThreadFile() && !plan.isWritten && !saysTheSame;
    const bool hasColors = design.useThreadFile() && !plan.isInTheWay;
    if (hasColors && threads.size() == plan.result.size()) plan.result = threads;
    return plan;
}

SideFileOutcome carryOut(const SideFilePlan& plan, const std::vector<VLMThread>& threads) {
    SideFileOutcome outcome;
    if (plan.isSetAside) outcome.error = setAside(plan.file, outcome.newName);
    if (plan.isWritten && !outcome.error) outcome.error = replaceFile(plan.file, threadFileWith(threads));
    return outcome;
}

}  // namespace velamo
