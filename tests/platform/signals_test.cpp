#include "velamo/platform/system/signals.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

namespace velamo {
namespace {

bool isIgnored(int signal) {
    struct sigaction now = {};
    ::sigaction(signal, nullptr, &now);
    return now.sa_handler == SIG_IGN;
}

/// 0 when all is as it is to be, else what is not.
int afterRestoring() {
    sigset_t set;
    sigfillset(&set);
    sigprocmask(SIG_BLOCK, &set, nullptr);
    for (const int signal : {SIGALRM, SIGCHLD, SIGPIPE, SIGHUP, SIGINT}) std::signal(signal, SIG_IGN);
    restoreUsualSignals();
    sigprocmask(SIG_BLOCK, nullptr, &set);
    for (int signal = 1; signal < 32; ++signal)
        if (sigismember(&set, signal) == 1) return signal;
    for (const int signal : {SIGALRM, SIGCHLD, SIGPIPE})
        if (isIgnored(signal)) return 100 + signal;
    return isIgnored(SIGHUP) && isIgnored(SIGINT) ? 0 : 200;
}

TEST(UsualSignals, AreThoseTheProgramReliesOn) {
    const pid_t child = ::fork();
    if (child == 0) ::_exit(afterRestoring());
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
}

}  // namespace
}  // namespace velamo
