#include "reading/read_design.h"

#include "velamo/formats/import.h"
#include "velamo/model/failure.h"
#include "velamo/platform/system/file_state.h"

namespace velamo {

bool readDesign(VLMDesign& design, const std::filesystem::path& file, VLMError* error) noexcept {
    return operation(error, [&] {
        if (importDesignFromURLerror(design, file, error, {.givesSystemReason = true})) return true;
        // A file whose name is no design's has not even been opened.
        if (const std::error_code reason = reasonAgainstReading(file)) failWithSystemError(reason.value(), error);
        return false;
    });
}

}  // namespace velamo
