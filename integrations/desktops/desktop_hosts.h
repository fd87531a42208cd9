#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
#include <string>
#include <vector>

#include "velamo/platform/system/user.h"

namespace velamo {

/// What became of a host that was told of designs.
struct HostOutcome {
    enum class State : std::uint8_t { absent, refreshed, failed };

    std::string host;
    State state = State::absent;
    std::int64_t count = 0;  // of what was refreshed
    std::string problem{};   // why it failed
};

/// Makes each search of the desktops that this user has in use look again at the files, which it would otherwise do
/// only once they change. One that fails does not stop the others.
[[nodiscard]] std::vector<HostOutcome> refreshHosts(std::span<const std::filesystem::path> files,
                                                    const Environment& environment = processEnvironment);

}  // namespace velamo
