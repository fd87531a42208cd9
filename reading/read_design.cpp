#include "reading/read_design.h"

#include "formats/import.h"
#include "platform/file_state.h"

namespace velamo {

bool readDesign(VLMDesign& design, const std::filesystem::path& file, VLMError* error) noexcept {
    return operation(error, [&] {
        // Asked first: a reader would take such a file for an empty one.
        const std::error_code reason = reasonAgainstReading(file);
        const bool isRead = importDesignFromURLerror(design, file, error);
        if (!reason) return isRead;
        return failWithSystemError(reason.value(), error);
    });
}

}  // namespace velamo
