#pragma once

#include <csignal>

namespace velamo {

/// To be called once, when a program starts. From then on SIGINT, SIGTERM and SIGHUP still end it, but not in the
/// middle of what an InterruptionPause protects in any of its threads; those that whoever started it has ignored stay
/// ignored. A file that would become larger than the system allows fails to be written (EFBIG) where it would end the
/// program.
void prepareForSignals() noexcept;

/// As long as it lives, the signals by which a person ends a program wait: for its own thread in any program, for all
/// threads in one that has called prepareForSignals. For short steps that must not be left half done. They must neither
/// allocate memory nor wait for another thread, which may have been stopped by the signal, nor be nested.
class InterruptionPause {
public:
    InterruptionPause() noexcept;
    ~InterruptionPause();
    InterruptionPause(const InterruptionPause&) = delete;
    InterruptionPause& operator=(const InterruptionPause&) = delete;

private:
    sigset_t former_{};
};

}  // namespace velamo
