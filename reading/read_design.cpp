#include "reading/read_design.h"

#include "reading/archive_members.h"
#include "velamo/formats/import.h"
#include "velamo/formats/thread_file.h"
#include "velamo/model/failure.h"
#include "velamo/platform/system/file_state.h"

namespace velamo {

bool readDesign(VLMDesign& design, const std::filesystem::path& file, VLMError* error) noexcept {
    return operation(error, [&] {
        if (const auto place = pathThroughArchive(file)) return readDesignInArchive(design, *place, file, error);
        if (importDesignFromURLerror(design, file, error, {.givesSystemReason = true})) return true;
        // A file whose name is no design's has not even been opened.
        if (const std::error_code reason = reasonAgainstReading(file)) failWithSystemError(reason.value(), error);
        return false;
    });
}

bool takeThreadsBeside(VLMDesign& design, const std::filesystem::path& file) {
    const auto place = pathThroughArchive(file);
    return place ? takeThreadsOfSideFileInArchive(design, *place) : takeThreadsOfSideFile(design, file);
}

}  // namespace velamo
