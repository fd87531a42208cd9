#include "velamo/editing/stitch_edits.h"

#include <gtest/gtest.h>

#include "tests/support/stitches.h"

namespace velamo {
namespace {

using namespace test;
using Stitches = std::vector<VLMStitch>;
using Keys = std::vector<Text>;

TEST(InsertingAJump, TiesTheFirstStitch) {
    VLMDesign design = designOf({stitch(10, 0)});
    EXPECT_EQ(insertJumpatIndex(design, {0.1, 2}, 0), 2);
    EXPECT_EQ(design.stitches(), (Stitches{jump(0.1F, 2), stitch(0, 0), stitch(10, 0)}));
}

struct JumpRow {
    const char* name;
    Stitches before;
    int index;
    int newIndex;
    Stitches after;
};
class InsertingAJumpAt : public testing::TestWithParam<JumpRow> {};
TEST_P(InsertingAJumpAt, GivesTheRow) {
    VLMDesign design = designOf(GetParam().before);
    EXPECT_EQ(insertJumpatIndex(design, {1, 2}, GetParam().index), GetParam().newIndex);
    EXPECT_EQ(design.stitches(), GetParam().after);
}
const Stitches two{stitch(3, 3), stitch(4, 4)};
INSTANTIATE_TEST_SUITE_P(
    Rows, InsertingAJumpAt,
    testing::Values(
        JumpRow{"TheEnd", two, 2, 2, two}, JumpRow{"NegativeIndex", two, -1, -1, two},
        JumpRow{"InTheMiddle", two, 1, 3, {stitch(3, 3), jump(1, 2), stitch(0, 0), stitch(4, 4)}},
        JumpRow{"TieTakesTheSelection",
                {stitch(3, 3), selected(stitch(4, 4))},
                1,
                3,
                {stitch(3, 3), jump(1, 2), selected(stitch(0, 0)), selected(stitch(4, 4))}},
        JumpRow{"BehindAJump", {jump(3, 3), stitch(4, 4)}, 1, 2, {jump(3, 3), jump(1, 2), stitch(4, 4)}},
        JumpRow{"BeforeAJump", {stitch(3, 3), jump(4, 4)}, 1, 2, {stitch(3, 3), jump(1, 2), jump(4, 4)}},
        JumpRow{"BeforeAStitchOnTheSpot", {stitch(3, 3), stitch(0, 0)}, 1, 2, {stitch(3, 3), jump(1, 2), stitch(0, 0)}},
        JumpRow{"BeforeAChangeThatMoves",
                {stitch(3, 3), change(4, 4)},
                1,
                3,
                {stitch(3, 3), jump(1, 2), stitch(0, 0), change(4, 4)}}),
    [](const auto& row) { return row.param.name; });

struct DeletionRow {
    const char* name;
    Stitches before;
    Stitches after;
    Keys keys;
};
class Deleting : public testing::TestWithParam<DeletionRow> {};
TEST_P(Deleting, GivesTheRow) {
    VLMDesign design = designOf(GetParam().before);
    EXPECT_TRUE(deleteSelection(design));
    EXPECT_EQ(design.stitches(), GetParam().after);
    EXPECT_EQ(keysOf(design), GetParam().keys);
    EXPECT_TRUE(design.selectionActive());
}
INSTANTIATE_TEST_SUITE_P(
    Rows, Deleting,
    testing::Values(
        DeletionRow{"GapIsBridged",
                    {stitch(1, 0), selected(stitch(2, 0)), selected(stitch(3, 0)), stitch(4, 0)},
                    {stitch(1, 0), jump(5, 0), stitch(0, 0), stitch(4, 0)},
                    {"1"}},
        DeletionRow{"EndNeedsNoBridge", {stitch(1, 0), selected(stitch(2, 0))}, {stitch(1, 0)}, {"1"}},
        DeletionRow{"ChangeStaysOnTheSpot",
                    {stitch(1, 0), selected(change(2, 0)), selected(stitch(3, 0)), stitch(4, 0)},
                    {stitch(1, 0), jump(5, 0), change(0, 0), stitch(0, 0), stitch(4, 0)},
                    {"1", "2"}},
        DeletionRow{
            "MiddleBlockGoesWithItsThread",
            {stitch(1, 0), change(0, 0), selected(stitch(2, 0)), selected(stitch(3, 0)), change(0, 0), stitch(4, 0)},
            {stitch(1, 0), jump(5, 0), change(0, 0), stitch(4, 0)},
            {"1", "3"}},
        DeletionRow{"FirstBlockGoesWithItsThread",
                    {selected(stitch(1, 0)), change(0, 0), stitch(2, 0), change(0, 0), stitch(4, 0)},
                    {jump(1, 0), stitch(2, 0), change(0, 0), stitch(4, 0)},
                    {"2", "3"}},
        DeletionRow{
            "LastBlockGoesWithItsThread", {stitch(1, 0), change(0, 0), selected(stitch(2, 0))}, {stitch(1, 0)}, {"1"}},
        DeletionRow{"EmptyChangeThatMovesJoinsTheBlockBefore",
                    {stitch(1, 0), change(2, 0), selected(stitch(3, 0))},
                    {stitch(1, 0), stitch(2, 0)},
                    {"1"}},
        DeletionRow{"TwoEmptyBlocksGo",
                    {stitch(1, 0), change(0, 0), selected(stitch(2, 0)), change(0, 0), selected(stitch(3, 0)),
                     change(0, 0), stitch(4, 0)},
                    {stitch(1, 0), jump(5, 0), change(0, 0), stitch(4, 0)},
                    {"1", "4"}}),
    [](const auto& row) { return row.param.name; });

TEST(Deleting, EverythingLeavesASquareToDrawOn) {
    VLMDesign design = designOf({selected(stitch(1, 0)), selected(change(0, 0)), selected(stitch(2, 0))});
    EXPECT_TRUE(deleteSelection(design));
    EXPECT_TRUE(design.stitches().empty());
    EXPECT_TRUE(design.threads().empty());
    EXPECT_EQ(boundsOf(design), (Bounds{-100, -100, 100, 100}));
    EXPECT_EQ(design.displayRange(), StitchRange{});
}

TEST(Switching, MakesJumpsAndStitches) {
    VLMDesign design = designOf({stitch(1, 0), selected(stitch(2, 0)), selected(stitch(3, 0)), stitch(4, 0)});
    EXPECT_TRUE(switchSelectionToJumpserror(design, true, nullptr));
    EXPECT_EQ(design.stitches(), (Stitches{stitch(1, 0), jump(5, 0), stitch(4, 0)}));
    design = designOf({stitch(1, 0), selected(jump(2, 0)), stitch(4, 0)});
    EXPECT_TRUE(switchSelectionToJumpserror(design, false, nullptr));
    EXPECT_EQ(design.stitches(), (Stitches{stitch(1, 0), selected(stitch(2, 0)), stitch(4, 0)}));
}

TEST(SplittingABlock, BeginsAnotherOfTheSameThread) {
    VLMDesign design =
        designOf({stitch(1, 0), change(0, 0), stitch(2, 0), selected(stitch(0, 0)), selected(stitch(3, 0))});
    EXPECT_TRUE(insertThreadBeforeSelection(design));
    EXPECT_EQ(design.stitches(),
              (Stitches{stitch(1, 0), change(0, 0), stitch(2, 0), change(0, 0), selected(stitch(3, 0))}));
    EXPECT_EQ(keysOf(design), (Keys{"1", "2", "2"}));
}

TEST(SplittingABlock, NeedsAnActiveSelection) {
    VLMDesign design = designOf({jump(1, 0), jump(1, 0), selected(stitch(3, 0))});
    design.setSelectionActive(false);
    EXPECT_TRUE(insertThreadBeforeSelection(design));
    EXPECT_EQ(design.stitches().size(), 3U);
    design.setSelectionActive(true);
    design.stitches()[2].setIsSelected(false);
    EXPECT_TRUE(insertThreadBeforeSelection(design));
    EXPECT_EQ(design.stitches(), (Stitches{jump(2, 0), stitch(3, 0)}));
    EXPECT_EQ(keysOf(design), (Keys{"1"}));
}

TEST(SplittingABlock, WithoutAThreadIsRefused) {
    VLMDesign design = designOf({stitch(1, 0), change(0, 0), selected(stitch(2, 0))});
    design.threads().all().pop_back();
    VLMError error;
    EXPECT_FALSE(insertThreadBeforeSelection(design, &error));
    EXPECT_EQ(error.code, 72);
    EXPECT_EQ(design.stitches(), (Stitches{stitch(1, 0), change(0, 0), selected(stitch(2, 0))}));
    EXPECT_EQ(keysOf(design), (Keys{"1"}));
}

const Stitches threeBlocks{stitch(0, 0), stitch(1, 0), change(0, 0), stitch(0, 2), change(0, 0), stitch(3, 3)};

TEST(DeletingAThread, JoinsItsBlockToTheOneBefore) {
    VLMDesign design = designOf(threeBlocks);
    EXPECT_TRUE(deleteThreadAtIndexerror(design, 1, nullptr));
    EXPECT_EQ(design.stitches(),
              (Stitches{stitch(0, 0), stitch(1, 0), stitch(0, 0), stitch(0, 2), change(0, 0), stitch(3, 3)}));
    EXPECT_EQ(keysOf(design), (Keys{"1", "3"}));
}

TEST(DeletingAThread, TheFirstLeavesTheChanges) {
    VLMDesign design = designOf(threeBlocks);
    EXPECT_TRUE(deleteThreadAtIndexerror(design, 0, nullptr));
    EXPECT_EQ(design.stitches(), threeBlocks);
    EXPECT_EQ(keysOf(design), (Keys{"2", "3"}));
}

TEST(DeletingAThread, OutOfRangeDoesNothing) {
    for (const int index : {-1, 3}) {
        VLMDesign design = designOf({jump(1, 0), jump(1, 0), change(0, 0), change(0, 0)});
        EXPECT_TRUE(deleteThreadAtIndexerror(design, index, nullptr));
        EXPECT_EQ(design.stitches().size(), 4U);
        EXPECT_EQ(keysOf(design), (Keys{"1", "2", "3"}));
    }
}

struct MoveRow {
    const char* name;
    int from;
    int to;
    Stitches after;
    Keys keys;
};
class MovingAThread : public testing::TestWithParam<MoveRow> {};
TEST_P(MovingAThread, GivesTheRow) {
    VLMDesign design = designOf(threeBlocks);
    EXPECT_TRUE(moveThreadFromIndextoIndexerror(design, GetParam().from, GetParam().to, nullptr));
    EXPECT_EQ(design.stitches(), GetParam().after);
    EXPECT_EQ(keysOf(design), GetParam().keys);
}
INSTANTIATE_TEST_SUITE_P(Rows, MovingAThread,
                         testing::Values(MoveRow{"LastToTheFront",
                                                 2,
                                                 0,
                                                 {jump(1, 2), stitch(0, 0), stitch(3, 3), jump(-4, -5), change(0, 0),
                                                  stitch(1, 0), change(0, 0), stitch(0, 2)},
                                                 {"3", "1", "2"}},
                                         MoveRow{"FirstToTheEnd",
                                                 0,
                                                 2,
                                                 {jump(1, 0), stitch(0, 0), stitch(0, 2), change(0, 0), stitch(3, 3),
                                                  jump(-4, -5), change(0, 0), stitch(1, 0)},
                                                 {"2", "3", "1"}},
                                         MoveRow{"MiddleToTheEnd",
                                                 1,
                                                 2,
                                                 {stitch(0, 0), stitch(1, 0), jump(0, 2), change(0, 0), stitch(0, 0),
                                                  stitch(3, 3), jump(-3, -5), change(0, 0), stitch(0, 2)},
                                                 {"1", "3", "2"}},
                                         MoveRow{"ToItself", 1, 1, threeBlocks, {"1", "2", "3"}},
                                         MoveRow{"FromNowhere", 3, 0, threeBlocks, {"1", "2", "3"}},
                                         MoveRow{"FromBelow", -1, 0, threeBlocks, {"1", "2", "3"}},
                                         MoveRow{"ToNowhere", 0, 3, threeBlocks, {"1", "2", "3"}},
                                         MoveRow{"ToBelow", 0, -1, threeBlocks, {"1", "2", "3"}}),
                         [](const auto& row) { return row.param.name; });

TEST(MovingAThread, WithoutStitchesChangesNothing) {
    VLMDesign design = designOf({change(0, 0), stitch(1, 0), change(0, 0), stitch(2, 0)});
    EXPECT_TRUE(moveThreadFromIndextoIndexerror(design, 0, 2, nullptr));
    EXPECT_EQ(design.stitches(), (Stitches{change(0, 0), stitch(1, 0), change(0, 0), stitch(2, 0)}));
    EXPECT_EQ(keysOf(design), (Keys{"1", "2", "3"}));
}

}  // namespace
}  // namespace velamo
