#include "velamo/platform/text/utf16.h"

#include <array>
#include <cstddef>

namespace velamo {
namespace {

constexpr char32_t replacement = 0xFFFD;

constexpr bool isSurrogate(char32_t codePoint) {
    return codePoint >= 0xD800 && codePoint <= 0xDFFF;
}
constexpr bool isHighSurrogate(char16_t unit) {
    return unit >= 0xD800 && unit <= 0xDBFF;
}
constexpr bool isLowSurrogate(char16_t unit) {
    return unit >= 0xDC00 && unit <= 0xDFFF;
}
constexpr bool isCodePoint(char32_t value) {
    return value <= 0x10FFFF && !isSurrogate(value);
}

struct Lead {
    unsigned char mark;  // the bits that a lead byte begins with
    char32_t smallest;   // a smaller code point has a shorter form
};
constexpr std::array<Lead, 4> leads{{
    {0x00, 0x0},
    {0xC0, 0x80},
    {0xE0, 0x800},
    {0xF0, 0x10000},
}};

char32_t takeCodePoint(std::u16string_view& units) {
    const char16_t first = units.front();
    units.remove_prefix(1);
    if (!isSurrogate(first)) return first;
    if (!isHighSurrogate(first) || units.empty() || !isLowSurrogate(units.front())) return replacement;
    const char16_t second = units.front();
    units.remove_prefix(1);
    return 0x10000 + (static_cast<char32_t>(first - 0xD800) << 10) + (second - 0xDC00);
}

}  // namespace

bool appendCodePoint(std::string& text, char32_t codePoint) {
    if (!isCodePoint(codePoint)) return false;
    std::size_t tail = 0;  // bytes after the lead byte
    while (tail + 1 < leads.size() && codePoint >= leads[tail + 1].smallest) ++tail;
    text += static_cast<char>(leads[tail].mark | codePoint >> 6 * tail);
    while (tail-- > 0) text += static_cast<char>(0x80 | (codePoint >> 6 * tail & 0x3F));
    return true;
}

std::string utf8FromUtf16(std::u16string_view units) {
    std::string text;
    text.reserve(units.size());
    while (!units.empty()) (void)appendCodePoint(text, takeCodePoint(units));
    return text;
}

}  // namespace velamo
