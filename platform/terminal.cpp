#include "platform/terminal.h"

#include <unicode/uchar.h>
#include <unistd.h>

#include <clocale>

#include "platform/utf8_characters.h"

namespace velamo {
namespace {

std::string escapedByte(char byte) {
    constexpr std::string_view digits = "0123456789abcdef";
    const auto value = static_cast<unsigned char>(byte);
    return {'\\', 'x', digits[value >> 4U], digits[value & 0xFU]};
}

bool isObeyed(UChar32 character) {
    // Besides the control characters: marks that turn the direction of writing, and line and paragraph separators.
    const int category = u_charType(character);
    return category == U_CONTROL_CHAR || category == U_LINE_SEPARATOR || category == U_PARAGRAPH_SEPARATOR ||
           (character >= 0x202A && character <= 0x202E) || (character >= 0x2066 && character <= 0x2069);
}

}  // namespace

bool isTerminal(StandardStream stream) noexcept {
    return ::isatty(stream == StandardStream::output ? STDOUT_FILENO : STDERR_FILENO) == 1;
}

std::string escapedForTerminal(std::string_view text) {
    std::string escaped;
    while (!text.empty()) {
        const auto [code, bytes] = takeCharacter(text);
        if (code == '\\' || code == '\n' || code == '\t') {
            escaped += '\\';
            escaped += code == '\n' ? 'n' : code == '\t' ? 't' : '\\';
        } else if (code < 0 || isObeyed(code)) {
            for (const char byte : bytes) escaped += escapedByte(byte);
        } else {
            escaped += bytes;
        }
    }
    return escaped;
}

void adoptUserLanguage() noexcept {
    // Numbers stay as the C locale writes them: JSON depends on it.
    std::setlocale(LC_CTYPE, "");
    std::setlocale(LC_MESSAGES, "");
}

}  // namespace velamo
