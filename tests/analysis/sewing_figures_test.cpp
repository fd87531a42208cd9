#include "velamo/analysis/sewing_figures.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/designs.h"
#include "tests/support/stitches.h"

namespace velamo {
namespace {

using test::change;
using test::jump;
using test::sewn;
using test::stitch;

std::vector<VLMStitch> jumps(int count) {
    return std::vector<VLMStitch>(static_cast<std::size_t>(count), jump(10, 0));
}

std::vector<VLMStitch> joined(const std::vector<std::vector<VLMStitch>>& parts) {
    std::vector<VLMStitch> all;
    for (const auto& part : parts) all.insert(all.end(), part.begin(), part.end());
    return all;
}

const std::vector<VLMStitch> sewing{stitch(0, 0), stitch(30, 40)};

struct FigureRow {
    std::string name;
    std::vector<VLMStitch> stitches;
    SewingFigures figures;
};
class Figures : public testing::TestWithParam<FigureRow> {};
TEST_P(Figures, AreThoseOfTheStitches) {
    EXPECT_EQ(sewingFiguresOf(sewn(GetParam().stitches)), GetParam().figures);
}
INSTANTIATE_TEST_SUITE_P(
    Rows, Figures,
    testing::Values(
        FigureRow{"OfNothing", {}, {}},
        FigureRow{"OfJumpsAlone", jumps(5), {.jumps = 5, .trims = 0, .blocks = {}, .sewnLength = 0}},
        // The needle goes down where the first stitch ends: no thread leads there.
        FigureRow{"OfTwoStitches", sewing, {0, 0, {{0, 2, 50}}, 50}},
        FigureRow{"OfTwoBlocks", joined({sewing, {change(5, 5)}, sewing}), {0, 0, {{0, 2, 50}, {1, 2, 50}}, 100}},
        // Many programs end a design with a change to no thread.
        FigureRow{"OfAChangeAtTheEnd", joined({sewing, {change(0, 0)}}), {0, 0, {{0, 2, 50}}, 50}},
        FigureRow{"OfABlockWithoutStitches",
                  joined({sewing, {change(0, 0), change(0, 0)}, sewing}),
                  {0, 0, {{0, 2, 50}, {2, 2, 50}}, 100}},
        FigureRow{"OfFewJumps", joined({sewing, jumps(2), sewing}), {2, 0, {{0, 4, 100}}, 100}},
        FigureRow{"OfATrim", joined({sewing, jumps(3), sewing}), {3, 1, {{0, 4, 100}}, 100}},
        FigureRow{"OfALongTrim", joined({sewing, jumps(9), sewing, jumps(4), sewing}), {13, 2, {{0, 6, 150}}, 150}},
        FigureRow{"OfJumpsAtBothEnds", joined({jumps(3), sewing, jumps(3)}), {6, 0, {{0, 2, 50}}, 50}},
        // The colour change cuts anyway.
        FigureRow{"OfJumpsBesideAChange",
                  joined({sewing, jumps(3), {change(0, 0)}, jumps(3), sewing}),
                  {6, 0, {{0, 2, 50}, {1, 2, 50}}, 100}},
        FigureRow{"OfWhatIsNotFinite",
                  {stitch(0, 0), stitch(test::awkwardNumbers[0], 0), stitch(3, 4)},
                  {0, 0, {{0, 3, 5}}, 5}}),
    [](const auto& row) { return row.param.name; });

}  // namespace
}  // namespace velamo
