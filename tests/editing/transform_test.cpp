#include "velamo/editing/transform.h"

#include <gtest/gtest.h>

#include <limits>

#include "tests/support/stitches.h"

namespace velamo {
namespace {

using namespace test;
using Stitches = std::vector<VLMStitch>;
using Keys = std::vector<Text>;

VLMDesign measured(Stitches stitches, float xMin, float yMin, float xMax, float yMax) {
    VLMDesign design = designOf(std::move(stitches));
    design.setXMin(xMin);
    design.setYMin(yMin);
    design.setXMax(xMax);
    design.setYMax(yMax);
    return design;
}

const Stitches middleSelected{stitch(10, 0), selected(stitch(10, 0)), stitch(10, 0)};
const Stitches allSelected{selected(stitch(10, 0)), selected(stitch(0, 20))};

TEST(Moving, JumpsThereAndBack) {
    VLMDesign design = designOf(middleSelected);
    EXPECT_TRUE(moveSelectionByVectorerror(design, {3.5, -2}, nullptr));
    EXPECT_EQ(design.stitches(), (Stitches{stitch(10, 0), jump(3.5F, -2), selected(stitch(0, 0)),
                                           selected(stitch(10, 0)), jump(-3.5F, 2), stitch(0, 0), stitch(10, 0)}));
    EXPECT_EQ(boundsOf(design), (Bounds{10, -2, 30, 0}));
    EXPECT_TRUE(design.selectionActive());
}

TEST(Moving, OfEverythingNeedsNoWayBack) {
    VLMDesign design = designOf(allSelected);
    EXPECT_TRUE(moveSelectionByVectorerror(design, {1, 1}, nullptr));
    EXPECT_EQ(design.stitches(),
              (Stitches{jump(1, 1), selected(stitch(0, 0)), selected(stitch(10, 0)), selected(stitch(0, 20))}));
}

TEST(Moving, ByNothingLeavesTheTies) {
    VLMDesign design = designOf(middleSelected);
    EXPECT_TRUE(moveSelectionByVectorerror(design, {0, 0}, nullptr));
    EXPECT_EQ(design.stitches(),
              (Stitches{stitch(10, 0), selected(stitch(0, 0)), selected(stitch(10, 0)), stitch(0, 0), stitch(10, 0)}));
}

TEST(Moving, NeedsNoTieBehindAJump) {
    VLMDesign design = designOf({jump(5, 5), selected(stitch(10, 0)), jump(1, 1), stitch(2, 2)});
    EXPECT_TRUE(moveSelectionByVectorerror(design, {1, 0}, nullptr));
    EXPECT_EQ(design.stitches(), (Stitches{jump(6, 5), selected(stitch(10, 0)), jump(0, 1), stitch(2, 2)}));
}

TEST(Moving, CutsItsJumpsToTheTypesLimit) {
    VLMDesign design = designOf({stitch(10, 0), selected(stitch(10, 0))});
    EXPECT_TRUE(moveSelectionByVectorerror(design, {200, 0}, nullptr));
    EXPECT_EQ(design.stitches(),
              (Stitches{stitch(10, 0), jump(120, 0), jump(80, 0), selected(stitch(0, 0)), selected(stitch(10, 0))}));
}

TEST(Rotating, TurnsCounterClockwiseAboutTheMiddle) {
    VLMDesign design = designOf(middleSelected);
    EXPECT_TRUE(rotateSelectionByDegreeserror(design, 90, nullptr));
    ASSERT_EQ(design.stitches().size(), 7U);
    EXPECT_EQ(design.stitches()[2], selected(stitch(0, 0)));
    const VLMStitch turned = design.stitches()[3];
    EXPECT_TRUE(turned.isSelected());
    EXPECT_NEAR(turned.deltaX(), 0, 1e-5);
    EXPECT_NEAR(turned.deltaY(), 10, 1e-5);
    EXPECT_NEAR(design.yMin(), -5, 1e-5);
    EXPECT_NEAR(design.yMax(), 5, 1e-5);
    EXPECT_EQ(design.xMax(), 30);
}

TEST(Rotating, ByAWholeTurnLeavesThePlaces) {
    VLMDesign design = designOf(allSelected);
    EXPECT_TRUE(rotateSelectionByDegreeserror(design, 360, nullptr));
    EXPECT_NEAR(design.xMax(), 10, 1e-4);
    EXPECT_NEAR(design.yMax(), 20, 1e-4);
}

TEST(Resizing, TakesTheFactorItself) {
    VLMDesign design = designOf(allSelected);
    EXPECT_TRUE(resizeSelectionByPercenterror(design, 1.5F, nullptr));
    EXPECT_EQ(design.stitches(),
              (Stitches{jump(-2.5F, -5), selected(stitch(0, 0)), selected(stitch(15, 0)), selected(stitch(0, 30))}));
}

TEST(Resizing, ToNothingIsRefusedWhereTheWayBackIsLost) {
    VLMDesign design = designOf(middleSelected);
    VLMError error;
    EXPECT_FALSE(resizeSelectionByPercenterror(design, 0, &error));
    EXPECT_EQ(error.code, 71);
    EXPECT_EQ(design.stitches(), middleSelected);
}

TEST(Flipping, MirrorsAboutTheMiddle) {
    VLMDesign design = designOf(allSelected);
    EXPECT_TRUE(flipSelectionerror(design, "V", nullptr));
    EXPECT_EQ(design.stitches(),
              (Stitches{jump(10, 0), selected(stitch(0, 0)), selected(stitch(-10, 0)), selected(stitch(0, 20))}));
    design = designOf(allSelected);
    EXPECT_TRUE(flipSelectionerror(design, "H", nullptr));
    EXPECT_EQ(design.stitches(),
              (Stitches{jump(0, 20), selected(stitch(0, 0)), selected(stitch(10, 0)), selected(stitch(0, -20))}));
}

/// The tie looks at the stitch as it was: one on the spot needs none, though it moves afterwards.
TEST(Flipping, TiesByTheMoveBefore) {
    VLMDesign design = designOf({selected(stitch(0, 0)), selected(stitch(10, 0))});
    EXPECT_TRUE(flipSelectionerror(design, "V", nullptr));
    EXPECT_EQ(design.stitches(), (Stitches{jump(10, 0), selected(stitch(0, 0)), selected(stitch(-10, 0))}));
}

TEST(Flipping, KnowsItsOrientationsAsTheyStand) {
    for (const char* orientation : {"v", "h", "", "VH"}) {
        VLMDesign design = designOf(allSelected);
        VLMError error;
        EXPECT_FALSE(flipSelectionerror(design, orientation, &error)) << orientation;
        EXPECT_EQ(error.code, 70);
        EXPECT_EQ(error.message(), "Unable to flip the design (invalid orientation).");
        EXPECT_EQ(design.stitches(), allSelected);
    }
}

TEST(Transforming, NothingSelectedChangesNothing) {
    for (const bool isActive : {false, true}) {
        VLMDesign design = designOf({stitch(10, 0), stitch(0, 20)});
        design.setSelectionActive(isActive);
        EXPECT_TRUE(rotateSelectionByDegreeserror(design, 45, nullptr));
        EXPECT_TRUE(resizeSelectionByPercenterror(design, 0, nullptr));
        EXPECT_TRUE(flipSelectionerror(design, "V", nullptr));
        EXPECT_TRUE(moveSelectionByVectorerror(design, {7, 7}, nullptr));
        EXPECT_EQ(design.stitches(), (Stitches{stitch(10, 0), stitch(0, 20)}));
    }
}

/// Without an active selection the middle is that of the design's bounds, whatever is selected.
TEST(Transforming, TakesTheMiddleOfTheBoundsWithoutASelection) {
    VLMDesign design = measured(allSelected, 0, 0, 100, 100);
    design.setSelectionActive(false);
    EXPECT_TRUE(flipSelectionerror(design, "V", nullptr));
    EXPECT_EQ(design.stitches()[0], jump(100, 0));
}

TEST(Transforming, RefusesMovesThatAreNotFinite) {
    constexpr double infinite = std::numeric_limits<double>::infinity();
    VLMDesign design = designOf(middleSelected);
    VLMError error;
    EXPECT_FALSE(moveSelectionByVectorerror(design, {infinite, 0}, &error));
    EXPECT_EQ(error.code, 71);
    EXPECT_EQ(error.message(), "Unable to edit the design (moves too large).");
    EXPECT_FALSE(resizeSelectionByPercenterror(design, 1e38F, nullptr));
    EXPECT_EQ(design.stitches(), middleSelected);
}

/// The needle's place behind the jump counts for the bounds, so the middle is not found at once.
TEST(Centering, JumpsToTheMiddle) {
    VLMDesign design = measured({stitch(10, 0), stitch(0, 20)}, 10, 0, 10, 20);
    EXPECT_TRUE(centerDesign(design));
    EXPECT_EQ(design.stitches(), (Stitches{jump(-5, -10), stitch(0, 0), stitch(10, 0), stitch(0, 20)}));
    EXPECT_EQ(design.centerOfDesign(), DesignPoint{});
    EXPECT_EQ(boundsOf(design), (Bounds{-5, -10, 5, 10}));
}

TEST(Centering, OfACenteredDesignInsertsNothing) {
    VLMDesign design = measured(allSelected, -10, -10, 10, 10);
    design.setDisplayRange({1, 1});
    EXPECT_TRUE(centerDesign(design));
    EXPECT_EQ(design.stitches(), allSelected);
    EXPECT_EQ(design.displayRange(), (StitchRange{1, 1}));
}

TEST(Centering, OfAnEmptyDesignSettles) {
    VLMDesign design = measured({}, 10, 10, 20, 20);
    EXPECT_TRUE(centerDesign(design));
    EXPECT_EQ(boundsOf(design), noBounds);
}

TEST(Centering, RefusesBoundsThatAreNotFinite) {
    VLMDesign design = measured(allSelected, 0, 0, std::numeric_limits<float>::infinity(), 0);
    EXPECT_FALSE(centerDesign(design));
    EXPECT_EQ(design.stitches(), allSelected);
}

}  // namespace
}  // namespace velamo
