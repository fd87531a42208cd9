#include "integrations/attribute_words.h"

#include <gtest/gtest.h>

namespace velamo {
namespace {

struct Row {
    const char* name;
    DesignAttributes design;
    const char* words;
};
class AttributeWords : public testing::TestWithParam<Row> {};
TEST_P(AttributeWords, AreTheRowS) {
    EXPECT_EQ(attributesInWords(GetParam().design), GetParam().words);
}
INSTANTIATE_TEST_SUITE_P(
    Rows, AttributeWords,
    testing::Values(Row{"Many", {123.4F, 56.7F, 5120, 7}, "123.4 x 56.7 mm, 5120 stitches, 7 colours"},
                    Row{"One", {0.1F, 12, 1, 1}, "0.1 x 12.0 mm, 1 stitch, 1 colour"},
                    Row{"None", {0, 0, 0, 0}, "0.0 x 0.0 mm, 0 stitches, 0 colours"},
                    Row{"MoreThreadsThanStitches", {1, 1, -3, 5}, "1.0 x 1.0 mm, 0 stitches, 5 colours"},
                    Row{"Greatest",
                        {429496729.6F, 214748364.8F, 2147483648.0F, 65535},
                        "429496736.0 x 214748368.0 mm, 2147483648 stitches, 65535 colours"}),
    [](const auto& row) { return row.param.name; });

TEST(WholeNumber, IsTheNearest) {
    EXPECT_EQ(nearestWhole(0), 0);
    EXPECT_EQ(nearestWhole(56.4F), 56);
    EXPECT_EQ(nearestWhole(56.5F), 57);
    EXPECT_EQ(nearestWhole(57.5F), 58);
    EXPECT_EQ(nearestWhole(40000), 40000);
}

TEST(OneDecimal, NeedsNoMoreRoomThanAnyFloatHas) {
    EXPECT_EQ(withOneDecimal(3.4028234663852886e38F), "340282346638528859811704183484516925440.0");
    EXPECT_EQ(withOneDecimal(-3.4028234663852886e38F), "-340282346638528859811704183484516925440.0");
}

}  // namespace
}  // namespace velamo
