#include "integrations/desktops/desktop_hosts.h"

#include <algorithm>
#include <iterator>
#include <system_error>

#include "velamo/platform/processes/program.h"
#include "velamo/platform/system/user_data.h"

namespace velamo {
namespace {

namespace fs = std::filesystem;

/// A call of a host's program for some files at a time.
struct Call {
    std::vector<std::string> words;
    std::string beforeFile;
    std::size_t mostFiles;
};

/// A search of a desktop. Its program may be there without anybody using it: then there is no index, and none is to be
/// made.
struct Host {
    const char* name;
    std::vector<std::string> programs;  // by newer and older names
    fs::path index;
    std::vector<Call> calls;
};

fs::path folderOfRecoll(const Environment& environment) {
    const fs::path named = environment("RECOLL_CONFDIR").value_or("");
    return named.empty() ? homeFolder() / ".recoll" : named;
}

std::vector<Host> allHosts(const Environment& environment) {
    constexpr std::size_t many = 200;  // far below what a command line may hold
    return {
        // To index again alone does nothing for a file that has not changed.
        {"KDE",
         {"balooctl6", "balooctl"},
         userDataFolder(environment) / "baloo" / "index",
         {{{"clear"}, "", many}, {{"index"}, "", many}}},
        {"Recoll", {"recollindex"}, folderOfRecoll(environment), {{{"-i", "-Z"}, "", many}}},
        {"GNOME", {"tracker3"}, userCacheFolder(environment) / "tracker3" / "files", {{{"reset"}, "--file=", 1}}},
    };
}

fs::path programOf(const Host& host, const Environment& environment) {
    std::error_code error;
    if (!fs::exists(host.index, error)) return {};
    for (const std::string& name : host.programs)
        if (auto program = findProgram(name, environment); !program.empty()) return program;
    return {};
}

/// Why the call failed, or nothing.
std::string problemOf(const fs::path& program, const Call& call, std::span<const fs::path> files) {
    std::vector<std::string> arguments = call.words;
    arguments.reserve(call.words.size() + files.size());
    for (const fs::path& file : files) arguments.push_back(call.beforeFile + file.native());
    const int status = runProgram(program, arguments);
    if (status == 0) return "";
    return program.filename().string() + ' ' + call.words.front() + " ended with status " + std::to_string(status);
}

std::string tell(const Host& host, const fs::path& program, std::span<const fs::path> files) {
    for (const Call& call : host.calls) {
        for (std::size_t done = 0; done < files.size(); done += call.mostFiles) {
            const auto some = files.subspan(done, std::min(call.mostFiles, files.size() - done));
            if (auto problem = problemOf(program, call, some); !problem.empty()) return problem;
        }
    }
    return "";
}

HostOutcome refresh(const Host& host, std::span<const fs::path> files, const Environment& environment) {
    using State = HostOutcome::State;
    const fs::path program = programOf(host, environment);
    if (program.empty()) return {.host = host.name};
    try {
        const std::string problem = tell(host, program, files);
        if (!problem.empty()) return {.host = host.name, .state = State::failed, .problem = problem};
    } catch (const std::system_error& error) {
        return {.host = host.name, .state = State::failed, .problem = error.what()};
    }
    return {.host = host.name, .state = State::refreshed, .count = std::ssize(files)};
}

}  // namespace

std::vector<HostOutcome> refreshHosts(std::span<const fs::path> files, const Environment& environment) {
    std::vector<HostOutcome> outcomes;
    for (const Host& host : allHosts(environment)) outcomes.push_back(refresh(host, files, environment));
    return outcomes;
}

}  // namespace velamo
