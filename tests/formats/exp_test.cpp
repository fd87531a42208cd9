#include "velamo/formats/exp.h"

#include <gtest/gtest.h>

#include "tests/support/bytes.h"
#include "tests/support/stitches.h"
#include "tests/support/temporary_folder.h"
#include "velamo/formats/import.h"

namespace velamo {
namespace {

using test::boundsOf;
using test::Bytes;
using test::bytes;
using test::change;
using test::jump;
using test::keysOf;
using test::noBounds;
using test::stitch;
using Stitches = std::vector<VLMStitch>;

struct Row {
    const char* name;
    Bytes file;
    Stitches stitches;
    std::size_t threads = 1;
};
class ExpReading : public testing::TestWithParam<Row> {};
TEST_P(ExpReading, GivesTheRow) {
    VLMDesign design;
    VLMError error;
    EXPECT_TRUE(readExp(design, GetParam().file, &error)) << error.message();
    EXPECT_EQ(error.code, 0);
    EXPECT_EQ(design.stitches(), GetParam().stitches);
    EXPECT_EQ(keysOf(design), test::numberedKeys(GetParam().threads));
}
INSTANTIATE_TEST_SUITE_P(
    Rows, ExpReading,
    testing::Values(
        Row{"Nothing", {}, {}},  //
        Row{"Stitch", bytes(10, 0xF6), {stitch(10, -10)}},
        Row{"LargestMoves", bytes(127, 0x81, 0x81, 127), {stitch(127, -127), stitch(-127, 127)}},
        Row{"EscapeInPlaceOfDy", bytes(1, 0x80, 2, 3), {stitch(1, -128), stitch(2, 3)}},
        Row{"ColourChangeDoesNotMove", bytes(0x80, 1, 5, 5, 1, 2), {change(0, 0), stitch(1, 2)}, 2},
        Row{"OddControlsChangeTheColour", bytes(0x80, 3, 5, 5, 0x80, 0x7F, 5, 5), {change(0, 0), change(0, 0)}, 3},
        Row{"Jump", bytes(0x80, 4, 10, 0xF6), {jump(10, -10)}},
        Row{"JumpOfTheOtherControl", bytes(0x80, 2, 0x80, 0x7F), {jump(-128, 127)}},
        Row{"ControlZeroJumps", bytes(0x80, 0, 1, 2), {jump(1, 2)}},
        Row{"NegativeOddControlsJump",
            bytes(0x80, 0x81, 1, 1, 0x80, 0x83, 2, 2, 0x80, 0xFF, 3, 3),
            {jump(1, 1), jump(2, 2), jump(3, 3)}},
        Row{"NegativeEvenControlJumps", bytes(0x80, 0xFE, 1, 2), {jump(1, 2)}},
        Row{"EscapedEscapeIsAStitchOnTheSpot", bytes(0x80, 0x80, 0x11, 0x22), {stitch(0, 0)}},
        Row{"EscapeCutShortEnds", bytes(1, 2, 0x80, 1), {stitch(1, 2)}},
        Row{"NothingButAnEscapeCutShort", bytes(0x80, 4), {}}),
    [](const auto& row) { return row.param.name; });

TEST(ExpControls, AreOddOrEvenAsSignedNumbers) {
    for (int control = 0; control < 256; ++control) {
        VLMDesign design;
        ASSERT_TRUE(readExp(design, bytes(0x80, control, 3, 4), nullptr));
        const bool isChange = control < 0x80 && control % 2 == 1;
        const VLMStitch expected = isChange ? change(0, 0) : control == 0x80 ? stitch(0, 0) : jump(3, 4);
        EXPECT_EQ(design.stitches(), (Stitches{expected})) << control;
        EXPECT_EQ(design.threads().size(), isChange ? 2U : 1U) << control;
    }
}

TEST(ExpLength, OddIsNoFile) {
    for (const Bytes& file : {bytes(1), bytes(1, 2, 3), bytes(0x80, 1, 0)}) {
        VLMDesign design;
        VLMError error;
        EXPECT_FALSE(readExp(design, file, &error));
        EXPECT_EQ(error.code, 100);
        EXPECT_EQ(error.recoverySuggestion, "Unable to read EXP: file contains uneven number of bytes.");
        EXPECT_EQ(error.domain, "de.velamo.vlmdesign.ErrorDomain");
        EXPECT_TRUE(design.threads().empty());
        EXPECT_EQ(boundsOf(design), (test::Bounds{0, 0, 0, 0}));
    }
}

TEST(ExpThreads, AreNumberedFrom1To20AndAgain) {
    Bytes file;
    for (int i = 0; i < 21; ++i) file = bytes(file, 0x80, 1, 0, 0);
    VLMDesign design;
    ASSERT_TRUE(readExp(design, file, nullptr));
    EXPECT_EQ(keysOf(design), test::numberedKeys(22));
    EXPECT_EQ(design.threads()[20].key(), "1");
    for (const VLMThread& thread : design.threads()) EXPECT_EQ(thread.palette(), "Undefined");
}

TEST(ExpBounds, AreThoseOfEveryPositionButTheOrigin) {
    VLMDesign design;
    ASSERT_TRUE(readExp(design, bytes(10, 5, 0x80, 4, 20, 0xF6, 0x80, 1, 99, 99, 0xFF, 0), nullptr));
    EXPECT_EQ(boundsOf(design), (test::Bounds{10, -5, 30, 5}));
}

TEST(ExpBounds, OfNoStitchStayAtTheExtremes) {
    VLMDesign design;
    ASSERT_TRUE(readExp(design, {}, nullptr));
    EXPECT_EQ(boundsOf(design), noBounds);
}

TEST(ExpImport, SetsTypeAndVersionEvenWhenItFails) {
    const test::TemporaryFolder folder;
    VLMDesign design;
    design.setDesignVersion(99);
    VLMError error;
    EXPECT_FALSE(importExpDesignFromURLerror(design, folder.write("odd.exp", bytes(1)), &error));
    EXPECT_EQ(error.code, 100);
    EXPECT_EQ(design.designType(), "EXP");
    EXPECT_EQ(design.designVersion(), 10);
}

TEST(ExpImport, OfAMissingFileFindsNoStitches) {
    const test::TemporaryFolder folder;
    VLMDesign design;
    VLMError error;
    EXPECT_FALSE(importDesignFromURLerror(design, folder.path() / "missing.exp", &error));
    EXPECT_EQ(error.code, 11);
    EXPECT_EQ(design.threads().size(), 1U);
}

}  // namespace
}  // namespace velamo
