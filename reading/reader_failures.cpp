#include "reading/reader_failures.h"

#include <cerrno>

#include "velamo/model/failure.h"
#include "velamo/platform/text/harmless_text.h"

namespace velamo {

VLMError errorOf(const WorkerDeath& death) {
    VLMError error;
    failWithSystemError(death.isTimeout() ? ETIMEDOUT : EFAULT, &error);
    error.failureReason =
        death.isTimeout() ? "reading it takes too long" : "reading it crashed: " + death.description();
    return error;
}

std::string problemLine(std::string_view program, const std::filesystem::path& file, const VLMError& error) {
    return std::string(program) + ": " + escapedForTerminal(file.native()) + ": " + error.message() + " (error " +
           std::to_string(error.code) + ")\n";
}

}  // namespace velamo
