#pragma once

#include <span>
#include <vector>

#include "velamo/formats/format.h"

namespace velamo::fuzz {

/// An import's input: a format, a thread side file (none when it is empty) and a design file. As bytes: the format's
/// place in the list of formats, the side file's size (two bytes, the lower first; what is too large is cut), then the
/// two files.
struct ImportInput {
    const Format& format;
    std::span<const std::uint8_t> sideFile;
    std::span<const std::uint8_t> file;
};

inline std::vector<std::uint8_t> bytesOf(std::size_t format, std::span<const std::uint8_t> sideFile,
                                         std::span<const std::uint8_t> file) {
    std::vector<std::uint8_t> bytes;
    bytes.reserve(3 + sideFile.size() + file.size());
    for (const std::size_t number : {format, sideFile.size(), sideFile.size() >> 8})
        bytes.push_back(static_cast<std::uint8_t>(number));
    bytes.insert(bytes.end(), sideFile.begin(), sideFile.end());
    bytes.insert(bytes.end(), file.begin(), file.end());
    return bytes;
}

inline ImportInput importInputOf(std::span<const std::uint8_t> bytes) {
    const auto byte = [&](std::size_t index) -> std::size_t { return index < bytes.size() ? bytes[index] : 0; };
    const auto formats = allFormats();
    const auto files = bytes.subspan(std::min<std::size_t>(bytes.size(), 3));
    const std::size_t sideSize = std::min(byte(1) | byte(2) << 8, files.size());
    return {formats[byte(0) % formats.size()], files.first(sideSize), files.subspan(sideSize)};
}

}  // namespace velamo::fuzz
