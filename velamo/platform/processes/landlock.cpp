#include "velamo/platform/processes/landlock.h"

#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>

#include "velamo/platform/system/descriptor.h"

namespace velamo {
namespace {

// The interface as the system has it, since headers are often older than the system. These numbers are the same on
// every kind of machine.
constexpr long createRuleset = 444;
constexpr long addRule = 445;
constexpr long restrictSelf = 446;

struct RulesetAttributes {
    std::uint64_t filesHandled = 0;
    std::uint64_t networkHandled = 0;  // from version 4 on
    std::uint64_t scoped = 0;          // from version 6 on
};

struct [[gnu::packed]] PathRule {
    std::uint64_t allowed = 0;
    std::int32_t folder = -1;
};

constexpr std::uint32_t askForVersion = 1;
constexpr int ruleOfPath = 1;
constexpr std::uint64_t readFile = 1 << 2;
constexpr std::uint64_t readFolder = 1 << 3;

/// All rights to files that a version knows: 13 of them at first.
std::uint64_t rightsOf(long version) noexcept {
    constexpr std::uint64_t first = (1 << 13) - 1;
    constexpr std::uint64_t moveBetweenFolders = 1 << 13;
    constexpr std::uint64_t truncate = 1 << 14;
    constexpr std::uint64_t controlDevices = 1 << 15;
    return first | (version >= 2 ? moveBetweenFolders : 0) | (version >= 3 ? truncate : 0) |
           (version >= 5 ? controlDevices : 0);
}

std::size_t sizeOfAttributes(long version) noexcept {
    if (version >= 6) return sizeof(RulesetAttributes);
    return version >= 4 ? offsetof(RulesetAttributes, scoped) : offsetof(RulesetAttributes, networkHandled);
}

long makeRuleset() noexcept {
    constexpr std::uint64_t bindAndConnect = 3;
    constexpr std::uint64_t socketsAndSignals = 3;
    const long version = ::syscall(createRuleset, nullptr, std::size_t{0}, askForVersion);
    if (version < 1) return -1;
    const RulesetAttributes attributes{
        .filesHandled = rightsOf(version), .networkHandled = bindAndConnect, .scoped = socketsAndSignals};
    return ::syscall(createRuleset, &attributes, sizeOfAttributes(version), std::uint32_t{0});
}

bool allowReadingBelowRoot(int ruleset) noexcept {
    const Descriptor root(::open("/", O_PATH | O_DIRECTORY | O_CLOEXEC));
    const PathRule rule{.allowed = readFile | readFolder, .folder = root.number()};
    return root.isOpen() && ::syscall(addRule, ruleset, ruleOfPath, &rule, std::uint32_t{0}) == 0;
}

}  // namespace

bool restrictToReading() noexcept {
    const Descriptor ruleset(static_cast<int>(makeRuleset()));
    return ruleset.isOpen() && allowReadingBelowRoot(ruleset.number()) &&
           ::syscall(restrictSelf, ruleset.number(), std::uint32_t{0}) == 0;
}

}  // namespace velamo
