#include "velamo/platform/archives/member_names.h"

#include <gtest/gtest.h>

#include <random>

namespace velamo {
namespace {

struct Row {
    const char* name;
    std::string bytes;
    std::string text;
};
class MemberNames : public testing::TestWithParam<Row> {};
TEST_P(MemberNames, BecomeText) {
    EXPECT_EQ(textOfName(GetParam().bytes), GetParam().text);
}
INSTANTIATE_TEST_SUITE_P(Rows, MemberNames,
                         testing::Values(Row{"Ascii", "5x7/rose.pes", "5x7/rose.pes"}, Row{"Empty", "", ""},
                                         Row{"Utf8",
                                             "Gr\xC3\xBC\xC3\x9F"
                                             "e/\xE8\x8A\xB1.pes",
                                             "Grüße/花.pes"},
                                         Row{"Utf8OfSeparateMarks", "Gru\xCC\x88n.pes", "Grün.pes"},
                                         Row{"OldGerman",
                                             "Gr\x81\xE1"
                                             "e.pes",
                                             "Grüße.pes"},
                                         Row{"OldGermanCapitals",
                                             "\x9A"
                                             "bung \x8Epfel.pes",
                                             "Übung Äpfel.pes"},
                                         Row{"OldGermanTwoInARow",
                                             "Fl\x94\xE1"
                                             "e.pes",
                                             "Flöße.pes"},
                                         Row{"OldGermanBeforeALetter",
                                             "M\x84"
                                             "dchen.pes",
                                             "Mädchen.pes"},
                                         Row{"OldFrench",
                                             "ch\x83teau bl\x82"
                                             "e.pes",
                                             "château blée.pes"},
                                         Row{"OldSpanish", "ni\xA4o coraz\xA2n.pes", "niño corazón.pes"},
                                         Row{"OldFraction", "rose 5\xAB in.pes", "rose 5½ in.pes"},
                                         Row{"Latin1German",
                                             "Gr\xFC\xDF"
                                             "e.pes",
                                             "Grüße.pes"},
                                         Row{"Latin1French",
                                             "ch\xE2teau bl\xE9"
                                             "e.pes",
                                             "château blée.pes"},
                                         Row{"Latin1Danish", "bl\xE5 bl\xF8t.pes", "blå bløt.pes"},
                                         Row{"JapaneseHiragana", "\x82\xB3\x82\xAD\x82\xE7.pes", "さくら.pes"},
                                         Row{"JapaneseKatakana", "\x83\x8D\x81\x5B\x83\x59.pes", "ローズ.pes"},
                                         Row{"JapaneseKanji", "\x89\xD4\x94\xE7.pes", "花皮.pes"},
                                         Row{"JapaneseFolder", "\x8E\x68\x8F\x4A/rose.pes", "刺繍/rose.pes"},
                                         Row{"JapaneseWithABackslashInside", "\x83\x5C\x83\x89.pes", "ソラ.pes"},
                                         Row{"Russian",
                                             "\xF0\xEE\xE7\xE0 \xE8 \xF1\xE8\xF0\xE5\xED\xFC \xE2 \xF1\xE0\xE4\xF3.pes",
                                             "роза и сирень в саду.pes"}),
                         [](const auto& row) { return row.param.name; });

/// Whatever the bytes are, what comes out is taken for UTF-8 again.
TEST(MemberNames, AreAlwaysText) {
    std::mt19937 chance(1);
    for (int turn = 0; turn < 2000; ++turn) {
        std::string name(chance() % 12, 'x');
        for (char& byte : name) byte = static_cast<char>(chance() % 255 + 1);
        const std::string text = textOfName(name);
        EXPECT_EQ(textOfName(text), text);
    }
}

struct LocationRow {
    const char* name;
    std::string given;
    std::optional<std::string> location;
};
class Locations : public testing::TestWithParam<LocationRow> {};
TEST_P(Locations, StayInside) {
    EXPECT_EQ(locationOf(GetParam().given), GetParam().location);
}
INSTANTIATE_TEST_SUITE_P(Rows, Locations,
                         testing::Values(LocationRow{"Plain", "5x7/rose.pes", "5x7/rose.pes"},
                                         LocationRow{"Folder", "5x7/", "5x7"},
                                         LocationRow{"Dots", "./5x7/.//rose.pes", "5x7/rose.pes"},
                                         LocationRow{"Nothing", "./", ""},
                                         LocationRow{"Absolute", "/rose.pes", std::nullopt},
                                         LocationRow{"Above", "../rose.pes", std::nullopt},
                                         LocationRow{"AboveAndBack", "a/../rose.pes", std::nullopt},
                                         LocationRow{"AboveAtTheEnd", "a/..", std::nullopt},
                                         LocationRow{"TwoDotsInAName", "a..b/..rose", "a..b/..rose"}),
                         [](const auto& row) { return row.param.name; });

TEST(Locations, OfSystemsAreHidden) {
    for (const char* hidden : {"__MACOSX", "__MACOSX/rose.pes", "a/__MACOSX/rose.pes", ".rose.pes", "a/.b/rose.pes"})
        EXPECT_TRUE(isHidden(hidden)) << hidden;
    for (const char* shown : {"", "rose.pes", "a/rose.pes", "__MACOSX.pes", "a.b/rose"}) EXPECT_FALSE(isHidden(shown));
}

}  // namespace
}  // namespace velamo
