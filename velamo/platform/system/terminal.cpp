#include "velamo/platform/system/terminal.h"

#include <langinfo.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <array>

namespace velamo {
namespace {

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

TerminalEncoding terminalEncoding() noexcept {
    const bool isUtf8 = std::string_view(::nl_langinfo(CODESET)) == "UTF-8";
    return isUtf8 ? TerminalEncoding::utf8 : TerminalEncoding::bytes;
}

}  // namespace velamo
