#include "velamo/platform/text/utf16.h"

#include <unicode/utf16.h>
#include <unicode/utf8.h>

#include <array>
#include <cstddef>
#include <cstdint>

namespace velamo {

bool appendCodePoint(std::string& text, char32_t codePoint) {
    std::array<std::uint8_t, U8_MAX_LENGTH> bytes{};
    std::size_t size = 0;
    bool isWrong = false;
    U8_APPEND(bytes, size, bytes.size(), codePoint, isWrong);
    if (isWrong) return false;
    text.append(bytes.begin(), bytes.begin() + size);
    return true;
}

std::string utf8FromUtf16(std::u16string_view units) {
    constexpr std::string_view replacement = "\xEF\xBF\xBD";
    std::string text;
    text.reserve(units.size());
    for (std::size_t i = 0; i < units.size();) {
        char32_t codePoint = 0;
        U16_NEXT(units, i, units.size(), codePoint);
        if (!appendCodePoint(text, codePoint)) text += replacement;
    }
    return text;
}

}  // namespace velamo
