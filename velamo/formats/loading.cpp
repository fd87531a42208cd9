#include "velamo/formats/loading.h"

#include <system_error>
#include <utility>

#include "velamo/platform/system/files.h"

namespace velamo {

std::vector<std::uint8_t> loadFile(const std::filesystem::path& url, const ImportOptions& options) {
    FileContent content = readFile(url);
    if (content.error && (content.isOpened || options.givesSystemReason)) throw std::system_error(content.error);
    return std::move(content.bytes);
}

}  // namespace velamo
