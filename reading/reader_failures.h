#pragma once

#include <system_error>

#include "model/error.h"
#include "platform/worker_process.h"

namespace velamo {

/// The failure of a file that ended its reader: ETIMEDOUT where it took too long, else EFAULT, with words for it.
[[nodiscard]] VLMError errorOf(const WorkerDeath& death);

}  // namespace velamo
