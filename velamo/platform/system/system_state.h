#pragma once

#include <sys/stat.h>

#include "velamo/platform/system/file_state.h"

namespace velamo {

/// What the system filled in, in this system's words. For the files of this folder alone.
[[nodiscard]] FileState stateFromSystem(const struct stat& status) noexcept;

}  // namespace velamo
