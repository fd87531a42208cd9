#include "velamo/platform/text/search_words.h"

#include <gtest/gtest.h>

namespace velamo {
namespace {

TEST(FoldedForSearch, HasNoDifferencesOfCaseAndComposition) {
    EXPECT_EQ(foldedForSearch("ROSE.Dst"), "rose.dst");
    EXPECT_EQ(foldedForSearch("ÄHRE"), foldedForSearch("a\u0308hre"));
    EXPECT_EQ(foldedForSearch("Straße"), foldedForSearch("STRASSE"));
    EXPECT_EQ(foldedForSearch("ＲＯＳＥ"), "rose");
    EXPECT_EQ(foldedForSearch(""), "");
    EXPECT_EQ(foldedForSearch("%_'\"\\"), "%_'\"\\");
}

TEST(FoldedForSearch, HasNoAccents) {
    EXPECT_EQ(foldedForSearch("Ähre"), "ahre");
    EXPECT_EQ(foldedForSearch("CAFÉ"), foldedForSearch("cafe"));
    EXPECT_EQ(foldedForSearch("Ёлка"), foldedForSearch("елка"));
    EXPECT_NE(foldedForSearch("が"), foldedForSearch("か"));  // other letters
}

TEST(FoldedName, HasItsAccents) {
    EXPECT_EQ(foldedName("ÄHRE"), foldedName("a\u0308hre"));
    EXPECT_NE(foldedName("ahre"), foldedName("Ähre"));
    EXPECT_EQ(foldedName("ROSE"), "rose");
}

TEST(FoldedForSearch, ReplacesWhatIsNoText) {
    EXPECT_EQ(foldedForSearch("A\xffZ"), "a\uFFFDz");
}

TEST(ColumnsOf, CountWhatATerminalShows) {
    EXPECT_EQ(columnsOf(""), 0U);
    EXPECT_EQ(columnsOf("50.0 mm"), 7U);
    EXPECT_EQ(columnsOf("1\u202f234,5 mm"), 10U);
    EXPECT_EQ(columnsOf("a\u0308"), 1U);
    EXPECT_EQ(columnsOf("刺繍"), 4U);
    EXPECT_EQ(columnsOf("\xff"), 1U);
}

}  // namespace
}  // namespace velamo
