#include "cli/archive_target.h"

#include <cerrno>

#include "velamo/model/failure.h"
#include "velamo/platform/archives/archive_path.h"

namespace velamo {

bool isInArchive(const std::filesystem::path& target, VLMError* error) {
    if (!pathThroughArchive(target)) return false;
    failWithSystemError(EROFS, error);
    if (error != nullptr) error->failureReason = "Nothing is written into an archive.";
    return true;
}

}  // namespace velamo
