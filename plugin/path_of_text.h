#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <filesystem>
#include <string>
#include <system_error>
#include <utility>

namespace velamo {

/// Of two ways to write a path the first, unless no file is there and there is a second one.
inline std::filesystem::path pathThatIsThere(std::filesystem::path first, std::filesystem::path second) {
    if (second.empty() || second.native() == first.native()) return first;
    std::error_code ignored;
    const bool isMissing = std::filesystem::status(first, ignored).type() == std::filesystem::file_type::not_found;
    return isMissing ? std::move(second) : std::move(first);
}

/// The file that the text names; an empty path when it names none. May throw std::bad_alloc.
///
/// Apple's systems write paths decomposed, a letter and its accent apart. To their own disks both are one name; others,
/// as those of a network, may have the file under the very letters of the text alone.
inline std::filesystem::path pathOfText(CFStringRef text) {
    // Enough for the letters in either form. What did not fit would be no path.
    const CFIndex size = CFStringGetMaximumSizeOfFileSystemRepresentation(text);
    std::string decomposed(static_cast<std::size_t>(size), '\0');
    std::string plain(static_cast<std::size_t>(size), '\0');
    if (!CFStringGetFileSystemRepresentation(text, decomposed.data(), size)) decomposed.front() = '\0';
    if (!CFStringGetCString(text, plain.data(), size, kCFStringEncodingUTF8)) plain.front() = '\0';
    return pathThatIsThere(decomposed.c_str(), plain.c_str());
}

}  // namespace velamo
