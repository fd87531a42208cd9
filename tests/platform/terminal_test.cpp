#include "platform/terminal.h"

#include <gtest/gtest.h>

#include <map>
#include <optional>
#include <string>

namespace velamo {
namespace {

struct Row {
    const char* text;
    const char* escaped;
};
class Escaping : public testing::TestWithParam<Row> {};

TEST_P(Escaping, GivesTheRow) {
    EXPECT_EQ(escapedForTerminal(GetParam().text), GetParam().escaped);
}

INSTANTIATE_TEST_SUITE_P(Rows, Escaping,
                         testing::Values(Row{"", ""}, Row{"rose 1.dst", "rose 1.dst"}, Row{"Ähre ⌀ 🌹", "Ähre ⌀ 🌹"},
                                         Row{"a\nb", "a\\nb"}, Row{"a\tb", "a\\tb"}, Row{"\x1b[31m", "\\x1b[31m"},
                                         Row{"\r", "\\x0d"}, Row{"\x7f", "\\x7f"}, Row{"a\\b", "a\\\\b"},
                                         Row{"\xff\xfe.dst", "\\xff\\xfe.dst"}, Row{"a\xc3", "a\\xc3"},
                                         Row{"\xc2\x9b", "\\xc2\\x9b"}, Row{"\u202E", "\\xe2\\x80\\xae"},
                                         Row{"\u2028", "\\xe2\\x80\\xa8"}));

struct PicturesRow {
    const char* name;
    std::map<std::string, std::string> variables;
    TerminalPictures pictures;
};
class AnnouncedPictures : public testing::TestWithParam<PicturesRow> {};
TEST_P(AnnouncedPictures, AreThoseOfTheRow) {
    const Environment environment = [](const char* name) -> std::optional<std::string> {
        const auto& variables = GetParam().variables;
        const auto found = variables.find(name);
        return found == variables.end() ? std::nullopt : std::optional(found->second);
    };
    EXPECT_EQ(announcedPictures(environment), GetParam().pictures);
}
using Pictures = TerminalPictures;
INSTANTIATE_TEST_SUITE_P(
    Rows, AnnouncedPictures,
    testing::Values(
        PicturesRow{"Nothing", {}, Pictures::blocksOf256Colors},
        PicturesRow{"Dumb", {{"TERM", "dumb"}, {"COLORTERM", "truecolor"}}, Pictures::none},
        PicturesRow{"Xterm", {{"TERM", "xterm-256color"}}, Pictures::blocksOf256Colors},
        PicturesRow{"TrueColor", {{"TERM", "xterm"}, {"COLORTERM", "truecolor"}}, Pictures::blocksOfAllColors},
        PicturesRow{"TwentyFourBits", {{"COLORTERM", "24bit"}}, Pictures::blocksOfAllColors},
        PicturesRow{"Direct", {{"TERM", "xterm-direct"}}, Pictures::blocksOfAllColors},
        PicturesRow{"SomeColors", {{"TERM", "xterm"}, {"COLORTERM", "yes"}}, Pictures::blocksOf256Colors},
        PicturesRow{"Kitty", {{"TERM", "xterm-kitty"}, {"COLORTERM", "truecolor"}}, Pictures::kitty},
        PicturesRow{"WindowOfKitty", {{"TERM", "xterm-256color"}, {"KITTY_WINDOW_ID", "3"}}, Pictures::kitty},
        PicturesRow{"EmptyIsNotSet", {{"TERM", "xterm"}, {"KITTY_WINDOW_ID", ""}}, Pictures::blocksOf256Colors},
        PicturesRow{
            "DividedKitty",
            {{"TERM", "xterm-256color"}, {"KITTY_WINDOW_ID", "3"}, {"TMUX", "/tmp/x"}, {"COLORTERM", "truecolor"}},
            Pictures::blocksOfAllColors},
        PicturesRow{"DividedElsewhere",
                    {{"TERM", "screen-256color"}, {"TERM_PROGRAM", "WezTerm"}},
                    Pictures::blocksOf256Colors},
        PicturesRow{"Foot", {{"TERM", "foot-extra"}}, Pictures::sixel},
        PicturesRow{"SixelInTheName", {{"TERM", "xterm-sixel"}}, Pictures::sixel},
        PicturesRow{"Program", {{"TERM", "xterm-256color"}, {"TERM_PROGRAM", "iTerm.app"}}, Pictures::sixel}),
    [](const auto& row) { return row.param.name; });

TEST(TerminalSize, IsTheUsualOneWhereThereIsNoTerminal) {
    const TerminalSize size = terminalSize(StandardStream::output);  // tests write into a pipe, or a real terminal
    EXPECT_GT(size.columns, 0);
    EXPECT_GT(size.lines, 0);
}

}  // namespace
}  // namespace velamo
