#include "velamo/model/needle_walk.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

#include "tests/support/stitches.h"

namespace velamo {
namespace {

using test::change;
using test::jump;
using test::stitch;

std::vector<NeedleMove> movesOf(const std::vector<VLMStitch>& stitches) {
    std::vector<NeedleMove> moves;
    moves.reserve(stitches.size());
    NeedleWalk walk;
    for (const VLMStitch& each : stitches) {
        EXPECT_EQ(walk.stitch(), moves.size());
        moves.push_back(walk.take(each));
    }
    return moves;
}

template <class Value>
std::vector<Value> each(const std::vector<NeedleMove>& moves, Value NeedleMove::*field) {
    std::vector<Value> values;
    values.reserve(moves.size());
    for (const NeedleMove& move : moves) values.push_back(move.*field);
    return values;
}

using testing::ElementsAre;

/// The first stitch of all, and the first behind a jump or a change of the thread, only bring the needle down.
TEST(NeedleWalk, TellsWhatIsSewn) {
    const auto moves = movesOf({stitch(1, 0), stitch(2, 0), jump(9, 9), stitch(3, 0), stitch(0, 0), change(0, 0),
                                stitch(4, 0), stitch(5, 0), jump(1, 1)});
    EXPECT_THAT(each(moves, &NeedleMove::isSewn),
                ElementsAre(false, true, false, false, true, true, false, true, false));
    EXPECT_THAT(each(moves, &NeedleMove::stitch), ElementsAre(0U, 1U, 2U, 3U, 4U, 5U, 6U, 7U, 8U));
}

TEST(NeedleWalk, CountsBlocks) {
    const auto moves = movesOf({stitch(1, 0), change(0, 0), change(2, 0), stitch(1, 0)});
    EXPECT_THAT(each(moves, &NeedleMove::thread), ElementsAre(0U, 1U, 2U, 2U));
    EXPECT_THAT(each(moves, &NeedleMove::startsBlock), ElementsAre(true, true, true, false));
    EXPECT_THAT(each(movesOf({change(0, 0), stitch(1, 0)}), &NeedleMove::thread), ElementsAre(0U, 0U));
}

TEST(NeedleWalk, FollowsTheNeedle) {
    const auto moves = movesOf({stitch(1, 2), jump(-4, 0.5F), stitch(0, 0)});
    EXPECT_THAT(each(moves, &NeedleMove::start),
                ElementsAre(DesignPoint{0, 0}, DesignPoint{1, 2}, DesignPoint{-3, 2.5}));
    EXPECT_THAT(each(moves, &NeedleMove::end),
                ElementsAre(DesignPoint{1, 2}, DesignPoint{-3, 2.5}, DesignPoint{-3, 2.5}));
}

TEST(NeedleWalk, GoesOnFromACopy) {
    NeedleWalk walk;
    walk.take(stitch(1, 0));
    NeedleWalk copy = walk;
    const NeedleMove move = copy.take(stitch(2, 0));
    EXPECT_TRUE(move.isSewn);
    EXPECT_EQ(move.stitch, 1U);
    EXPECT_EQ(move.end, (DesignPoint{3, 0}));
    EXPECT_EQ(walk.stitch(), 1U);
}

}  // namespace
}  // namespace velamo
