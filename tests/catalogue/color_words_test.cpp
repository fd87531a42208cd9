#include "catalogue/color_words.h"

#include <gtest/gtest.h>

namespace velamo {
namespace {

struct NameRow {
    const char* name;
    std::uint32_t color;
    std::string_view english;
};
class ColorNamesOfThreads : public testing::TestWithParam<NameRow> {};
TEST_P(ColorNamesOfThreads, AreWhatPeopleCallThem) {
    EXPECT_EQ(colorNames.at(colorNameOf(GetParam().color)).english, GetParam().english);
}
INSTANTIATE_TEST_SUITE_P(Rows, ColorNamesOfThreads,
                         testing::Values(NameRow{"Black", 0x000000, "black"}, NameRow{"NearlyBlack", 0x181818, "black"},
                                         NameRow{"White", 0xFFFFFF, "white"}, NameRow{"Silver", 0xC0C0C0, "grey"},
                                         NameRow{"Red", 0xED171F, "red"}, NameRow{"Carmine", 0xB5303A, "red"},
                                         NameRow{"Salmon", 0xF0998C, "pink"}, NameRow{"Navy", 0x0E1F7C, "blue"},
                                         NameRow{"Sky", 0x0A55A3, "blue"}, NameRow{"Grass", 0x276C3B, "green"},
                                         NameRow{"Lime", 0x70BC1F, "green"}, NameRow{"Lemon", 0xFFFF00, "yellow"},
                                         NameRow{"Pumpkin", 0xFE9D1E, "orange"},
                                         NameRow{"Chocolate", 0x5A3520, "brown"}, NameRow{"Cream", 0xEFE3B9, "beige"},
                                         NameRow{"Violet", 0x6A1C8A, "purple"}, NameRow{"Teal", 0x008777, "turquoise"},
                                         NameRow{"Fuchsia", 0xE0218A, "magenta"}, NameRow{"OldGold", 0xC9A227, "gold"},
                                         NameRow{"Khaki", 0x77763A, "olive"}),
                         [](const auto& row) { return row.param.name; });

struct MeantRow {
    const char* name;
    const char* text;
    std::uint32_t color;
    bool isMeant;
};
class MeantColors : public testing::TestWithParam<MeantRow> {};
TEST_P(MeantColors, AreThoseOfTheText) {
    const auto test = parseColor(GetParam().text);
    ASSERT_TRUE(test.has_value());
    EXPECT_EQ((*test)(GetParam().color), GetParam().isMeant);
}
INSTANTIATE_TEST_SUITE_P(
    Rows, MeantColors,
    testing::Values(MeantRow{"Name", "red", 0xED171F, true}, MeantRow{"OtherName", "blue", 0xED171F, false},
                    MeantRow{"German", "grün", 0x276C3B, true}, MeantRow{"GermanInAnyCase", "WEISS", 0xFFFFFF, true},
                    MeantRow{"Umlaut", "TÜRKIS", 0x008777, true}, MeantRow{"American", "Gray", 0x808080, true},
                    MeantRow{"Another", "violet", 0x6A1C8A, true}, MeantRow{"Itself", "#ED171F", 0xED171F, true},
                    MeantRow{"SmallDigits", "#ed171f", 0xED171F, true},
                    MeantRow{"JustLikeIt", "#808080", 0x9A9A9A, true},
                    MeantRow{"NotLikeIt", "#808080", 0xA0A0A0, false}),
    [](const auto& row) { return row.param.name; });

class NoColors : public testing::TestWithParam<const char*> {};
TEST_P(NoColors, AreRefused) {
    EXPECT_FALSE(parseColor(GetParam()).has_value());
}
INSTANTIATE_TEST_SUITE_P(Rows, NoColors,
                         testing::Values("", "#", "nice", "#12345", "#1234567", "#12345g", "12ab34", "#-12345",
                                         "red "));

TEST(ColorNames, AreReadInBothLanguages) {
    for (const ColorName& name : colorNames)
        for (const std::string_view text : {name.english, name.german})
            EXPECT_TRUE(parseColor(text).has_value()) << text;
}

}  // namespace
}  // namespace velamo
