#pragma once

#include <cctype>
#include <string>

inline std::string capitalised(std::string text) {
    if (!text.empty()) text[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(text[0])));
    return text;
}
