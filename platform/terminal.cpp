#include "platform/terminal.h"

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

bool isObeyed(UChar32 character) {
    // Besides the control characters: marks that turn the direction of writing, and line and paragraph separators.
    const int category = u_charType(character);
    return category == U_CONTROL_CHAR || category == U_LINE_SEPARATOR || category == U_PARAGRAPH_SEPARATOR ||
           (character >= 0x202A && character <= 0x202E) || (character >= 0x2066 && character <= 0x2069);
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
