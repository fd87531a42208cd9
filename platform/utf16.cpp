#include "platform/utf16.h"

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

struct Decoded {
    char32_t codePoint = replacement;
    std::size_t length = 1;
};

struct Lead {
    unsigned char mask, mark, bits;  // a lead byte is `mark` under `mask`; `bits` of it belong to the code point
    char32_t smallest;               // a smaller code point has a shorter form
};
constexpr std::array<Lead, 4> leads{{
    {0x80, 0x00, 0x7F, 0x0},
    {0xE0, 0xC0, 0x1F, 0x80},
    {0xF0, 0xE0, 0x0F, 0x800},
    {0xF8, 0xF0, 0x07, 0x10000},
}};

// The code point at the start of a text that is not empty; a wrong byte alone counts as one U+FFFD.
Decoded decode(std::string_view text) {
    const auto first = static_cast<unsigned char>(text.front());
    std::size_t kind = 0;
    while (kind < leads.size() && (first & leads[kind].mask) != leads[kind].mark) ++kind;
    if (kind >= leads.size() || text.size() <= kind) return {};
    char32_t codePoint = first & leads[kind].bits;
    for (std::size_t i = 1; i <= kind; ++i) {
        const auto next = static_cast<unsigned char>(text[i]);
        if ((next & 0xC0) != 0x80) return {};
        codePoint = codePoint << 6 | (next & 0x3F);
    }
    if (codePoint < leads[kind].smallest || !isCodePoint(codePoint)) return {};
    return {codePoint, kind + 1};
}

void appendUnits(std::u16string& units, char32_t codePoint) {
    if (codePoint < 0x10000) {
        units += static_cast<char16_t>(codePoint);
        return;
    }
    units += static_cast<char16_t>(0xD800 + ((codePoint - 0x10000) >> 10));
    units += static_cast<char16_t>(0xDC00 + ((codePoint - 0x10000) & 0x3FF));
}

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

std::u16string utf16FromUtf8(std::string_view text) {
    std::u16string units;
    units.reserve(text.size());
    while (!text.empty()) {
        const Decoded next = decode(text);
        appendUnits(units, next.codePoint);
        text.remove_prefix(next.length);
    }
    return units;
}

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
