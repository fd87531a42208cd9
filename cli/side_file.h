#pragma once

#include <cstddef>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "reading/confined_reader.h"
#include "velamo/model/design.h"

namespace velamo {

/// Where a design came from, which its side file may have come from as well.
struct DesignOrigin {
    std::filesystem::path file;
    bool tookSideFile = false;
};

/// What is to be done with the side file of a new design file, so that the design's own colors travel beside it and
/// nothing else that is there is lost.
struct SideFilePlan {
    std::filesystem::path file;
    bool isSetAside = false;         // what is there gets another name
    bool isWritten = false;          // then the threads are put there
    bool isInTheWay = false;         // the threads belong there, but something else is there and stays
    bool bringsThreads = false;      // the new file will be read with the threads, not with its own
    std::vector<VLMThread> threads;  // of a side file: the design's, and one for each block that has none
};

/// Where the threads of side files come from: those of the one beside a target, of which there must be so many; none
/// where a design of so many threads would not take it. Throws std::system_error where it could not be read this time.
using ThreadSource = std::function<std::vector<VLMThread>(const std::filesystem::path& target, std::size_t count)>;

/// The reader, which must stay, as a source.
[[nodiscard]] ThreadSource threadsFrom(ConfinedReader& reader);

/// Looks at what is there, and changes nothing. `design` is what is written, `threads` are those that it should have,
/// and `readBack` is what the new file alone gives.
///
/// What is beside the new file stays where it says what would be written, and where the new file would not take it
/// (it is damaged, is not for this user, or is of another number of threads). Only the design's own, which was read
/// with it, makes room for one of another number. None is written that the new file would not take, because the format
/// has lost threads. Throws std::system_error where the system could not read it this time, or takes no such name, so
/// that nobody can say.
[[nodiscard]] SideFilePlan planSideFile(const std::filesystem::path& target, const DesignOrigin& origin,
                                        const VLMDesign& design, const std::vector<VLMThread>& threads,
                                        const VLMDesign& readBack, const ThreadSource& threadsBeside);

/// What carrying out a plan did.
struct SideFileOutcome {
    std::filesystem::path newName;  // of what was set aside, or empty
    std::error_code error;          // about the plan's file
};

/// Carries the plan out. On failure what was there is there. The error is EEXIST or ENOENT where somebody else has made
/// or taken away the file since it was planned: then it is time for another plan.
[[nodiscard]] SideFileOutcome carryOut(const SideFilePlan& plan);

}  // namespace velamo
