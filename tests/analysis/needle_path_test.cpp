#include "velamo/analysis/needle_path.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "tests/support/designs.h"
#include "tests/support/stitches.h"

namespace velamo {
namespace {

using test::change;
using test::jump;
using test::stitch;

NeedlePath pathOf(std::vector<VLMStitch> stitches) {
    return needlePathOf(test::designOf(std::move(stitches)));
}

struct PointRow {
    std::string name;
    std::vector<VLMStitch> stitches;
    std::vector<NeedlePoint> points;
};
class NeedlePoints : public testing::TestWithParam<PointRow> {};
TEST_P(NeedlePoints, AreThoseOfTheStitches) {
    EXPECT_EQ(pathOf(GetParam().stitches).points, GetParam().points);
}
INSTANTIATE_TEST_SUITE_P(
    Rows, NeedlePoints,
    testing::Values(
        PointRow{"OfNothing", {}, {}}, PointRow{"OfJumpsAndChanges", {jump(5, 5), change(5, 5), jump(5, 5)}, {}},
        PointRow{"OfStitchesOnTheSpot", {stitch(0, 0), stitch(0, 0)}, {}},
        PointRow{"OfOneStitch", {stitch(30, 40)}, {{0, 0}, {30, 40}}},
        PointRow{"BeginWhereSewingDoes", {jump(10, 0), stitch(0, 20)}, {{10, 0}, {10, 20}}},
        PointRow{"EndWhereSewingDoes", {stitch(0, 20), jump(9, 9), stitch(0, 0)}, {{0, 0}, {0, 20}}},
        PointRow{"BeginAgainAfterAJump",
                 {stitch(30, 0), jump(5, 5), jump(5, 5), stitch(0, 30)},
                 {{0, 0}, {30, 0}, {40, 10, true}, {40, 40}}},
        PointRow{"BeginAgainAfterAChangeThatMoves",
                 {stitch(30, 0), change(10, 10), stitch(0, 30)},
                 {{0, 0}, {30, 0}, {40, 10, true}, {40, 40}}},
        PointRow{"GoOnAfterAChangeOnTheSpot",
                 {stitch(0, 9), stitch(30, 0), change(0, 0), stitch(0, 30)},
                 {{0, 0}, {0, 9}, {30, 9}, {30, 39}}},
        // A stitch on the spot is a marker in some formats.
        PointRow{"TakeNoNoticeOfStitchesOnTheSpot",
                 {stitch(30, 0), jump(10, 10), stitch(0, 0), jump(0, 10), stitch(0, 30)},
                 {{0, 0}, {30, 0}, {40, 20, true}, {40, 50}}},
        PointRow{"AreNoNearerThanSome",
                 {stitch(30, 0), stitch(0.59F, 0), stitch(0.02F, 0), stitch(0, 30)},
                 {{0, 0}, {30, 0}, {double{0.59F} + double{0.02F} + 30, 0}, {double{0.59F} + double{0.02F} + 30, 30}}},
        PointRow{"BeginAfterTheLastPieceOfAWay", {jump(30, 10), stitch(30, 11), stitch(0, 30)}, {{60, 21}, {60, 51}}},
        PointRow{"BeginWithAStitchThatLeavesTheWay",
                 {jump(30, 0), stitch(30, 1.6F), stitch(0, 30)},
                 {{30, 0}, {60, double{1.6F}}, {60, double{1.6F} + 30}}},
        PointRow{"BeginAfterAStitchThatHardlyLeavesTheWay",
                 {jump(30, 0), stitch(30, 1.4F), stitch(0, 30)},
                 {{60, double{1.4F}}, {60, double{1.4F} + 30}}},
        PointRow{"BeginWithAStitchThatTurnsBack",
                 {jump(30, 0), stitch(-20, 0), stitch(0, 30)},
                 {{30, 0}, {10, 0}, {10, 30}}},
        PointRow{"BeginAfterAFirstStitchToWhereTheNeedleRests",
                 {stitch(30, 40), stitch(0, 0), stitch(0, 30)},
                 {{30, 40}, {30, 70}}},
        PointRow{"TakeNoNoticeOfWhatIsNotFinite",
                 {stitch(0, 20), stitch(test::awkwardNumbers[0], 5), jump(test::awkwardNumbers[1], 5), stitch(7, 0)},
                 {{0, 0}, {0, 20}, {7, 20}}}),
    [](const auto& row) { return row.param.name; });

TEST(NeedlePath, CountsBlocksAndConnections) {
    const NeedlePath path = pathOf({change(0, 0), stitch(30, 0), change(0, 0), change(0, 0), stitch(0, 30), jump(9, 9),
                                    stitch(0, 30), change(9, 9)});
    EXPECT_EQ(path.blocks, 2U);
    EXPECT_EQ(path.connections, 1U);
}

TEST(NeedlePath, MayHaveLostItsEndInPcsFiles) {
    VLMDesign design = test::designOf({stitch(30, 0), change(0, 0), stitch(0, 30)});
    EXPECT_EQ(needlePathOf(design).lostPoints, 0U);
    design.setDesignType("PCS");
    EXPECT_EQ(needlePathOf(design).lostPoints, 3U);
}

struct CornerRow {
    std::string name;
    std::vector<VLMStitch> stitches;
    std::size_t corners;
    std::size_t firstCorner;
};
class Corners : public testing::TestWithParam<CornerRow> {};
TEST_P(Corners, AreThoseOfTheStitches) {
    const NeedlePath path = pathOf(GetParam().stitches);
    EXPECT_EQ(path.corners, GetParam().corners);
    EXPECT_EQ(path.firstCorner, GetParam().firstCorner);
}
INSTANTIATE_TEST_SUITE_P(
    Rows, Corners,
    testing::Values(CornerRow{"OfNothing", {}, 0, 0}, CornerRow{"OfALine", {stitch(30, 0), stitch(30, 0)}, 0, 2},
                    CornerRow{"OfAnAngle", {stitch(30, 0), stitch(0, 30)}, 1, 1},
                    CornerRow{"OfALineThatTurnsBack", {stitch(30, 0), stitch(30, 0), stitch(-30, 0)}, 1, 2},
                    // The middle point lies 2 from the line between the others, or a little more.
                    CornerRow{"OfALineThatBendsALittle", {stitch(300, 0), stitch(300, 3.9F)}, 0, 2},
                    CornerRow{"OfALineThatBendsMore", {stitch(300, 0), stitch(300, 4.1F)}, 1, 1},
                    CornerRow{"OfSmallStitchesAroundAPoint",
                              {stitch(1, 0), stitch(-1, 1), stitch(1, 0), stitch(-1, 0), stitch(90, 0)},
                              0,
                              5},
                    CornerRow{"OfASquareInManyStitches",
                              {stitch(30, 0), stitch(30, 0), stitch(0, 30), stitch(0, 30), stitch(-60, 0),
                               stitch(0, -20), stitch(0, -20), stitch(0, -20)},
                              3,
                              2}),
    [](const auto& row) { return row.param.name; });

TEST(NeedlePath, MeasuresItsLines) {
    // A square of 40 with its lower left corner at (100, 0).
    for (const int pieces : {1, 2, 5}) {
        std::vector<VLMStitch> stitches{jump(100, 0)};
        for (const auto& side : {stitch(0, 40), stitch(40, 0), stitch(0, -40), stitch(-40, 0)})
            for (int piece = 0; piece < pieces; ++piece)
                stitches.push_back(
                    stitch(side.deltaX() / static_cast<float>(pieces), side.deltaY() / static_cast<float>(pieces)));
        const PathMeasure measure = pathOf(stitches).measure;
        EXPECT_DOUBLE_EQ(measure.length, 160);
        EXPECT_DOUBLE_EQ(measure.centroid.x, 120);
        EXPECT_DOUBLE_EQ(measure.centroid.y, 20);
        EXPECT_DOUBLE_EQ(measure.radius, std::sqrt(20 * 20 + 20 * 20 / 3.0));
    }
    EXPECT_EQ(pathOf({}).measure.length, 0);
}

TEST(NeedlePath, IsFiniteWhateverTheStitches) {
    std::vector<VLMDesign> designs = test::awkwardDesigns();
    designs.push_back(test::designOf(std::vector<VLMStitch>(100'000, stitch(test::largestFloat, test::largestFloat))));
    for (const VLMDesign& design : designs) {
        const NeedlePath path = needlePathOf(design);
        EXPECT_TRUE(std::isfinite(path.measure.length));
        EXPECT_TRUE(std::isfinite(path.measure.radius));
        EXPECT_TRUE(std::isfinite(path.measure.centroid.x));
    }
}

}  // namespace
}  // namespace velamo
