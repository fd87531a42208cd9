#include "velamo/formats/save_file.h"

#include "velamo/model/failure.h"
#include "velamo/platform/system/files.h"

namespace velamo {

bool saveFile(const std::filesystem::path& url, std::span<const std::uint8_t> file, const ExportOptions& options,
              VLMError* error) {
    if (options.save) return options.save(url, file, error);
    const auto failure = replaceFile(url, file);
    return !failure || failWithSystemError(failure.value(), error);
}

}  // namespace velamo
