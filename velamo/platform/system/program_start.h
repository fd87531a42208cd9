#pragma once

#include "velamo/private_api.h"

namespace velamo {

/// What each of our programs does before all else, whoever started it, however: its standard streams are open, the
/// signals that it depends on have their usual effect, and those that end it wait for what must not be left half done
/// (see openStandardStreams, restoreUsualSignals and prepareForSignals), and memory goes back to the system in time.
VELAMO_PRIVATE_API void startProgram() noexcept;

}  // namespace velamo
