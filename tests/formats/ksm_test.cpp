#include "velamo/formats/ksm.h"

#include <gtest/gtest.h>

#include "tests/support/samples.h"
#include "tests/support/stitches.h"
#include "tests/support/temporary_folder.h"

namespace velamo {
namespace {

using test::boundsOf;
using test::Bytes;
using test::bytes;
using test::jump;
using test::keysOf;
using test::ksmFile;
using test::noBounds;
using test::stitch;
using Stitches = std::vector<VLMStitch>;

/// Every colour change of a KSM file is a jump as well.
constexpr VLMStitch jumpingChange(float deltaX, float deltaY) {
    return {deltaX, deltaY, true, true};
}
const Bytes end = bytes(0, 0, 0x88);
/// Ends the jumps that every file begins with.
const Bytes lastJump = bytes(1, 1, 0x98);

struct Row {
    const char* name;
    Bytes records;
    Stitches stitches;
    std::size_t threads = 1;
};
class KsmReading : public testing::TestWithParam<Row> {};
TEST_P(KsmReading, GivesTheRow) {
    VLMDesign design;
    VLMError error;
    EXPECT_TRUE(readKsm(design, ksmFile(GetParam().records), &error)) << error.message();
    EXPECT_EQ(error.code, 0);
    EXPECT_EQ(design.stitches(), GetParam().stitches);
    EXPECT_EQ(keysOf(design), test::numberedKeys(GetParam().threads));
}
INSTANTIATE_TEST_SUITE_P(
    Rows, KsmReading,
    testing::Values(Row{"EndMarkOnly", end, {}},  //
                    Row{"FirstByteIsY", bytes(5, 10, 0x80), {jump(10, 5)}},
                    Row{"MovesReach255", bytes(255, 254, 0x80), {jump(254, 255)}},
                    Row{"FlagsTurnTheMove",
                        bytes(5, 10, 0xC0, 5, 10, 0xA0, 5, 10, 0xE0),
                        {jump(-10, 5), jump(10, -5), jump(-10, -5)}},
                    Row{"FileBeginsWithJumps", bytes(1, 2, 0x80, 3, 4, 0x80, end), {jump(2, 1), jump(4, 3)}},
                    Row{"LastJumpEndsTheJumps",
                        bytes(1, 2, 0x80, 3, 4, 0x98, 5, 6, 0x80, 7, 8, 0x80),
                        {jump(2, 1), jump(4, 3), stitch(6, 5), stitch(8, 7)}},
                    Row{"StitchIsNoJumpWhereTheJumpsEndTwice",
                        bytes(lastJump, 1, 2, 0x98, 3, 4, 0x80),
                        {jump(1, 1), stitch(2, 1), stitch(4, 3)}},
                    Row{"JumpsBeginAnew",
                        bytes(lastJump, 1, 2, 0x80, 3, 4, 0x89, 5, 6, 0x80, 7, 8, 0x98, 9, 9, 0x80),
                        {jump(1, 1), stitch(2, 1), jump(4, 3), jump(6, 5), jump(8, 7), stitch(9, 9)}},
                    Row{"JumpsBeginWithTheOtherFlag",
                        bytes(lastJump, 3, 4, 0x87, 5, 6, 0x80, lastJump, 3, 4, 0xF7, lastJump),
                        {jump(1, 1), jump(4, 3), jump(6, 5), jump(1, 1), jump(-4, -3), jump(1, 1)}},
                    Row{"89WithASignIsNoJump", bytes(lastJump, 3, 4, 0xC9), {jump(1, 1), stitch(-4, 3)}},
                    Row{"ColourChangeJumpsAndSoWhatFollows",
                        bytes(lastJump, 3, 4, 0x8C, 5, 6, 0x80, lastJump, 7, 8, 0x80),
                        {jump(1, 1), jumpingChange(4, 3), jump(6, 5), jump(1, 1), stitch(8, 7)},
                        2},
                    Row{"8BChangesTheColour", bytes(lastJump, 3, 4, 0x8B), {jump(1, 1), jumpingChange(4, 3)}, 2},
                    Row{"8BWithASignDoesNot", bytes(lastJump, 3, 4, 0xCB), {jump(1, 1), stitch(-4, 3)}},
                    Row{"ColourChangeWithSigns", bytes(3, 4, 0xFF), {jumpingChange(-4, -3)}, 2},
                    Row{"EndMarkInTheMiddle", bytes(lastJump, end, 1, 2, 0x80), {jump(1, 1)}},
                    Row{"EndMarkWithMove", bytes(lastJump, 9, 9, 0x88), {jump(1, 1)}},
                    Row{"88WithASignIsNoEnd", bytes(lastJump, 3, 4, 0xC8), {jump(1, 1), stitch(-4, 3)}},
                    Row{"IncompleteLastRecordIsIgnored", bytes(lastJump, 1, 2, 0x80, 3, 4), {jump(1, 1), stitch(2, 1)}},
                    Row{"IncompleteLastRecordMayBeInvalid", bytes(lastJump, 0, 0), {jump(1, 1)}}),
    [](const auto& row) { return row.param.name; });

/// What one record does to the state of jumping: each of the 256 flags after a jump and after a stitch.
TEST(KsmFlags, MeanWhatTheirBitsSay) {
    for (int flags = 0x80; flags < 0x100; ++flags) {
        if (flags == 0x88) continue;
        const bool startsJumps = flags == 0x89 || (flags & 0x8F) == 0x87;
        const bool isChange = flags == 0x8B || (flags & 0x8C) == 0x8C;
        const bool endsJumps = (flags & 0x9E) == 0x98;
        const float x = (flags & 0x40) != 0 ? -4 : 4;
        const float y = (flags & 0x20) != 0 ? -3 : 3;
        for (const bool wasJumping : {false, true}) {
            VLMDesign design;
            const Bytes before = wasJumping ? bytes(1, 1, 0x80) : lastJump;
            ASSERT_TRUE(readKsm(design, ksmFile(bytes(before, 3, 4, flags, 0, 1, 0x80)), nullptr));
            const bool isJump = wasJumping || startsJumps || isChange;
            EXPECT_EQ(design.stitches(),
                      (Stitches{jump(1, 1), {x, y, isJump, isChange}, {1, 0, isJump && !endsJumps, false}}))
                << flags << wasJumping;
        }
    }
}

TEST(KsmFlags, WithoutBit7AreInvalid) {
    for (int flags = 0; flags < 0x80; ++flags) {
        VLMDesign design;
        VLMError error;
        EXPECT_FALSE(readKsm(design, ksmFile(bytes(3, 4, 0x8C, 5, 6, 0x80, 1, 1, flags, 7, 8, 0x80)), &error));
        EXPECT_EQ(error.code, 171);
        EXPECT_EQ(error.recoverySuggestion, "Unable to read KSM (invalid stich data)");
        EXPECT_EQ(error.domain, "de.velamo.vlmdesign.ErrorDomain");
        // What was read before it stays.
        EXPECT_EQ(design.stitches(), (Stitches{jumpingChange(4, 3), jump(6, 5)}));
        EXPECT_EQ(design.threads().size(), 2U);
        EXPECT_EQ(boundsOf(design), (test::Bounds{4, 3, 10, 8}));
    }
}

TEST(KsmLength, Below515BytesIsNoFile) {
    const Bytes whole = ksmFile(bytes(5, 10, 0x80));
    for (std::size_t length = 0; length < whole.size(); ++length) {
        VLMDesign design;
        VLMError error;
        EXPECT_FALSE(readKsm(design, std::span(whole).first(length), &error));
        EXPECT_EQ(error.code, 170);
        EXPECT_EQ(error.recoverySuggestion, "Unable to read KSM (file too small)");
        EXPECT_TRUE(design.threads().empty());
    }
    VLMDesign design;
    EXPECT_TRUE(readKsm(design, whole, nullptr));
    EXPECT_EQ(design.stitches(), (Stitches{jump(10, 5)}));
}

TEST(KsmThreads, AreNumberedFrom1To20AndAgain) {
    Bytes records;
    for (int i = 0; i < 21; ++i) records = bytes(records, 0, 0, 0x8C);
    VLMDesign design;
    ASSERT_TRUE(readKsm(design, ksmFile(records), nullptr));
    EXPECT_EQ(keysOf(design), test::numberedKeys(22));
    EXPECT_EQ(design.threads()[20].key(), "1");
    EXPECT_EQ(design.threads()[20].palette(), "Undefined");
}

TEST(KsmBounds, AreThoseOfEveryPositionButTheOrigin) {
    VLMDesign design;
    ASSERT_TRUE(readKsm(design, ksmFile(bytes(5, 10, 0x80, 20, 3, 0xAC, 1, 1, 0xC0)), nullptr));
    EXPECT_EQ(boundsOf(design), (test::Bounds{10, -15, 13, 5}));
}

TEST(KsmBounds, OfNoStitchStayAtTheExtremes) {
    VLMDesign design;
    ASSERT_TRUE(readKsm(design, ksmFile(end), nullptr));
    EXPECT_EQ(boundsOf(design), noBounds);
}

TEST(KsmImport, SetsTypeAndVersionEvenWhenItFails) {
    const test::TemporaryFolder folder;
    VLMDesign design;
    design.setDesignVersion(99);
    VLMError error;
    EXPECT_FALSE(importKsmDesignFromURLerror(design, folder.path() / "missing.ksm", &error));
    EXPECT_EQ(error.code, 170);
    EXPECT_EQ(design.designType(), "KSM");
    EXPECT_EQ(design.designVersion(), 10);
}

}  // namespace
}  // namespace velamo
