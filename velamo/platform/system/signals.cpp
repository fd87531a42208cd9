#include "velamo/platform/system/signals.h"

#include <csignal>
#include <initializer_list>

namespace velamo {

void restoreUsualSignals() noexcept {
    for (const int signal : {SIGALRM, SIGCHLD, SIGPIPE}) std::signal(signal, SIG_DFL);
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
}

}  // namespace velamo
