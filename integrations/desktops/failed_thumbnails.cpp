#include "integrations/desktops/failed_thumbnails.h"

#include <string>
#include <string_view>
#include <system_error>

#include "velamo/formats/byte_reader.h"
#include "velamo/platform/system/files.h"
#include "velamo/platform/text/url_text.h"

namespace velamo {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t sizeOfMark = 8;  // of a PNG file
constexpr std::size_t sizeOfChecksum = 4;
constexpr std::string_view keyOfFile("Thumb::URI\0", 11);

std::string_view charactersOf(std::span<const std::uint8_t> bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

/// The file that a thumbnail is of, which a text in the picture tells; empty where it tells none.
fs::path fileOfThumbnail(std::span<const std::uint8_t> picture) {
    ByteReader in(picture, sizeOfMark);
    while (in.remaining() > 0) {
        const std::int32_t size = in.i32be();
        const auto kind = charactersOf(in.take(4));
        const auto content = charactersOf(in.take(size < 0 ? SIZE_MAX : static_cast<std::size_t>(size)));
        if (kind == "tEXt" && content.starts_with(keyOfFile))
            return pathOfLocation(content.substr(keyOfFile.size())).value_or(fs::path());
        in.skip(sizeOfChecksum);
    }
    return {};
}

/// Whether the picture was the mark of one of the files and is removed now.
bool forget(const fs::path& picture, const std::set<fs::path>& files, std::error_code& failure) {
    const FileContent content = readFile(picture);
    if (content.error) {
        if (!isAbsence(content.error)) failure = content.error;
        return false;
    }
    std::error_code ofRemoving;
    const bool isRemoved = files.contains(fileOfThumbnail(content.bytes)) && fs::remove(picture, ofRemoving);
    if (ofRemoving) failure = ofRemoving;
    return isRemoved;
}

}  // namespace

std::int64_t forgetFailedThumbnails(const fs::path& folder, const std::set<fs::path>& files, std::error_code& failure) {
    failure.clear();
    std::int64_t forgotten = 0;
    std::error_code ofWalk;
    const fs::recursive_directory_iterator none;
    for (fs::recursive_directory_iterator entry(folder, ofWalk); !ofWalk && entry != none; entry.increment(ofWalk))
        if (entry->path().extension() == ".png") forgotten += forget(entry->path(), files, failure) ? 1 : 0;
    if (ofWalk && ofWalk != std::errc::no_such_file_or_directory) failure = ofWalk;
    return forgotten;
}

}  // namespace velamo
