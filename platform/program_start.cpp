#include "platform/program_start.h"

#include "platform/interruption.h"
#include "platform/signals.h"
#include "platform/standard_streams.h"

namespace velamo {

void startProgram() noexcept {
    openStandardStreams();
    restoreUsualSignals();
    prepareForSignals();
}

}  // namespace velamo
