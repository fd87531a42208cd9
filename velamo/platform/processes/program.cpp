#include "velamo/platform/processes/program.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <system_error>
#include <vector>

#ifdef __APPLE__
extern char** environ;
#endif

namespace velamo {
namespace {

namespace fs = std::filesystem;

void check(int failure, const fs::path& program) {
    if (failure != 0) throw std::system_error(failure, std::generic_category(), program.string());
}

/// The standard streams of a program that is not to be heard.
class Silence {
public:
    explicit Silence(const fs::path& program) {
        check(::posix_spawn_file_actions_init(&actions_), program);
        for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
            check(::posix_spawn_file_actions_addopen(&actions_, stream, "/dev/null", O_RDWR, 0), program);
    }
    ~Silence() { ::posix_spawn_file_actions_destroy(&actions_); }
    Silence(const Silence&) = delete;
    Silence& operator=(const Silence&) = delete;

    [[nodiscard]] const posix_spawn_file_actions_t* actions() const noexcept { return &actions_; }

private:
    posix_spawn_file_actions_t actions_{};
};

/// What this program ignores (see prepareForSignals) another one may want to know.
class UsualSignals {
public:
    explicit UsualSignals(const fs::path& program) {
        sigset_t signals;
        sigemptyset(&signals);
        sigaddset(&signals, SIGXFSZ);
        check(::posix_spawnattr_init(&attributes_), program);
        check(::posix_spawnattr_setsigdefault(&attributes_, &signals), program);
        check(::posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSIGDEF), program);
    }
    ~UsualSignals() { ::posix_spawnattr_destroy(&attributes_); }
    UsualSignals(const UsualSignals&) = delete;
    UsualSignals& operator=(const UsualSignals&) = delete;

    [[nodiscard]] const posix_spawnattr_t* attributes() const noexcept { return &attributes_; }

private:
    posix_spawnattr_t attributes_{};
};

/// The words as the system takes them.
std::vector<char*> pointersTo(std::vector<std::string>& words) {
    std::vector<char*> pointers;
    pointers.reserve(words.size() + 1);
    for (std::string& word : words) pointers.push_back(word.data());
    pointers.push_back(nullptr);
    return pointers;
}

int statusOf(pid_t process, const fs::path& program) {
    constexpr int firstSignal = 128;
    int status = 0;
    while (::waitpid(process, &status, 0) < 0)
        if (errno != EINTR) check(errno, program);
    return WIFEXITED(status) ? WEXITSTATUS(status) : firstSignal + WTERMSIG(status);
}

bool isProgram(const fs::path& file) {
    std::error_code error;
    return fs::is_regular_file(file, error) && ::access(file.c_str(), X_OK) == 0;
}

}  // namespace

fs::path findProgram(const std::string& name, const Environment& environment) {
    const std::string folders = environment("PATH").value_or("");
    for (std::size_t start = 0; start < folders.size();) {
        const std::size_t end = std::min(folders.find(':', start), folders.size());
        const fs::path folder = folders.substr(start, end - start);
        if (folder.is_absolute() && isProgram(folder / name)) return folder / name;
        start = end + 1;
    }
    return {};
}

int runProgram(const fs::path& program, std::span<const std::string> arguments) {
    std::vector<std::string> words{program.string()};
    words.insert(words.end(), arguments.begin(), arguments.end());
    const Silence silence(program);
    const UsualSignals signals(program);
    pid_t process = 0;
    check(::posix_spawn(&process, program.c_str(), silence.actions(), signals.attributes(), pointersTo(words).data(),
                        environ),
          program);
    return statusOf(process, program);
}

}  // namespace velamo
