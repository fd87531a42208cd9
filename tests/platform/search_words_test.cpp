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
    EXPECT_NE(foldedForSearch("ahre"), foldedForSearch("Ähre"));
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
