#include "platform/terminal.h"

#include <langinfo.h>
#include <sys/ioctl.h>
#include <unicode/uchar.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <clocale>

#include "platform/utf8_characters.h"

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

int descriptorOf(StandardStream stream) noexcept {
    return stream == StandardStream::output ? STDOUT_FILENO : STDERR_FILENO;
}

/// What a variable announces whose value contains the text.
struct Announcement {
    const char* variable;
    std::string_view text;
    TerminalPictures pictures;
};
constexpr auto blocks = TerminalPictures::blocksOf256Colors;
/// The first that fits holds. Programs that divide a window come before the terminals whose variables they hand on.
constexpr std::array<Announcement, 18> announcements{{
    {"TERM", "dumb", TerminalPictures::none},
    {"TMUX", "", blocks},
    {"STY", "", blocks},
    {"ZELLIJ", "", blocks},
    {"TERM", "screen", blocks},
    {"TERM", "tmux", blocks},
    {"TERM", "kitty", TerminalPictures::kitty},
    {"KITTY_WINDOW_ID", "", TerminalPictures::kitty},
    {"TERM", "ghostty", TerminalPictures::kitty},
    {"TERM_PROGRAM", "ghostty", TerminalPictures::kitty},
    {"TERM", "sixel", TerminalPictures::sixel},
    {"TERM", "foot", TerminalPictures::sixel},
    {"TERM", "mlterm", TerminalPictures::sixel},
    {"TERM", "contour", TerminalPictures::sixel},
    {"TERM_PROGRAM", "WezTerm", TerminalPictures::sixel},
    {"TERM_PROGRAM", "iTerm.app", TerminalPictures::sixel},
    {"TERM_PROGRAM", "mintty", TerminalPictures::sixel},
    {"TERM_PROGRAM", "contour", TerminalPictures::sixel},
}};

bool holds(const Announcement& announcement, const Environment& environment) {
    const std::string value = environment(announcement.variable).value_or("");
    return !value.empty() && value.find(announcement.text) != value.npos;
}

bool hasAllColors(const Environment& environment) {
    const std::string colors = environment("COLORTERM").value_or("");
    return colors == "truecolor" || colors == "24bit" || holds({"TERM", "-direct", blocks}, environment);
}

}  // namespace

TerminalPictures announcedPictures(const Environment& environment) {
    const auto found = std::find_if(announcements.begin(), announcements.end(),
                                    [&](const Announcement& each) { return holds(each, environment); });
    const TerminalPictures pictures = found == announcements.end() ? blocks : found->pictures;
    return pictures == blocks && hasAllColors(environment) ? TerminalPictures::blocksOfAllColors : pictures;
}

TerminalSize terminalSize(StandardStream stream) noexcept {
    struct winsize size = {};
    if (::ioctl(descriptorOf(stream), TIOCGWINSZ, &size) != 0 || size.ws_col == 0 || size.ws_row == 0) return {};
    return {size.ws_col, size.ws_row};
}

bool isTerminal(StandardStream stream) noexcept {
    return ::isatty(descriptorOf(stream)) == 1;
}

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

TerminalEncoding terminalEncoding() noexcept {
    const bool isUtf8 = std::string_view(::nl_langinfo(CODESET)) == "UTF-8";
    return isUtf8 ? TerminalEncoding::utf8 : TerminalEncoding::bytes;
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

void adoptUserLanguage() noexcept {
    // Numbers stay as the C locale writes them: JSON depends on it.
    std::setlocale(LC_CTYPE, "");
    std::setlocale(LC_MESSAGES, "");
}

}  // namespace velamo
