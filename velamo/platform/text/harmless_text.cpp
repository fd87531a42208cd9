#include "velamo/platform/text/harmless_text.h"

#include <unicode/uchar.h>

#include <algorithm>
#include <cstdint>

#include "velamo/platform/text/utf8_characters.h"

namespace velamo {
namespace {

std::string escapedByte(char byte) {
    constexpr std::string_view digits = "0123456789abcdef";
    const auto value = static_cast<unsigned char>(byte);
    return {'\\', 'x', digits[value >> 4U], digits[value & 0xFU]};
}

/// Whether a terminal or a page would do something else than show the character.
bool isObeyed(UChar32 character) {
    // Besides the control characters: marks that turn the direction of writing, and line and paragraph separators.
    const int category = u_charType(character);
    return category == U_CONTROL_CHAR || category == U_LINE_SEPARATOR || category == U_PARAGRAPH_SEPARATOR ||
           u_hasBinaryProperty(character, UCHAR_BIDI_CONTROL) != 0;
}

void appendEscaped(std::string& text, const Utf8Character& character) {
    if (character.code == '\t')
        text += "\\t";
    else
        for (const char byte : character.bytes) text += escapedByte(byte);
}

bool isShown(const Utf8Character& character) {
    return character.code >= 0 && !isObeyed(character.code);
}

/// Of the control characters from 0x80 to 0x9F.
bool hasControlByte(std::string_view bytes) noexcept {
    return std::any_of(bytes.begin(), bytes.end(),
                       [](char byte) { return (static_cast<unsigned char>(byte) & 0xE0U) == 0x80U; });
}

}  // namespace

std::string escapedForTerminal(std::string_view text) {
    std::string escaped;
    while (!text.empty()) {
        const auto character = takeCharacter(text);
        if (character.code == '\\' || character.code == '\n')
            escaped += character.code == '\n' ? "\\n" : "\\\\";
        else if (isShown(character))
            escaped += character.bytes;
        else
            appendEscaped(escaped, character);
    }
    return escaped;
}

std::string linesForTerminal(std::string_view text, TerminalEncoding encoding) {
    std::string lines;
    lines.reserve(text.size());
    while (!text.empty()) {
        const auto character = takeCharacter(text);
        const bool isPlain = encoding == TerminalEncoding::utf8 || !hasControlByte(character.bytes);
        if (character.code == '\n' || (isShown(character) && isPlain))
            lines += character.bytes;
        else
            appendEscaped(lines, character);
    }
    return lines;
}

std::string harmlessJson(std::string_view json) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string harmless;
    harmless.reserve(json.size());
    while (!json.empty()) {
        const auto character = takeCharacter(json);
        // What JSON's own rules leave in a text stands in the first plane; the spaces between values are no texts.
        if (character.code < 0x7F || !isObeyed(character.code)) {
            harmless += character.bytes;
            continue;
        }
        const auto code = static_cast<std::uint32_t>(character.code);
        harmless += "\\u";
        for (const unsigned shift : {12U, 8U, 4U, 0U}) harmless += digits[code >> shift & 0xFU];
    }
    return harmless;
}

}  // namespace velamo
