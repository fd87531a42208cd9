#include "velamo/editing/optimize.h"

#include <gtest/gtest.h>

#include <limits>

#include "tests/editing/step_by_step.h"
#include "velamo/editing/optimized_stitches.h"

namespace velamo {
namespace {

using namespace test;

constexpr float infinite = std::numeric_limits<float>::infinity();
constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();

struct Row {
    const char* name;
    const char* type;
    Stitches before;
    Stitches after;
};
class Optimisation : public testing::TestWithParam<Row> {};

TEST_P(Optimisation, GivesTheRow) {
    VLMDesign design;
    design.setStitches(GetParam().before);
    EXPECT_TRUE(optimizeJumpsFor(design, GetParam().type));
    EXPECT_EQ(design.stitches(), GetParam().after);
}

INSTANTIATE_TEST_SUITE_P(
    Merging, Optimisation,
    testing::Values(
        Row{"TwoJumpsAreOne", "DST", {jump(1, 2), jump(3, 4), stitch(1, 1)}, {jump(4, 6), stitch(1, 1)}},
        Row{"ChangeBehindJump", "DST", {jump(1, 2), change(0, 0)}, {jump(1, 2), change(0, 0)}},
        Row{"JumpsAroundAChange",
            "DST",
            {jump(1, 2), change(5, 5), jump(3, 4), stitch(1, 1)},
            {jump(9, 11), change(0, 0), stitch(1, 1)}},
        Row{"ChangeThatMoves", "DST", {change(5, 6), stitch(1, 1)}, {stitch(5, 6), change(0, 0), stitch(1, 1)}},
        Row{"ChangesThatMove", "DST", {change(5, 6), change(1, 1)}, {stitch(6, 7), change(0, 0), change(0, 0)}},
        Row{"JumpThatChanges", "DST", {{5, 6, true, true}}, {jump(5, 6), change(0, 0)}},
        Row{"JumpsThatCancelOut", "DST", {jump(1, 2), jump(-1, -2), stitch(1, 1)}, {stitch(1, 1)}},
        Row{"ChangeOnTheSpotStays",
            "DST",
            {stitch(1, 1), change(0, 0), stitch(1, 1)},
            {stitch(1, 1), change(0, 0), stitch(1, 1)}},
        Row{"NullStitchStays", "DST", {stitch(0, 0)}, {stitch(0, 0)}},
        Row{"JumpAtTheEndGoes", "DST", {stitch(1, 1), jump(2, 2)}, {stitch(1, 1)}},
        Row{"JumpBeforeTheLastChangeStays",
            "DST",
            {stitch(1, 1), jump(2, 2), change(0, 0), jump(1, 1)},
            {stitch(1, 1), jump(3, 3), change(0, 0)}},
        Row{"NothingButJumps", "DST", {jump(1, 1), jump(2, 2)}, {}}, Row{"NoStitches", "DST", {}, {}},
        Row{"HeadKeepsItsSelection",
            "DST",
            {stitch(1, 1), selected(jump(1, 1)), change(1, 1), selected(stitch(1, 1))},
            {stitch(1, 1), jump(2, 2), change(0, 0), selected(stitch(1, 1))}},
        Row{"SelectionWithinStays",
            "DST",
            {selected(stitch(1, 1)), selected(jump(1, 1)), jump(1, 1), selected(stitch(1, 1))},
            {selected(stitch(1, 1)), selected(jump(2, 2)), selected(stitch(1, 1))}},
        Row{"AbsorbedSelectionIsLost",
            "DST",
            {selected(stitch(1, 1)), jump(1, 1), selected(jump(1, 1)), selected(stitch(1, 1))},
            {selected(stitch(1, 1)), jump(2, 2), selected(stitch(1, 1))}}),
    [](const auto& row) { return row.param.name; });

INSTANTIATE_TEST_SUITE_P(
    Splitting, Optimisation,
    testing::Values(
        Row{"LongStitchOfDst", "DST", {stitch(300, 0)}, {stitch(120, 0), stitch(120, 0), stitch(60, 0)}},
        Row{"LimitItselfStays", "DST", {stitch(120, -120)}, {stitch(120, -120)}},
        Row{"LongStitchOfJef", "JEF", {stitch(0, -200)}, {stitch(0, -126), stitch(0, -74)}},
        Row{"LongStitchOfExp", "EXP", {stitch(127, 0)}, {stitch(126, 0), stitch(1, 0)}},
        Row{"LongStitchOfPes", "PES", {stitch(63, 0)}, {stitch(62, 0), stitch(1, 0)}},
        Row{"LongStitchOfPec", "PEC", {stitch(63, 0)}, {stitch(62, 0), stitch(1, 0)}},
        Row{"LongStitchOfPcs", "PCS", {stitch(0, 1151)}, {stitch(0, 1150), stitch(0, 1)}},
        Row{"OtherTypesSplitFarOut", "VP3", {stitch(0, 1000000)}, {stitch(0, 999999), stitch(0, 1)}},
        Row{"TypesAreTakenAsTheyStand", "dst", {stitch(300, 0)}, {stitch(300, 0)}},
        Row{"JumpOfPes",
            "PES",
            {jump(5000, 1000), stitch(1, 1)},
            {jump(2046, (1000.0F / 5000.0F) * 2046.0F), jump(2046, 409.2F), jump(908, 1000.0F - 409.2F - 409.2F),
             stitch(1, 1)}},
        Row{"RestBehindAJumpIsAJump", "PES", {jump(10, 0), stitch(100, 0)}, {jump(10, 0), stitch(62, 0), jump(38, 0)}},
        Row{"RestKeepsTheSelection",
            "DST",
            {selected(stitch(200, 0))},
            {selected(stitch(120, 0)), selected(stitch(80, 0))}}),
    [](const auto& row) { return row.param.name; });

TEST(Optimisation, CutsAlongTheWay) {
    VLMDesign design;
    design.setStitches({stitch(300, 400)});
    ASSERT_TRUE(optimizeJumpsFor(design, "DST"));
    for (const VLMStitch& piece : design.stitches()) EXPECT_FLOAT_EQ(piece.deltaX() / piece.deltaY(), 0.75F);
    EXPECT_EQ(design.stitches()[0], stitch((300.0F / 400.0F) * 120.0F, 120));
    EXPECT_FLOAT_EQ(design.xMax(), 300);
    EXPECT_FLOAT_EQ(design.yMax(), 400);
}

TEST(Optimisation, MeasuresAnew) {
    VLMDesign design;
    design.setXMax(7000);
    design.setDisplayRange({1, 1});
    design.setStitches({stitch(10, 20), stitch(5, -30), stitch(-40, 0)});
    EXPECT_TRUE(optimizeJumpsFor(design, "DST"));
    EXPECT_EQ(boundsOf(design), (Bounds{-25, -10, 15, 20}));
    EXPECT_EQ(design.displayRange(), (StitchRange{0, 3}));
}

TEST(Optimisation, LeavesNoBoundsWithoutStitches) {
    VLMDesign design;
    design.setDisplayRange({1, 2});
    EXPECT_TRUE(optimizeJumpsFor(design, "DST"));
    EXPECT_EQ(boundsOf(design), noBounds);
    EXPECT_EQ(design.displayRange(), StitchRange{});
}

TEST(Optimisation, ChangesTheListThatOthersShare) {
    VLMDesign design;
    design.setStitches({jump(1, 1), jump(1, 1), stitch(1, 1)});
    const StitchList shared = design.stitches();
    EXPECT_TRUE(optimizeJumpsFor(design, "DST"));
    EXPECT_EQ(shared.size(), 2U);
}

class Refusal : public testing::TestWithParam<std::pair<const char*, Stitches>> {};

TEST_P(Refusal, ChangesNothing) {
    VLMDesign design;
    design.setStitches(GetParam().second);
    design.setXMax(7);
    design.setDisplayRange({1, 2});
    EXPECT_FALSE(optimizeJumpsFor(design, "DST"));
    ASSERT_EQ(design.stitches().size(), GetParam().second.size());
    EXPECT_TRUE(design.stitches()[0].isJumpStitch());
    EXPECT_TRUE(design.stitches()[1].isJumpStitch());
    EXPECT_EQ(design.xMax(), 7);
    EXPECT_EQ(design.displayRange(), (StitchRange{1, 2}));
}

INSTANTIATE_TEST_SUITE_P(
    Rows, Refusal,
    testing::Values(std::pair{"Infinite", Stitches{jump(1, 1), jump(1, 1), stitch(infinite, 0)}},
                    std::pair{"NotANumber", Stitches{jump(1, 1), jump(1, 1), stitch(0, notANumber)}},
                    std::pair{"SumOverflows", Stitches{jump(largestFloat, 0), jump(largestFloat, 1), stitch(1, 1)}},
                    std::pair{"LimitIsLostInTheMove", Stitches{jump(1, 1), jump(1, 1), stitch(1e20F, 0)}}),
    [](const auto& row) { return row.param.first; });

/// The bound is far above any real design, so a smaller one is looked at: three pieces each, and a fourth stitch.
TEST(Refusal, OfMoreStitchesThanAListMayHave) {
    const Stitches long3{stitch(300, 0), jump(0, 300), stitch(-300, 0)};
    const auto isDone = [&long3](std::size_t mostStitches) {
        VLMDesign design;
        OptimizedStitches optimized("DST", long3.size(), mostStitches);
        for (const VLMStitch& stitch : long3) optimized.push_back(stitch);
        const bool isReplaced = optimized.replaceStitchesOf(design);
        EXPECT_EQ(design.stitches().size(), isReplaced ? 9U : 0U);
        return isReplaced;
    };
    EXPECT_TRUE(isDone(9));
    EXPECT_FALSE(isDone(8));
    EXPECT_FALSE(isDone(1));
    EXPECT_TRUE(isDone(OptimizedStitches::mostOf(3)));
}

/// A hundred jumps with a stitch behind each, which are cut into so many pieces each.
Stitches jumpsOfPieces(int pieces) {
    Stitches stitches;
    for (int i = 0; i < 100; ++i) {
        stitches.push_back(jump(120.0F * static_cast<float>(i % 2 == 0 ? pieces : -pieces), 0));
        stitches.push_back(stitch(1, 1));
    }
    return stitches;
}

TEST(Refusal, OfFarMoreStitchesThanThereWere) {
    VLMDesign design;
    design.setStitches(jumpsOfPieces(5000));
    EXPECT_TRUE(optimizeJumpsFor(design, "DST"));
    EXPECT_EQ(design.stitches().size(), 100U * 5001);
    design.setStitches(jumpsOfPieces(6000));
    EXPECT_FALSE(optimizeJumpsFor(design, "DST"));
    EXPECT_EQ(design.stitches().size(), 200U);
}

TEST(Refusal, NotOfLongStitchesHoweverManyThereAre) {
    VLMDesign design;
    design.setStitches(Stitches(300000, stitch(480, 0)));
    EXPECT_TRUE(optimizeJumpsFor(design, "DST"));
    EXPECT_EQ(design.stitches().size(), 1200000U);
}

TEST(Refusal, OfOneMoveOfBillionsOfPieces) {
    VLMDesign design;
    OptimizedStitches optimized("DST", 1, 1000);
    optimized.push_back(stitch(120.0F * 2000, 0));
    EXPECT_FALSE(optimized.replaceStitchesOf(design));
}

TEST(Trimming, TakesJumpsOffBothEnds) {
    VLMDesign design;
    design.setSelectionActive(true);
    design.setStitches({stitch(1, 1), selected(jump(1, 1)), selected(change(1, 1)), selected(stitch(1, 1)),
                        selected(jump(1, 1)), selected(stitch(1, 1)), selected(jump(1, 1)), stitch(1, 1)});
    EXPECT_TRUE(trimSelectedJumps(design));
    EXPECT_EQ(design.stitches(), (Stitches{stitch(1, 1), jump(1, 1), change(1, 1), selected(stitch(1, 1)),
                                           selected(jump(1, 1)), selected(stitch(1, 1)), jump(1, 1), stitch(1, 1)}));
    EXPECT_FALSE(trimSelectedJumps(design));
}

TEST(Trimming, StopsAtTheEndsOfTheList) {
    VLMDesign design;
    design.setSelectionActive(true);
    design.setStitches({selected(jump(1, 1)), selected(jump(1, 1))});
    EXPECT_TRUE(trimSelectedJumps(design));
    EXPECT_EQ(design.stitches(), (Stitches{jump(1, 1), jump(1, 1)}));
    EXPECT_TRUE(design.selectionActive());
}

TEST(Trimming, LooksForTheLastSelectedStitchBehindTheFirstPass) {
    VLMDesign design;
    design.setStitches({selected(jump(1, 1)), stitch(1, 1), selected(jump(2, 2)), stitch(1, 1)});
    EXPECT_TRUE(trimSelectedJumps(design));
    EXPECT_EQ(design.stitches(), (Stitches{jump(1, 1), stitch(1, 1), jump(2, 2), stitch(1, 1)}));
}

TEST(Trimming, LeavesStitchesAndNothingAlone) {
    VLMDesign design;
    EXPECT_FALSE(trimSelectedJumps(design));
    design.setStitches({selected(stitch(1, 1)), jump(1, 1)});
    EXPECT_FALSE(trimSelectedJumps(design));
    EXPECT_EQ(design.stitches(), (Stitches{selected(stitch(1, 1)), jump(1, 1)}));
}

TEST(Optimisation, IsWhatItIsStepByStep) {
    std::mt19937 random(20260401);
    for (int turn = 0; turn < 5000 && !testing::Test::HasFailure(); ++turn) {
        VLMDesign design = randomDesign(random);
        VLMDesign expected = design.copy();
        const std::string type = *design.designType();
        optimizeStepByStep(expected, type);
        ASSERT_TRUE(optimizeJumpsFor(design, type));
        SCOPED_TRACE(turn);
        expectSame(design, expected);
        ASSERT_TRUE(optimizeJumpsFor(design, type));
        for (const VLMStitch& stitch : design.stitches()) EXPECT_TRUE(!stitch.isColorChange() || stitch.isNullStitch());
    }
}

}  // namespace
}  // namespace velamo
