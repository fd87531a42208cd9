#include "integrations/desktops/failed_thumbnails.h"

#include <charconv>
#include <string>
#include <string_view>
#include <system_error>

#include "velamo/formats/byte_reader.h"
#include "velamo/platform/system/files.h"

namespace velamo {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t sizeOfMark = 8;  // of a PNG file
constexpr std::size_t sizeOfChecksum = 4;
constexpr std::string_view keyOfFile("Thumb::URI\0", 11);

std::string_view charactersOf(std::span<const std::uint8_t> bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

/// The text with each "%20" and its like as the byte that it stands for.
std::string decoded(std::string_view text) {
    constexpr std::size_t digits = 2;
    constexpr int hexadecimal = 16;
    std::string plain;
    plain.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        unsigned char byte = 0;
        const char* const first = text.data() + i + 1;
        const bool isEscape = text[i] == '%' && text.size() - i > digits &&
                              std::from_chars(first, first + digits, byte, hexadecimal).ptr == first + digits;
        plain += isEscape ? static_cast<char>(byte) : text[i];
        if (isEscape) i += digits;
    }
    return plain;
}

fs::path fileOfUri(std::string_view uri) {
    constexpr std::string_view scheme = "file://";
    return uri.starts_with(scheme) ? decoded(uri.substr(scheme.size())) : "";
}

/// The file that a thumbnail is of, which a text in the picture tells; empty where it tells none.
fs::path fileOfThumbnail(std::span<const std::uint8_t> picture) {
    VLMByteReader in(picture, sizeOfMark);
    while (in.remaining() > 0) {
        const std::int32_t size = in.i32be();
        const auto kind = charactersOf(in.take(4));
        const auto content = charactersOf(in.take(size < 0 ? SIZE_MAX : static_cast<std::size_t>(size)));
        if (kind == "tEXt" && content.starts_with(keyOfFile)) return fileOfUri(content.substr(keyOfFile.size()));
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
