#include "platform/terminal.h"

#include <gtest/gtest.h>

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

}  // namespace
}  // namespace velamo
