// Every edit makes its new list in one pass; here each is compared with what it is step by step, and its promises are
// held against designs made by chance.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>

#include "tests/editing/step_by_step.h"
#include "velamo/editing/selection.h"
#include "velamo/editing/stitch_edits.h"
#include "velamo/editing/transform.h"

namespace velamo {
namespace {

using namespace test;

/// An edit with numbers of its own, made by chance, in both forms.
struct Edit {
    std::function<bool(VLMDesign&)> edit;
    std::function<void(VLMDesign&)> steps;
};

struct Row {
    const char* name;
    Edit (*make)(std::mt19937& random, const VLMDesign& design);
};

int number(std::mt19937& random, int least, int most) {
    return std::uniform_int_distribution(least, most)(random);
}

DesignPoint middleOf(const VLMDesign& design) {
    const DesignRect rect = selectionRect(design);
    return {rect.x + rect.width * 0.5, rect.y + rect.height * 0.5};
}

Edit makeMove(std::mt19937& random, const VLMDesign&) {
    std::uniform_real_distribution<double> reach(-500, 500);
    const DesignPoint vector{reach(random), reach(random)};
    return {[vector](VLMDesign& design) { return moveSelectionByVectorerror(design, vector, nullptr); },
            [vector](VLMDesign& design) { moveStepByStep(design, vector); }};
}

auto turnAbout(DesignPoint middle, double radians) {
    const double cosine = double{static_cast<float>(std::cos(radians))};
    const double sine = double{static_cast<float>(std::sin(radians))};
    return [=](DesignPoint point) {
        const double x = point.x - middle.x;
        const double y = point.y - middle.y;
        return DesignPoint{cosine * x - sine * y + middle.x, y * cosine + x * sine + middle.y};
    };
}

Edit makeRotation(std::mt19937& random, const VLMDesign&) {
    const int degrees = number(random, -400, 400);
    const double radians = degrees * 0.017453292519943295;
    return {[=](VLMDesign& design) { return rotateSelectionByDegreeserror(design, degrees, nullptr); },
            [=](VLMDesign& design) {
                const DesignPoint middle = middleOf(design);
                transformStepByStep(design, turnAbout(middle, radians), turnAbout(middle, -radians));
            }};
}

Edit makeResizing(std::mt19937& random, const VLMDesign&) {
    const float factor = std::uniform_real_distribution<float>(0.2F, 3)(random);
    return {[=](VLMDesign& design) { return resizeSelectionByPercenterror(design, factor, nullptr); },
            [=](VLMDesign& design) {
                const DesignPoint c = middleOf(design);
                const double f = double{factor};
                transformStepByStep(
                    design,
                    [=](DesignPoint p) {
                        return DesignPoint{(p.x - c.x) * f + c.x, (p.y - c.y) * f + c.y};
                    },
                    [=](DesignPoint p) {
                        return DesignPoint{(p.x - c.x) / f + c.x, (p.y - c.y) / f + c.y};
                    });
            }};
}

Edit makeFlip(std::mt19937& random, const VLMDesign&) {
    const bool isVertical = number(random, 0, 1) == 1;
    return {[=](VLMDesign& design) { return flipSelectionerror(design, isVertical ? "V" : "H", nullptr); },
            [=](VLMDesign& design) {
                const DesignPoint c = middleOf(design);
                const auto flip = [=](DesignPoint p) {
                    return isVertical ? DesignPoint{2 * c.x - p.x, p.y} : DesignPoint{p.x, 2 * c.y - p.y};
                };
                transformStepByStep(design, flip, flip);
            }};
}

Edit makeCentering(std::mt19937&, const VLMDesign&) {
    return {[](VLMDesign& design) { return centerDesign(design); }, centerStepByStep};
}

Edit makeDeletion(std::mt19937&, const VLMDesign&) {
    return {[](VLMDesign& design) { return deleteSelection(design); }, deleteSelectionStepByStep};
}

Edit makeSwitch(std::mt19937& random, const VLMDesign&) {
    const bool toJumps = number(random, 0, 1) == 1;
    return {[=](VLMDesign& design) { return switchSelectionToJumpserror(design, toJumps, nullptr); },
            [=](VLMDesign& design) { switchToJumpsStepByStep(design, toJumps); }};
}

Edit makeThreadInsertion(std::mt19937&, const VLMDesign&) {
    return {[](VLMDesign& design) { return insertThreadBeforeSelection(design); }, insertThreadStepByStep};
}

Edit makeThreadDeletion(std::mt19937& random, const VLMDesign& design) {
    const int index = number(random, -1, design.numberOfThreads());
    return {[=](VLMDesign& changed) { return deleteThreadAtIndexerror(changed, index, nullptr); },
            [=](VLMDesign& changed) { deleteThreadStepByStep(changed, index); }};
}

Edit makeThreadMove(std::mt19937& random, const VLMDesign& design) {
    const int from = number(random, -1, design.numberOfThreads());
    const int to = number(random, -1, design.numberOfThreads());
    return {[=](VLMDesign& changed) { return moveThreadFromIndextoIndexerror(changed, from, to, nullptr); },
            [=](VLMDesign& changed) { moveThreadStepByStep(changed, from, to); }};
}

Edit makeJumpInsertion(std::mt19937& random, const VLMDesign& design) {
    const int index = number(random, 0, static_cast<int>(design.stitches().size()));
    const DesignPoint vector{number(random, -50, 50) * 0.3, number(random, -50, 50) * 0.7};
    return {[=](VLMDesign& changed) {
                insertJumpatIndex(changed, vector, index);
                return true;
            },
            [=](VLMDesign& changed) {
                insertJumpStepByStep(changed.stitches().all(), vector, static_cast<std::size_t>(index));
            }};
}

class RandomEdits : public testing::TestWithParam<Row> {};

TEST_P(RandomEdits, AreWhatTheyAreStepByStep) {
    std::mt19937 random(20260402);
    for (int turn = 0; turn < 3000 && !HasFailure(); ++turn) {
        VLMDesign design = randomDesign(random);
        const bool isOptimized = turn % 2 == 1 || optimizeJumpsFor(design, *design.designType());
        ASSERT_TRUE(isOptimized);
        VLMDesign expected = design.copy();
        const Edit edit = GetParam().make(random, design);
        ASSERT_TRUE(edit.edit(design));
        edit.steps(expected);
        SCOPED_TRACE(turn);
        expectSame(design, expected);
    }
}

INSTANTIATE_TEST_SUITE_P(Each, RandomEdits,
                         testing::Values(Row{"Move", makeMove}, Row{"Rotation", makeRotation},
                                         Row{"Resizing", makeResizing}, Row{"Flip", makeFlip},
                                         Row{"Centering", makeCentering}, Row{"Deletion", makeDeletion},
                                         Row{"Switch", makeSwitch}, Row{"ThreadInsertion", makeThreadInsertion},
                                         Row{"ThreadDeletion", makeThreadDeletion}, Row{"ThreadMove", makeThreadMove},
                                         Row{"JumpInsertion", makeJumpInsertion}),
                         [](const auto& row) { return row.param.name; });

/// Of a type without short moves and optimised, so that an edit leaves what it does not touch in as many stitches.
VLMDesign randomPicture(std::mt19937& random) {
    VLMDesign design = randomDesign(random);
    design.setDesignType("VP3");
    EXPECT_TRUE(optimizeJumpsFor(design, "VP3"));
    return design;
}

/// What a turn makes of a stitch on the spot may be a hair's breadth long.
bool isTiny(const VLMStitch& stitch) {
    return std::abs(stitch.deltaX()) < 0.01F && std::abs(stitch.deltaY()) < 0.01F;
}

/// Where the sewn stitches lie that are, or are not, selected.
std::vector<DesignPoint> sewnPlaces(const VLMDesign& design, bool ofSelected) {
    std::vector<DesignPoint> places;
    DesignPoint start;
    for (const VLMStitch& stitch : design.stitches()) {
        const DesignPoint end = sumOf(start, stitch);
        const bool isSewn = !isJumpOrChange(stitch) && !isTiny(stitch);
        if (isSewn && stitch.isSelected() == ofSelected) {
            places.push_back(start);
            places.push_back(end);
        }
        start = end;
    }
    return places;
}

void expectNear(const std::vector<DesignPoint>& places, const std::vector<DesignPoint>& expected) {
    ASSERT_EQ(places.size(), expected.size());
    for (std::size_t i = 0; i < places.size(); ++i) {
        EXPECT_NEAR(places[i].x, expected[i].x, 0.2) << i;
        EXPECT_NEAR(places[i].y, expected[i].y, 0.2) << i;
    }
}

class Transforms : public testing::TestWithParam<Row> {};

TEST_P(Transforms, LeaveTheOthersInTheirPlaces) {
    std::mt19937 random(20260403);
    for (int turn = 0; turn < 500 && !HasFailure(); ++turn) {
        VLMDesign design = randomPicture(random);
        const auto before = sewnPlaces(design, false);
        ASSERT_TRUE(GetParam().make(random, design).edit(design));
        SCOPED_TRACE(turn);
        expectNear(sewnPlaces(design, false), before);
    }
}

INSTANTIATE_TEST_SUITE_P(Each, Transforms,
                         testing::Values(Row{"Move", makeMove}, Row{"Rotation", makeRotation},
                                         Row{"Resizing", makeResizing}, Row{"Flip", makeFlip},
                                         Row{"Deletion", makeDeletion}),
                         [](const auto& row) { return row.param.name; });

struct ThereAndBack {
    const char* name;
    std::vector<std::function<bool(VLMDesign&)>> edits;
};
/// With sewn stitches selected only: jumps at the ends of selected runs are merged with those that the edit inserts,
/// and lose their selection, so that it has another middle afterwards.
VLMDesign randomSelectedStitches(std::mt19937& random) {
    VLMDesign design = randomPicture(random);
    for (std::size_t i = 0; i < design.stitches().size(); ++i)
        if (isJumpOrChange(design.stitches()[i])) design.stitches()[i].setIsSelected(false);
    return design;
}

class Returning : public testing::TestWithParam<ThereAndBack> {};

TEST_P(Returning, GivesThePictureBack) {
    std::mt19937 random(20260404);
    for (int turn = 0; turn < 500 && !HasFailure(); ++turn) {
        VLMDesign design = randomSelectedStitches(random);
        const auto selected = sewnPlaces(design, true);
        const auto others = sewnPlaces(design, false);
        for (const auto& edit : GetParam().edits) ASSERT_TRUE(edit(design));
        SCOPED_TRACE(turn);
        expectNear(sewnPlaces(design, true), selected);
        expectNear(sewnPlaces(design, false), others);
    }
}

bool turnRight(VLMDesign& design) {
    return rotateSelectionByDegreeserror(design, -90, nullptr);
}
bool mirrorLeftRight(VLMDesign& design) {
    return flipSelectionerror(design, "V", nullptr);
}
bool mirrorUpDown(VLMDesign& design) {
    return flipSelectionerror(design, "H", nullptr);
}
bool moveThere(VLMDesign& design) {
    return moveSelectionByVectorerror(design, {123.5, -77.25}, nullptr);
}
bool moveBack(VLMDesign& design) {
    return moveSelectionByVectorerror(design, {-123.5, 77.25}, nullptr);
}

INSTANTIATE_TEST_SUITE_P(Each, Returning,
                         testing::Values(ThereAndBack{"FourTurns", {turnRight, turnRight, turnRight, turnRight}},
                                         ThereAndBack{"TwoFlipsV", {mirrorLeftRight, mirrorLeftRight}},
                                         ThereAndBack{"TwoFlipsH", {mirrorUpDown, mirrorUpDown}},
                                         ThereAndBack{"MoveThereAndBack", {moveThere, moveBack}}),
                         [](const auto& row) { return row.param.name; });

class ThreadKeeping : public testing::TestWithParam<Row> {};

/// One more than the colour changes; a design without stitches has none. A first block that is empty is left out:
/// moving a block joins it to the next.
TEST_P(ThreadKeeping, LeavesAThreadForEachBlock) {
    std::mt19937 random(20260405);
    for (int turn = 0; turn < 1000 && !HasFailure(); ++turn) {
        VLMDesign design = randomPicture(random);
        if (!design.stitches().empty() && design.stitches()[0].isColorChange()) continue;
        ASSERT_TRUE(GetParam().make(random, design).edit(design));
        const auto changes = std::count_if(design.stitches().begin(), design.stitches().end(),
                                           [](const VLMStitch& stitch) { return stitch.isColorChange(); });
        if (design.stitches().empty()) continue;
        EXPECT_EQ(design.numberOfThreads(), changes + 1) << turn;
    }
}

INSTANTIATE_TEST_SUITE_P(Each, ThreadKeeping,
                         testing::Values(Row{"Move", makeMove}, Row{"Rotation", makeRotation},
                                         Row{"Resizing", makeResizing}, Row{"Flip", makeFlip},
                                         Row{"Centering", makeCentering}, Row{"Deletion", makeDeletion},
                                         Row{"Switch", makeSwitch}, Row{"ThreadMove", makeThreadMove}),
                         [](const auto& row) { return row.param.name; });

}  // namespace
}  // namespace velamo
