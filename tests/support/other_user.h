#pragma once

#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>

namespace velamo::test {

/// Runs the body in a child process that file permissions bind, which is not so for the superuser; true when the child
/// ends well. The body must not use what only the parent may open.
template <class Body>
bool inBoundProcess(const std::filesystem::path& folder, const Body& body) {
    constexpr uid_t nobody = 65534;
    const pid_t child = ::fork();
    if (child == 0) {
        if (::geteuid() == 0 && (::chown(folder.c_str(), nobody, nobody) != 0 || ::setuid(nobody) != 0)) ::_exit(2);
        bool isGood = false;
        try {
            isGood = body();
        } catch (...) {
            isGood = false;
        }
        ::_exit(isGood ? 0 : 1);
    }
    int status = 0;
    return child > 0 && ::waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

}  // namespace velamo::test
