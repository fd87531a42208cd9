#include "reading/reader_failures.h"

#include <cerrno>

namespace velamo {

VLMError errorOf(const WorkerDeath& death) {
    VLMError error;
    failWithSystemError(death.isTimeout() ? ETIMEDOUT : EFAULT, &error);
    error.failureReason =
        death.isTimeout() ? "reading it takes too long" : "reading it crashed: " + death.description();
    return error;
}

}  // namespace velamo
