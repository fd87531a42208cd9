#include "velamo/platform/system/program_start.h"

#include <cstdlib>

#ifdef __GLIBC__
#include <malloc.h>
#endif

#include "velamo/platform/system/interruption.h"
#include "velamo/platform/system/signals.h"
#include "velamo/platform/system/standard_streams.h"

namespace velamo {
namespace {

/// Long lists go back to the system when they are let go of. The C library would soon keep them for later ones, which
/// takes up to a third more memory where a design is read, edited, written and read again.
void giveLongListsBack() noexcept {
#ifdef __GLIBC__
    constexpr int longList = 1 << 20;
    ::mallopt(M_MMAP_THRESHOLD, longList);
#endif
}

}  // namespace

void startProgram() noexcept {
    openStandardStreams();
    restoreUsualSignals();
    prepareForSignals();
    giveLongListsBack();
}

}  // namespace velamo
