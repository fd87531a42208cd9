#include "velamo/model/color_list.h"

#include <gtest/gtest.h>

#include <system_error>

#include "tests/support/temporary_folder.h"
#include "tests/support/unreadable_file.h"

namespace velamo {
namespace {

struct Row {
    const char* name;
    std::string file;
    std::vector<std::string> keys;
};
class ColorListFiles : public testing::TestWithParam<Row> {};
TEST_P(ColorListFiles, GiveTheirKeysInOrder) {
    const test::TemporaryFolder folder;
    const auto list = VLMColorList::initWithNamefromFile("Test", folder.write("Test.clr", GetParam().file));
    EXPECT_EQ(list.allSortedKeys(), GetParam().keys);
}

INSTANTIATE_TEST_SUITE_P(Rows, ColorListFiles,
                         testing::Values(Row{"EmptyFile", "", {}}, Row{"HeaderOnly", "Palette 1.0\n", {}},
                                         Row{"HeaderWithoutLineEnd", "1 0 0 0 1 100", {}},
                                         Row{"LastLineWithoutLineEnd", "h\n1 0 0 0 1 100", {"100"}},
                                         Row{"Order", "h\n1 0 0 0 1 b\n2 0 0 0 1 a\n", {"b", "a"}},
                                         Row{"KeyTwice", "h\n1 0 0 0 1 b\n2 0 0 0 1 b\n", {"b", "b"}},
                                         Row{"MissingFourthNumber", "h\n1 0.5 0.25 0.0 x1\n2 0 0 0 1 a\n", {"a"}},
                                         Row{"MissingKey", "h\n1 0 0 0 1\n", {}},
                                         Row{"BlankLinesAndComments", "h\n\n# a comment\n   \t\n1 0 0 0 1 a\n", {"a"}},
                                         Row{"AllSeparators", "h\n\t1,,0 ,\t0.5 0,1 ,a,b\r\n", {"a"}},
                                         Row{"KeyOfAnyCharacters", "h\n1 0 0 0 1 \u00E4-#7\n", {"\u00E4-#7"}}),
                         [](const auto& row) { return row.param.name; });

TEST(ColorList, ReadsSixFields) {
    const test::TemporaryFolder folder;
    const auto file = folder.write("Test.clr", "header\n12, 0.5, 0.25, 0.0, 1.0, 1234\n13, 0.1, 0, 1e-1, 1, 99\n");
    const auto list = VLMColorList::initWithNamefromFile("Test", file);
    ASSERT_NE(list.colorWithKey("1234"), nullptr);
    EXPECT_EQ(*list.colorWithKey("1234"), VLMColor::initWithRedgreenblue(0.5, 0.25, 0.0));
    // Single precision on the way in.
    EXPECT_EQ(*list.colorWithKey("99"), VLMColor::initWithRedgreenblue(double{0.1F}, 0, double{0.1F}));
    EXPECT_EQ(list.colorWithKey("12"), nullptr);
}

TEST(ColorList, LaterLineOfAKeyCounts) {
    const test::TemporaryFolder folder;
    const auto list =
        VLMColorList::initWithNamefromFile("Test", folder.write("Test.clr", "h\n1 0 0 0 1 a\n2 1 1 1 1 a\n"));
    EXPECT_EQ(*list.colorWithKey("a"), VLMColor::initWithRedgreenblue(1, 1, 1));
}

TEST(ColorList, MissingFileIsAnEmptyPalette) {
    EXPECT_TRUE(VLMColorList::initWithNamefromFile("Test", "/nowhere/Test.clr").allKeys().empty());
}

TEST(ColorList, FileThatCannotBeReadThisTimeIsNone) {
    if (!test::hasUnreadableFile()) GTEST_SKIP() << "no file here fails so";
    EXPECT_THROW(static_cast<void>(VLMColorList::initWithNamefromFile("Test", test::unreadableFile)),
                 std::system_error);
}

TEST(Palettes, AreFoundByName) {
    const auto brother = paletteNamed("Brother");
    ASSERT_NE(brother, nullptr);
    EXPECT_EQ(brother->allSortedKeys().size(), 64U);
    EXPECT_EQ(brother->allSortedKeys().front(), "007");
    const auto janome = paletteNamed("Janome");
    ASSERT_NE(janome, nullptr);
    EXPECT_EQ(janome->allSortedKeys().size(), 78U);
    EXPECT_EQ(janome->colorWithKey("x9"), nullptr);
}

TEST(Palettes, AreEmptyWhenMissingAndNoneWhenTheNameLeadsElsewhere) {
    ASSERT_NE(paletteNamed("Undefined"), nullptr);
    EXPECT_TRUE(paletteNamed("Undefined")->allKeys().empty());
    for (const std::string name : {"", ".", "..", "../Brother", "a/b"}) EXPECT_EQ(paletteNamed(name), nullptr) << name;
}

}  // namespace
}  // namespace velamo
