#include "velamo/platform/text/harmless_text.h"

#include <gtest/gtest.h>

#include <ostream>

namespace velamo {
namespace {

struct Row {
    const char* text;
    const char* escaped;
};
void PrintTo(const Row& row, std::ostream* out) {
    *out << row.escaped;
}
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
                                         Row{"\u2028", "\\xe2\\x80\\xa8"}, Row{"\u200F", "\\xe2\\x80\\x8f"},
                                         Row{"\u061C", "\\xd8\\x9c"}, Row{"\u2066", "\\xe2\\x81\\xa6"},
                                         Row{"a\u200Db", "a\u200Db"}));

class EscapingOfLines : public testing::TestWithParam<Row> {};
TEST_P(EscapingOfLines, GivesTheRow) {
    EXPECT_EQ(linesForTerminal(GetParam().text), GetParam().escaped);
}
INSTANTIATE_TEST_SUITE_P(Rows, EscapingOfLines,
                         testing::Values(Row{"", ""}, Row{"a\nb\n", "a\nb\n"}, Row{"a\\b", "a\\b"},
                                         Row{"a\tb", "a\\tb"}, Row{"\x1b]0;title\x07", "\\x1b]0;title\\x07"},
                                         Row{"\r", "\\x0d"}, Row{"\x7f", "\\x7f"},
                                         Row{"\u0080\u009F", "\\xc2\\x80\\xc2\\x9f"}, Row{"\x9b", "\\x9b"},
                                         Row{"\u200E\u202D", "\\xe2\\x80\\x8e\\xe2\\x80\\xad"},
                                         Row{"\u2029", "\\xe2\\x80\\xa9"}, Row{"Ähre 🌹", "Ähre 🌹"}));

class EscapingInJson : public testing::TestWithParam<Row> {};
TEST_P(EscapingInJson, GivesTheRow) {
    EXPECT_EQ(harmlessJson(GetParam().text), GetParam().escaped);
}
INSTANTIATE_TEST_SUITE_P(Rows, EscapingInJson,
                         testing::Values(Row{"", ""}, Row{"{\"a\":\n\"\\u001b\\\\\"}", "{\"a\":\n\"\\u001b\\\\\"}"},
                                         Row{"\"\x7f\"", "\"\\u007f\""}, Row{"\"\u0080\u009B\"", "\"\\u0080\\u009b\""},
                                         Row{"\"\u00A0Ähre 🌹\uFFFD\"", "\"\u00A0Ähre 🌹\uFFFD\""},
                                         Row{"\"\u202E\u200F\"", "\"\\u202e\\u200f\""},
                                         Row{"\"\u2028\"", "\"\\u2028\""}));

}  // namespace
}  // namespace velamo
