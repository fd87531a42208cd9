#include "velamo/platform/system/terminal.h"

#include <gtest/gtest.h>

#include <map>
#include <optional>
#include <ostream>
#include <string>

namespace velamo {
namespace {

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
