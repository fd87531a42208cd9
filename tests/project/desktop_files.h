#pragma once

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <string>

#include "velamo/formats/format.h"

namespace velamo::test {

/// The file type that desktops know the format by. Formats with one reader share it, and the first of them names it.
inline std::string mimeTypeOf(const Format& format) {
    const auto formats = allFormats();
    const auto first = std::find_if(formats.begin(), formats.end(),
                                    [&](const Format& other) { return other.reader == format.reader; });
    return "application/x-embroidery-" + std::string(first->extension);
}

inline std::set<std::string> allMimeTypes() {
    std::set<std::string> types;
    for (const Format& format : allFormats()) types.insert(mimeTypeOf(format));
    return types;
}

/// The text of a file below integrations/; empty when there is none.
inline std::string integrationFile(const std::string& name) {
    std::ifstream in(std::filesystem::path(VELAMO_SOURCE_FOLDER) / "integrations" / name);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

}  // namespace velamo::test
