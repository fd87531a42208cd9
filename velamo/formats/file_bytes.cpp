#include "velamo/formats/file_bytes.h"

#include <system_error>
#include <utility>

#include "velamo/platform/system/files.h"

namespace velamo {

FileBytes loadFile(const std::filesystem::path& url, const ImportOptions& options) {
    if (options.bytes) return FileBytes(*options.bytes);
    FileContent content = readFile(url);
    if (content.error && (content.isOpened || options.givesSystemReason)) throw std::system_error(content.error);
    return FileBytes(std::move(content.bytes));
}

}  // namespace velamo
