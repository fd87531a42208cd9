#include "formats/saving.h"

#include "platform/files.h"

namespace velamo {

bool saveFile(const std::filesystem::path& url, std::span<const std::uint8_t> file, VLMError* error) {
    const auto failure = replaceFile(url, file);
    return !failure || failWithSystemError(failure.value(), error);
}

}  // namespace velamo
