#pragma once

#include "velamo/private_api.h"

namespace velamo {

/// Gives the signals that a program relies on their usual meaning, whatever its caller ignored: those of alarms,
/// children and pipes; and lets every signal through. To be called at the start of a program, while it has one thread.
/// What callers ignore for good reasons (an interruption, the end of the terminal) stays ignored.
VELAMO_PRIVATE_API void restoreUsualSignals() noexcept;

}  // namespace velamo
