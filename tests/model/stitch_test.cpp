#include "velamo/model/stitch.h"

#include <gtest/gtest.h>

namespace velamo {
namespace {

TEST(Stitch, TakesItsDataAndIsUnselected) {
    const auto stitch = VLMStitch::initWithDatadYisJumpisChange(1.5F, -2.0F, true, false);
    EXPECT_EQ(stitch.deltaX(), 1.5F);
    EXPECT_EQ(stitch.deltaY(), -2.0F);
    EXPECT_TRUE(stitch.isJumpStitch());
    EXPECT_FALSE(stitch.isColorChange());
    EXPECT_FALSE(stitch.isSelected());
}

TEST(Stitch, IsNullByItsMoveAlone) {
    EXPECT_TRUE(VLMStitch(0, 0, false, true).isNullStitch());
    EXPECT_TRUE(VLMStitch(-0.0F, 0, true, false).isNullStitch());
    EXPECT_FALSE(VLMStitch(0, 0.1F, false, false).isNullStitch());
    EXPECT_FALSE(VLMStitch(0.1F, 0, false, false).isNullStitch());
}

TEST(Stitch, DescribesItself) {
    EXPECT_EQ(VLMStitch(1.255F, -3.0F, true, false, true).description(),
              "Embroidery Stitch (deltaX=1.25, deltaY=-3.00, Jump-Stitch=1, Color-Change=0), selected=1");
}

TEST(Stitch, CopyKeepsTheSelection) {
    VLMStitch stitch(1, 2, false, true);
    stitch.setIsSelected(true);
    EXPECT_EQ(stitch.copy(), stitch);
    EXPECT_TRUE(stitch.copy().isSelected());
}

}  // namespace
}  // namespace velamo
