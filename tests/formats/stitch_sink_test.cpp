#include "velamo/formats/stitch_sink.h"

#include <gtest/gtest.h>

#include <limits>

namespace velamo {
namespace {

constexpr float largest = std::numeric_limits<float>::max();

TEST(StitchSink, WithoutStitchesLeavesEmptyBounds) {
    VLMDesign design;
    { const StitchSink sink(design, 10); }
    EXPECT_EQ(design.xMin(), largest);
    EXPECT_EQ(design.xMax(), -largest);
    EXPECT_EQ(design.yMin(), largest);
    EXPECT_EQ(design.yMax(), -largest);
    EXPECT_TRUE(design.stitches().empty());
}

TEST(StitchSink, MayWidenTheBoundsThatAreThere) {
    VLMDesign design;
    design.setXMin(-5);
    design.setXMax(5);
    design.setYMin(-5);
    design.setYMax(5);
    {
        StitchSink sink(design, 1, SinkBounds::widen);
        sink.append(7, -3, false, false);
    }
    EXPECT_EQ(design.xMin(), -5);
    EXPECT_EQ(design.xMax(), 7);
    EXPECT_EQ(design.yMin(), -5);
    EXPECT_EQ(design.yMax(), 5);
}

TEST(StitchSink, TakesMoreStitchesThanItWasTold) {
    for (const std::size_t count : {1U, 255U, 256U, 257U, 5000U}) {
        VLMDesign design;
        design.stitches().push_back({9, 9, false, false});
        {
            StitchSink sink(design, 0);
            for (std::size_t i = 0; i < count; ++i) sink.append(1, -1, i % 3 == 0, i % 5 == 0);
        }
        ASSERT_EQ(design.stitches().size(), count + 1);
        EXPECT_EQ(design.stitches()[0], VLMStitch(9, 9, false, false));
        for (std::size_t i = 0; i < count; ++i)
            ASSERT_EQ(design.stitches()[i + 1], VLMStitch(1, -1, i % 3 == 0, i % 5 == 0));
        EXPECT_EQ(design.xMin(), 1);
        EXPECT_EQ(design.xMax(), static_cast<float>(count));
        EXPECT_EQ(design.yMin(), -static_cast<float>(count));
        EXPECT_EQ(design.yMax(), -1);
    }
}

TEST(StitchSink, KeepsThePositionInSinglePrecision) {
    VLMDesign design;
    {
        StitchSink sink(design, 3);
        sink.append(16777216, 0, false, false);
        sink.append(1, 0, false, false);  // lost
        sink.append(3, 0, false, false);  // counts as 4
    }
    EXPECT_EQ(design.xMax(), 16777220.0F);
}

TEST(StitchSink, TellsTheLastStitch) {
    VLMDesign design;
    StitchSink sink(design, 2);
    EXPECT_EQ(sink.last(), nullptr);
    sink.append(1, 0, false, false);
    ASSERT_NE(sink.last(), nullptr);
    sink.last()->setIsJumpStitch(true);
    sink.flush();
    sink.last()->setIsColorChange(true);
    EXPECT_EQ(design.stitches(), (std::vector<VLMStitch>{{1, 0, true, true}}));
    sink.append(2, 0, false, false);
    EXPECT_EQ(*sink.last(), VLMStitch(2, 0, false, false));
}

}  // namespace
}  // namespace velamo
