#include "cli/side_file.h"

#include <algorithm>
#include <system_error>

#include "velamo/formats/thread_file.h"
#include "velamo/platform/system/files.h"
#include "velamo/platform/system/set_aside.h"

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

/// Throws the system's reason where it does not tell, a name that is too long among them.
bool isThere(const fs::path& file) {
    std::error_code failure;
    const auto status = fs::symlink_status(file, failure);
    if (status.type() == fs::file_type::none) throw std::system_error(failure);
    return fs::exists(status);
}

/// Throws where the system cannot tell this time.
bool isOwn(const fs::path& sideFile, const DesignOrigin& origin) {
    std::error_code failure;
    const bool isSame = origin.tookSideFile && fs::equivalent(sideFile, threadFileOf(origin.file), failure);
    if (failure && !isAbsence(failure)) throw std::system_error(failure);
    return isSame;
}

}  // namespace

ThreadSource threadsFrom(ConfinedReader& reader) {
    return [&reader](const fs::path& target, std::size_t count) {
        std::vector<VLMThread> threads;
        VLMError error;
        if (!reader.readThreads(threads, target, count, &error))
            throw std::system_error(error.code, std::generic_category());
        return threads;
    };
}

SideFilePlan planSideFile(const fs::path& target, const DesignOrigin& origin, const VLMDesign& design,
                          const std::vector<VLMThread>& threads, const VLMDesign& readBack,
                          const ThreadSource& threadsBeside) {
    SideFilePlan plan;
    plan.file = threadFileOf(target);
    const std::vector<VLMThread>& own = readBack.threads().all();
    if (design.useThreadFile()) {
        plan.threads = threads;
        // Blocks behind the last thread have none in the design either.
        for (std::size_t i = threads.size(); i < own.size(); ++i) plan.threads.push_back(own[i]);
    }
    const bool isWanted = design.useThreadFile() && plan.threads.size() == own.size();
    // Looked for before it is read: one that somebody makes in between shows when this one is to be made.
    const bool wasThere = isWanted && isThere(plan.file);
    const std::vector<VLMThread> there = threadsBeside(target, own.size());
    const bool isTaken = !there.empty();
    const bool saysTheSame = isTaken && areKeptAlike(there, isWanted ? plan.threads : own);
    const bool makesRoom = isTaken || (isWanted && isOwn(plan.file, origin));
    plan.isSetAside = makesRoom && !saysTheSame;
    plan.isWritten = isWanted && (plan.isSetAside || !wasThere);
    plan.isInTheWay = isWanted && !plan.isWritten && !saysTheSame;
    plan.bringsThreads = isWanted && !plan.isInTheWay;
    if (plan.isSetAside) static_cast<void>(isThere(plan.file.native() + ".old"));
    return plan;
}

SideFileOutcome carryOut(const SideFilePlan& plan) {
    SideFileOutcome outcome;
    if (plan.isSetAside && plan.isWritten)
        outcome.error = replaceSettingAside(plan.file, threadFileWith(plan.threads), outcome.newName);
    else if (plan.isSetAside)
        outcome.error = setAside(plan.file, outcome.newName);
    else if (plan.isWritten)
        outcome.error = createFile(plan.file, threadFileWith(plan.threads));
    return outcome;
}

}  // namespace velamo
