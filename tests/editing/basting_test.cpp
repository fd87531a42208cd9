#include "velamo/editing/basting.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "tests/support/stitches.h"
#include "velamo/editing/append.h"

namespace velamo {
namespace {

using namespace test;
using Stitches = std::vector<VLMStitch>;
using Keys = std::vector<Text>;

const VLMColor black = VLMColor::initWithRedgreenblue(0, 0, 0);
const VLMColor red = VLMColor::initWithRedgreenblue(1, 0, 0);

VLMThread thread(const char* palette, VLMColor color = red) {
    VLMThread thread = VLMThread::initWithKeyofPalette("x", "Undefined");
    thread.changeToColorinPalette(color, palette);
    return thread;
}

/// 20 wide, 10 high, from (0, 0).
VLMDesign framed(float width = 20, float height = 10) {
    VLMDesign design = designOf({stitch(width, 0), stitch(0, height)});
    design.setDesignType("VP3");
    design.setXMin(0);
    design.setYMin(0);
    design.setXMax(width);
    design.setYMax(height);
    return design;
}

TEST(Basting, SewsAFrameFirst) {
    VLMDesign design = framed();
    EXPECT_TRUE(addBastingWithLengthinDistanceerror(design, 2, 1, nullptr));
    const Stitches frame{jump(-10, 20),  stitch(0, 0),   stitch(20, 0), stitch(20, 0), stitch(0, -15), stitch(0, -15),
                         stitch(-20, 0), stitch(-20, 0), stitch(0, 15), stitch(0, 15), stitch(20, 0),  stitch(20, 0),
                         jump(-30, -20), change(0, 0),   stitch(20, 0), stitch(0, 10)};
    EXPECT_EQ(design.stitches(), frame);
    EXPECT_EQ(boundsOf(design), (Bounds{-10, -10, 30, 20}));
    EXPECT_EQ(design.numberOfThreads(), 2);
    EXPECT_EQ(design.displayRange(), (StitchRange{0, 16}));
}

TEST(Basting, LocksWithThreeStitchesAtMost) {
    VLMDesign design = framed(80, 10);
    EXPECT_TRUE(addBastingWithLengthinDistanceerror(design, 1, 1, nullptr));
    // 10 stitches along 100, 3 along 30; a jump, a tie, the frame, three locking stitches, a jump, the change, 2 more.
    EXPECT_EQ(design.stitches().size(), 2U + 26U + 3U + 2U + 2U);
    EXPECT_EQ(design.stitches()[2 + 26 + 3], jump(-20, -20));
}

TEST(Basting, OfOneStitchAnEdgeLocksWithOne) {
    VLMDesign design = framed();
    EXPECT_TRUE(addBastingWithLengthinDistanceerror(design, 50, 1, nullptr));
    EXPECT_EQ(design.stitches(),
              (Stitches{jump(-10, 20), stitch(0, 0), stitch(40, 0), stitch(0, -30), stitch(-40, 0), stitch(0, 30),
                        stitch(40, 0), jump(-30, -20), change(0, 0), stitch(20, 0), stitch(0, 10)}));
}

/// 20 * 0.1F + 20 is 22 in single precision; 22 / 1.1F in doubles is a little less than 20, and 20 as a float.
TEST(Basting, RoundsTheQuotientOnceToSinglePrecision) {
    VLMDesign design = framed();
    EXPECT_TRUE(addBastingWithLengthinDistanceerror(design, 0.11F, 0.1F, nullptr));
    const float margins = 20.0F * 0.1F;
    const float quotient =
        static_cast<float>(static_cast<double>(20.0F + margins) / static_cast<double>(10.0F * 0.11F));
    const auto count = static_cast<int>(std::ceil(quotient));
    EXPECT_EQ(design.stitches()[2].deltaX(), (20.0F + margins) / static_cast<float>(count));
}

TEST(Basting, TakesTheFirstThreadInBlack) {
    for (const char* palette : {"", "Janome", "Brother"}) {
        VLMDesign design = framed();
        VLMThread first = thread(palette);
        first.setTension(7);
        first.setLength(3.5F);
        first.setIsShown(false);
        design.setThreads(std::vector<VLMThread>{first});
        EXPECT_TRUE(addBastingWithLengthinDistanceerror(design, 2, 1, nullptr));
        const VLMThread& basting = design.threads()[0];
        EXPECT_EQ(basting.color(), black) << palette;
        EXPECT_EQ(basting.palette(), palette);
        EXPECT_EQ(basting.tension(), 7);
        EXPECT_EQ(basting.length(), 3.5F);
        EXPECT_FALSE(basting.isShown());
        EXPECT_EQ(design.threads()[1], first);
    }
}

/// The palette "Undefined" has no colours: what is recoloured to it becomes grey.
TEST(Basting, IsGreyInThePaletteWithoutColors) {
    VLMDesign design = framed();
    EXPECT_TRUE(addBastingWithLengthinDistanceerror(design, 2, 1, nullptr));
    EXPECT_EQ(design.threads()[0].color(), VLMColor());
    EXPECT_EQ(design.threads()[0].palette(), "Undefined");
}

struct RefusedBasting {
    const char* name;
    float length;
    float distance;
};
class RefusingBasting : public testing::TestWithParam<RefusedBasting> {};
TEST_P(RefusingBasting, ChangesNothing) {
    VLMDesign design = framed();
    VLMError error;
    EXPECT_FALSE(addBastingWithLengthinDistanceerror(design, GetParam().length, GetParam().distance, &error));
    EXPECT_EQ(error.code, 73);
    EXPECT_EQ(error.message(), "Unable to add basting (invalid length).");
    EXPECT_EQ(design.stitches().size(), 2U);
    EXPECT_EQ(design.numberOfThreads(), 1);
}
constexpr float infinite = std::numeric_limits<float>::infinity();
constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();
INSTANTIATE_TEST_SUITE_P(Rows, RefusingBasting,
                         testing::Values(RefusedBasting{"NoLength", 0, 1}, RefusedBasting{"NegativeLength", -2, 1},
                                         RefusedBasting{"LengthIsNoNumber", notANumber, 1},
                                         RefusedBasting{"TinyLength", 1e-30F, 1}, RefusedBasting{"Inward", 2, -1},
                                         RefusedBasting{"FarAway", 2, infinite},
                                         RefusedBasting{"DistanceIsNoNumber", 2, notANumber}),
                         [](const auto& row) { return row.param.name; });

TEST(Basting, NeedsAThread) {
    VLMDesign design = framed();
    design.threads().clear();
    VLMError error;
    EXPECT_FALSE(addBastingWithLengthinDistanceerror(design, 2, 1, &error));
    EXPECT_EQ(error.code, 72);
    EXPECT_EQ(design.stitches().size(), 2U);
}

TEST(Appending, PutsTheOtherOneMillimetreAway) {
    VLMDesign design = designOf({stitch(30, 5)});
    VLMDesign other = designOf({stitch(1, 1), change(0, 0), stitch(2, 2)});
    EXPECT_TRUE(appendDesignerror(design, other, nullptr));
    EXPECT_EQ(design.stitches(),
              (Stitches{stitch(30, 5), jump(-20, -15), change(0, 0), stitch(1, 1), change(0, 0), stitch(2, 2)}));
    EXPECT_EQ(keysOf(design).size(), 3U);
    EXPECT_FALSE(design.selectionActive());
    EXPECT_EQ(other.stitches().size(), 3U);
}

TEST(Appending, ToAnEmptyDesignJumpsOnly) {
    VLMDesign design;
    design.setDesignType("DST");
    VLMDesign other = designOf({stitch(1, 1)});
    EXPECT_TRUE(appendDesignerror(design, other, nullptr));
    EXPECT_EQ(design.stitches(), (Stitches{jump(10, -10), stitch(1, 1)}));
    EXPECT_EQ(design.threads()[0].palette(), "");
}

TEST(Appending, RecolorsTheOthersThreads) {
    VLMDesign design = designOf({stitch(1, 1)});
    design.setThreads(std::vector<VLMThread>{thread("Janome", black)});
    VLMDesign other = designOf({stitch(1, 1), change(0, 0), stitch(1, 1)});
    other.setThreads(std::vector<VLMThread>{thread("Brother", red), thread("", red)});
    EXPECT_TRUE(appendDesignerror(design, other, nullptr));
    const VLMThread expected = thread("Janome", thread("Brother", red).color());
    ASSERT_EQ(design.threads().size(), 3U);
    EXPECT_EQ(design.threads()[1].key(), expected.key());
    EXPECT_EQ(design.threads()[2].palette(), "Janome");
    EXPECT_EQ(other.threads()[0], design.threads()[1]);
    EXPECT_EQ(other.threads()[1], design.threads()[2]);
}

TEST(Appending, MixedPalettesGiveFreeColors) {
    VLMDesign design = designOf({stitch(1, 1), change(0, 0), stitch(1, 1)});
    design.setThreads(std::vector<VLMThread>{thread("Janome"), thread("Brother")});
    VLMDesign other = designOf({stitch(1, 1)});
    other.setThreads(std::vector<VLMThread>{thread("Janome", red)});
    const VLMColor color = other.threads()[0].color();
    EXPECT_TRUE(appendDesignerror(design, other, nullptr));
    EXPECT_EQ(design.threads()[2].palette(), "");
    EXPECT_EQ(design.threads()[2].color(), color);
}

TEST(Appending, KeepsTheOthersSelection) {
    VLMDesign design = designOf({stitch(1, 1)});
    VLMDesign other = designOf({stitch(1, 1), selected(stitch(2, 2)), stitch(1, 1)});
    EXPECT_TRUE(appendDesignerror(design, other, nullptr));
    EXPECT_TRUE(design.selectionActive());
    EXPECT_EQ(design.stitches()[4], selected(stitch(2, 2)));
}

TEST(Appending, OfADesignToItself) {
    VLMDesign design = designOf({stitch(1, 1)});
    EXPECT_TRUE(appendDesignerror(design, design, nullptr));
    EXPECT_EQ(design.stitches(), (Stitches{stitch(1, 1), jump(9, -11), change(0, 0), stitch(1, 1)}));
    EXPECT_EQ(design.numberOfThreads(), 2);
}

TEST(Appending, RefusesMovesThatAreNotFinite) {
    VLMDesign design = designOf({stitch(1, 1)});
    VLMDesign other = designOf({stitch(infinite, 1)});
    other.setThreads(std::vector<VLMThread>{thread("Brother")});
    VLMError error;
    EXPECT_FALSE(appendDesignerror(design, other, &error));
    EXPECT_EQ(error.code, 71);
    EXPECT_EQ(design.stitches(), (Stitches{stitch(1, 1)}));
    EXPECT_EQ(design.numberOfThreads(), 1);
    EXPECT_EQ(other.threads()[0], thread("Brother"));
}

}  // namespace
}  // namespace velamo
