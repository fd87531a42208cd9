#include "velamo/editing/selection.h"

#include <gtest/gtest.h>

#include <cmath>

#include "tests/support/stitches.h"

namespace velamo {
namespace {

using namespace test;
using Selected = std::vector<bool>;

constexpr DesignRect invertedBox{65536, 65536, -131072, -131072};

Selected selectedOf(const VLMDesign& design) {
    Selected selected;
    for (const VLMStitch& stitch : design.stitches()) selected.push_back(stitch.isSelected());
    return selected;
}

/// (0, 0) to (10, 0) to (20, 0), a jump to (20, 10), (30, 10), a colour change to (30, 20), (40, 20).
VLMDesign stairs() {
    return designOf({stitch(10, 0), stitch(10, 0), jump(0, 10), stitch(10, 0), change(0, 10), stitch(10, 0)});
}

TEST(Selecting, AllNoneAndTheOthers) {
    VLMDesign design = stairs();
    selectAll(design);
    EXPECT_EQ(selectedOf(design), Selected(6, true));
    EXPECT_TRUE(design.selectionActive());
    invertAll(design);
    EXPECT_EQ(selectedOf(design), Selected(6, false));
    EXPECT_FALSE(design.selectionActive());
    design.stitches()[1].setIsSelected(true);
    invertAll(design);
    EXPECT_EQ(selectedOf(design), (Selected{true, false, true, true, true, true}));
    EXPECT_TRUE(design.selectionActive());
    deselectAll(design);
    EXPECT_EQ(selectedOf(design), Selected(6, false));
    EXPECT_FALSE(design.selectionActive());
}

TEST(Selecting, AnEmptyDesign) {
    VLMDesign design;
    EXPECT_EQ(indexOfStitchAtwithTolerance(design, {}, 4), -1);
    selectAll(design);
    EXPECT_TRUE(design.selectionActive());
    EXPECT_EQ(selectionRect(design), invertedBox);
    invertAll(design);
    EXPECT_FALSE(design.selectionActive());
}

TEST(SelectionRect, IsTheDesignsWithoutASelection) {
    VLMDesign design = stairs();
    design.setXMin(-1.5F);
    design.setYMin(-2);
    design.setXMax(3);
    design.setYMax(5);
    EXPECT_EQ(selectionRect(design), (DesignRect{-1.5, -2, 4.5, 7}));
}

TEST(SelectionRect, HoldsBothEndsOfEachSelectedStitch) {
    VLMDesign design = stairs();
    design.setSelectionActive(true);
    EXPECT_EQ(selectionRect(design), invertedBox);
    design.stitches()[1].setIsSelected(true);
    EXPECT_EQ(selectionRect(design), (DesignRect{10, 0, 10, 0}));
    design.stitches()[3].setIsSelected(true);
    EXPECT_EQ(selectionRect(design), (DesignRect{10, 0, 20, 10}));
}

TEST(SelectingInARectangle, TakesStitchesWithBothEndsInside) {
    VLMDesign design = stairs();
    selectInRectunselectMode(design, {5, -1, 20, 20}, false);
    EXPECT_EQ(selectedOf(design), (Selected{false, true, true, false, false, false}));
    EXPECT_TRUE(design.selectionActive());
}

TEST(SelectingInARectangle, LeavesItsFarEdgesOut) {
    VLMDesign design = stairs();
    selectInRectunselectMode(design, {0, 0, 20, 10}, false);
    EXPECT_EQ(selectedOf(design), (Selected{true, false, false, false, false, false}));
    selectInRectunselectMode(design, {0, 0, 20.5, 10}, false);
    EXPECT_EQ(selectedOf(design), (Selected{true, true, false, false, false, false}));
    selectInRectunselectMode(design, {0, 0, 20.5, 10.5}, false);
    EXPECT_EQ(selectedOf(design), (Selected{true, true, true, false, false, false}));
}

TEST(SelectingInARectangle, OfNegativeSizeTakesNothing) {
    VLMDesign design = stairs();
    selectInRectunselectMode(design, {50, 50, -100, -100}, false);
    EXPECT_EQ(selectedOf(design), Selected(6, false));
    EXPECT_FALSE(design.selectionActive());
}

TEST(SelectingInARectangle, UnselectsAndKeepsWhatLiesOutside) {
    VLMDesign design = stairs();
    selectAll(design);
    selectInRectunselectMode(design, {-1, -1, 22, 2}, true);
    EXPECT_EQ(selectedOf(design), (Selected{false, false, true, true, true, true}));
    EXPECT_TRUE(design.selectionActive());
    selectInRectunselectMode(design, {-100, -100, 200, 200}, true);
    EXPECT_FALSE(design.selectionActive());
}

struct Click {
    const char* name;
    DesignPoint point;
    float tolerance;
    int stitch;
    int thread;
};
class Hitting : public testing::TestWithParam<Click> {};

TEST_P(Hitting, FindsTheStitchAndItsThread) {
    VLMDesign design = stairs();
    const auto& [name, point, tolerance, stitch, thread] = GetParam();
    EXPECT_EQ(indexOfStitchAtwithTolerance(design, point, tolerance), stitch);
    EXPECT_EQ(indexOfThreadAtwithTolerance(design, point, tolerance), thread);
    EXPECT_FALSE(isSelectedAtwithTolerance(design, point, tolerance));
    selectAll(design);
    EXPECT_EQ(isSelectedAtwithTolerance(design, point, tolerance), stitch >= 0);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, Hitting,
    testing::Values(Click{"Stitch", {5, 1}, 4, 0, 0}, Click{"JustWithinTolerance", {5, 1.99}, 4, 0, 0},
                    Click{"ToleranceItselfMisses", {5, 2}, 4, -1, -1}, Click{"Jump", {20, 5}, 1, 2, 0},
                    Click{"SecondStitch", {15, 0}, 1, 1, 0}, Click{"CommonEndGoesToTheLater", {10, 0}, 1, 1, 0},
                    Click{"ChangeCountsItself", {30, 15}, 1, 4, 1}, Click{"BehindTheChange", {35, 20}, 1, 5, 1},
                    Click{"BesideTheLastEnd", {40.5, 20}, 4, -1, -1}, Click{"JustBeforeTheStart", {-0.5, 0}, 4, -1, -1},
                    Click{"PastTheEndWithinReachOfTheStart", {40.5, 20}, 111, 5, 1}),
    [](const auto& click) { return click.param.name; });

TEST(Hitting, MeasuresToTheOtherEndBeyondAStitch) {
    const VLMDesign design = designOf({stitch(1, 0)});
    EXPECT_EQ(indexOfStitchAtwithTolerance(design, {1.5, 0}, 2.25F), -1);
    EXPECT_EQ(indexOfStitchAtwithTolerance(design, {1.5, 0}, 2.26F), 0);
    EXPECT_EQ(indexOfStitchAtwithTolerance(design, {-0.5, 0}, 2.25F), -1);
    EXPECT_EQ(indexOfStitchAtwithTolerance(design, {-0.5, 0}, 2.26F), 0);
}

TEST(Hitting, GivesTheLaterOfTwoStitchesUnderThePointer) {
    const VLMDesign design = designOf({stitch(10, 0), stitch(-10, 0)});
    EXPECT_EQ(indexOfStitchAtwithTolerance(design, {5, 0}, 1), 1);
}

TEST(Hitting, NeverFindsStitchesOfNoLength) {
    const VLMDesign design = designOf({stitch(0, 0), change(0, 0)});
    EXPECT_EQ(indexOfStitchAtwithTolerance(design, {0, 0}, 100), -1);
}

/// A tenth of the way, which single precision does not hold: the point on the stitch lies beside the click.
TEST(Hitting, RoundsThePartOfTheWayOnce) {
    const VLMDesign design = designOf({stitch(1e8F, 0)});
    const double part = static_cast<double>(static_cast<float>(1e15 / static_cast<double>(1e16F)));
    const double distance = 1e7 - part * 1e8;
    ASSERT_NE(distance, 0);
    const auto squared = static_cast<float>(distance * distance);
    EXPECT_EQ(indexOfStitchAtwithTolerance(design, {1e7, 0}, squared), -1);
    EXPECT_EQ(indexOfStitchAtwithTolerance(design, {1e7, 0}, std::nextafter(squared, 1e9F)), 0);
}

TEST(SelectingAStitch, ChangesItAlone) {
    VLMDesign design = stairs();
    selectStitchAtwithToleranceunselectMode(design, {20, 5}, 1, false);
    EXPECT_EQ(selectedOf(design), (Selected{false, false, true, false, false, false}));
    EXPECT_TRUE(design.selectionActive());
    selectStitchAtwithToleranceunselectMode(design, {20, 5}, 1, true);
    EXPECT_EQ(selectedOf(design), Selected(6, false));
    EXPECT_FALSE(design.selectionActive());
}

TEST(SelectingAStitch, FindsSelectionActiveEvenByAMiss) {
    VLMDesign design = stairs();
    design.setSelectionActive(true);
    selectStitchAtwithToleranceunselectMode(design, {500, 500}, 1, false);
    EXPECT_FALSE(design.selectionActive());
    design.stitches()[4].setIsSelected(true);
    selectBlockAtwithToleranceunselectMode(design, {500, 500}, 1, false);
    EXPECT_TRUE(design.selectionActive());
}

struct BlockClick {
    const char* name;
    DesignPoint point;
    Selected selected;
};
class SelectingABlock : public testing::TestWithParam<BlockClick> {};

TEST_P(SelectingABlock, SelectsAndUnselects) {
    VLMDesign design = designOf({jump(0, 10), stitch(10, 0), stitch(10, 0), stitch(10, 0), jump(0, 10), stitch(10, 0),
                                 change(0, 10), stitch(10, 0)});
    selectBlockAtwithToleranceunselectMode(design, GetParam().point, 1, false);
    EXPECT_EQ(selectedOf(design), GetParam().selected);
    EXPECT_TRUE(design.selectionActive());
    selectAll(design);
    selectBlockAtwithToleranceunselectMode(design, GetParam().point, 1, true);
    Selected others = GetParam().selected;
    others.flip();
    EXPECT_EQ(selectedOf(design), others);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, SelectingABlock,
    testing::Values(
        BlockClick{"FirstBehindAJump", {5, 10}, {false, true, true, true, false, false, false, false}},
        BlockClick{"InTheMiddle", {15, 10}, {false, true, true, true, false, false, false, false}},
        BlockClick{"JumpHitsTheBlockBehind", {30, 15}, {false, false, false, false, false, true, false, false}},
        BlockClick{"ChangeHitsTheBlockBehind", {40, 25}, {false, false, false, false, false, false, false, true}}),
    [](const auto& row) { return row.param.name; });

}  // namespace
}  // namespace velamo
