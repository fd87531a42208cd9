#include "velamo/platform/system/interruption.h"

#include <poll.h>
#include <unistd.h>

#include <array>
#include <atomic>

namespace velamo {
namespace {

constexpr std::array endings{SIGINT, SIGTERM, SIGHUP};

std::atomic<int> pauses = 0;
std::atomic<bool> isEnding = false;
static_assert(std::atomic<int>::is_always_lock_free && std::atomic<bool>::is_always_lock_free);

/// Waits for the pauses of the other threads; its own has none, or the signal would not have come here. From then on
/// the signal has its usual effect.
extern "C" void endAfterPauses(int signal) {
    constexpr int statusOfSignals = 128;
    isEnding = true;
    while (pauses > 0) ::poll(nullptr, 0, 1);
    ::raise(signal);
    ::_exit(statusOfSignals + signal);  // where raising a signal is not allowed
}

void catchEnding(int signal) noexcept {
    struct sigaction former = {};
    if (::sigaction(signal, nullptr, &former) != 0 || former.sa_handler != SIG_DFL) return;
    struct sigaction caught = {};
    caught.sa_handler = endAfterPauses;
    caught.sa_flags = static_cast<int>(SA_RESETHAND | SA_NODEFER);
    ::sigaction(signal, &caught, nullptr);
}

}  // namespace

void prepareForSignals() noexcept {
    for (const int signal : endings) catchEnding(signal);
    ::signal(SIGXFSZ, SIG_IGN);
}

InterruptionPause::InterruptionPause() noexcept {
    sigset_t blocked;
    sigemptyset(&blocked);
    for (const int signal : endings) sigaddset(&blocked, signal);
    ::pthread_sigmask(SIG_BLOCK, &blocked, &former_);
    ++pauses;
    if (!isEnding) return;
    --pauses;
    for (;;) ::poll(nullptr, 0, -1);  // the program ends in this very moment
}

InterruptionPause::~InterruptionPause() {
    --pauses;
    ::pthread_sigmask(SIG_SETMASK, &former_, nullptr);
}

}  // namespace velamo
