#include "velamo/platform/text/narrow_text.h"

#include <gtest/gtest.h>

namespace velamo {
namespace {

struct Row {
    const char* name;
    std::string text;
    std::string ascii;
    std::string latin1;
};
class NarrowText : public testing::TestWithParam<Row> {};
TEST_P(NarrowText, HoldsWhatItCan) {
    EXPECT_EQ(asciiFromText(GetParam().text), GetParam().ascii);
    EXPECT_EQ(latin1FromText(GetParam().text), GetParam().latin1);
}

INSTANTIATE_TEST_SUITE_P(Rows, NarrowText,
                         testing::Values(Row{"Ascii", "Rose 7~\r", "Rose 7~\r", "Rose 7~\r"}, Row{"Empty", "", "", ""},
                                         Row{"Accent", "Caf\u00E9", "Cafe", "Caf\xE9"},
                                         Row{"AccentOfItsOwn", "Cafe\u0301", "Cafe", "Caf\xE9"},
                                         Row{"LastOfLatin1", "\u00FF", "y", "\xFF"},
                                         Row{"AccentBeyondLatin1", "\u0159", "r", "r"},
                                         Row{"LetterWithoutParts", "Stra\u00DFe", "Stra?e",
                                             "Stra\xDF"
                                             "e"},
                                         Row{"Ligature", "\uFB01n", "fin", "fin"},
                                         Row{"OtherScript", "\u30D0\u30E9", "??", "??"},
                                         Row{"OneForACharacterOfTwoUnits", "a\U0001F339b", "a?b", "a?b"},
                                         Row{"JoinedPictures", "\u2764\uFE0F\u200D\U0001F525", "??", "??"},
                                         Row{"NoUtf8", "a\xFF\xC3", "a??", "a??"}),
                         [](const auto& row) { return row.param.name; });

}  // namespace
}  // namespace velamo
