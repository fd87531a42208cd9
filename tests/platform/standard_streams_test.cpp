#include "velamo/platform/system/standard_streams.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <initializer_list>

namespace velamo {
namespace {

/// Runs the body in a process that has these descriptors closed; true when it gives true.
template <class Body>
bool withClosed(std::initializer_list<int> descriptors, Body body) {
    const pid_t child = ::fork();
    if (child == 0) {
        for (const int descriptor : descriptors) ::close(descriptor);
        openStandardStreams();
        ::_exit(body() ? 0 : 1);
    }
    int status = 0;
    return ::waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

bool isTakenAndUseless(int descriptor) {
    char byte = 0;
    const bool isInput = descriptor == STDIN_FILENO;
    const auto count = isInput ? ::read(descriptor, &byte, 1) : ::write(descriptor, &byte, 1);
    return ::fcntl(descriptor, F_GETFD) >= 0 && count < 0 && errno == EBADF;
}

TEST(StandardStreams, ThatWereClosedAreTakenByNoFile) {
    for (const int descriptor : {0, 1, 2})
        EXPECT_TRUE(withClosed({descriptor}, [&] { return isTakenAndUseless(descriptor); })) << descriptor;
    EXPECT_TRUE(withClosed({0, 1, 2}, [] {
        return isTakenAndUseless(0) && isTakenAndUseless(1) && isTakenAndUseless(2) &&
               ::open("/dev/null", O_RDONLY | O_CLOEXEC) > 2;
    }));
}

TEST(StandardStreams, ThatAreOpenStayAsTheyAre) {
    EXPECT_TRUE(withClosed({2}, [] { return ::write(STDOUT_FILENO, "", 0) == 0; }));
}

}  // namespace
}  // namespace velamo
