#include "velamo/formats/pec.h"

#include <gtest/gtest.h>

#include <limits>
#include <random>

#include "tests/support/brother_files.h"

namespace velamo {
namespace {

using test::bytes;
using test::Bytes;
using test::PecSection;
using test::pecSegment;
using test::repeated;

constexpr float largest = std::numeric_limits<float>::max();

bool importSegment(VLMDesign& design, const Bytes& segment, VLMError* error = nullptr) {
    design.resetBounds();
    return importPecSegmentFromDataerror(design, segment, error);
}

/// A section whose moves begin at the origin.
PecSection sectionOf(const Bytes& moves) {
    return {.colors = bytes(5), .width = 0, .height = 0, .startX = 0, .startY = 0, .moves = moves};
}

std::vector<std::string> keysOf(const VLMDesign& design) {
    std::vector<std::string> keys;
    for (const VLMThread& thread : design.threads()) keys.push_back(thread.key().value_or("(null)"));
    return keys;
}

struct Row {
    const char* name;
    Bytes moves;
    std::vector<VLMStitch> stitches;  // behind the jump to the start
    std::size_t threads = 1;
};
class PecMoves : public testing::TestWithParam<Row> {};
TEST_P(PecMoves, GiveTheRow) {
    VLMDesign design;
    VLMError error;
    EXPECT_TRUE(importSegment(design, pecSegment(sectionOf(GetParam().moves)), &error));
    EXPECT_EQ(error.code, 0);
    auto expected = GetParam().stitches;
    expected.insert(expected.begin(), VLMStitch(0, 0, true, false));
    EXPECT_EQ(design.stitches(), expected);
    EXPECT_EQ(design.threads().size(), GetParam().threads);
}
INSTANTIATE_TEST_SUITE_P(
    Rows, PecMoves,
    testing::Values(
        Row{"None", {}, {}}, Row{"Short", bytes(5, 3), {{5, -3, false, false}}},
        Row{"ShortXMinusOne", bytes(0x7F, 0), {{-1, 0, false, false}}},
        Row{"ShortYMinusOneIsUp", bytes(0, 0x7F), {{0, 1, false, false}}},
        Row{"ShortLimits", bytes(0x3F, 0x3F, 0x40, 0x40), {{63, -63, false, false}, {-64, 64, false, false}}},
        Row{"LongWithoutFlags", bytes(0x80, 5, 0x80, 3), {{5, -3, false, false}}},
        Row{"LongNegativeWithoutFlags", bytes(0x8F, 0xFF, 0x8F, 0), {{-1, 256, false, false}}},
        Row{"LongMixedWithoutFlags", bytes(0x80, 5, 0x8F, 0xFF), {{5, 1, false, false}}},
        Row{"Jump", bytes(0x90, 5, 0x90, 3), {{5, -3, true, false}}},
        Row{"TrimIsAJump", bytes(0xA0, 5, 0xA0, 3), {{5, -3, true, false}}},
        Row{"LongMoveWithoutFlagsIsAJump", bytes(0x81, 0, 0x8E, 0xFF), {{256, 257, true, false}}},
        Row{"LongLimits", bytes(0x97, 0xFF, 0x98, 0), {{2047, 2048, true, false}}},
        Row{"JumpNeedsBothFlags",
            bytes(0x90, 5, 0x80, 3, 0x80, 5, 0x90, 3, 0x90, 5, 0x8F, 0xFD, 0x8F, 0xFB, 0x90, 3),
            {{5, -3, false, false}, {5, -3, false, false}, {5, 3, false, false}, {-5, -3, false, false}}},
        Row{"LongXShortYIsAStitch", bytes(0x90, 5, 3), {{5, -3, false, false}}},
        Row{"ShortXLongYIsAStitch", bytes(5, 0x90, 3), {{5, -3, false, false}}},
        Row{"ColourChange", bytes(0xFE, 0xB0, 2, 1, 1), {{0, 0, false, true}, {1, -1, false, false}}, 2},
        Row{"ByteBehindAColourChangeIsNotRead",
            bytes(0xFE, 0xB0, 0xFF, 0xFE, 0xB0, 0xFE, 1, 1),
            {{0, 0, false, true}, {0, 0, false, true}, {1, -1, false, false}},
            3},
        Row{"AlmostAColourChangeIsALongX", bytes(0xFE, 0xB1, 0x90, 3), {{0xEB1 - 0x1000, -3, true, false}}},
        Row{"AlmostAColourChangeWithShortY", bytes(0xFE, 0x00, 3), {{-512, -3, false, false}}},
        Row{"ColourChangeMarkAsY", bytes(1, 0xFE, 0xB0), {{1, 336, false, false}}},
        Row{"EndMarkAsY", bytes(1, 0xFF, 0xFF), {{1, 1, false, false}}},
        Row{"EndMarkInTheMiddle", bytes(1, 1, 0xFF, 2, 2), {{1, -1, false, false}}}),
    [](const auto& row) { return row.param.name; });

TEST(PecStart, LeadsFromTheMiddleToTheFirstStitch) {
    VLMDesign design;
    ASSERT_TRUE(importSegment(design, pecSegment({.width = 41, .height = 31, .startX = 10, .startY = 5, .moves = {}})));
    EXPECT_EQ(design.stitches(), (std::vector<VLMStitch>{{-10.5F, 10.5F, true, false}}));
    EXPECT_EQ(design.xMin(), -10.5F);
    EXPECT_EQ(design.xMax(), -10.5F);
    EXPECT_EQ(design.yMin(), 10.5F);
    EXPECT_EQ(design.yMax(), 10.5F);
}

TEST(PecStart, IsSignedOnAllSides) {
    VLMDesign design;
    const PecSection section{.width = -3, .height = -32768, .startX = -1, .startY = -2048, .moves = {}};
    ASSERT_TRUE(importSegment(design, pecSegment(section)));
    EXPECT_EQ(design.stitches(), (std::vector<VLMStitch>{{0.5F, -14336, true, false}}));
}

TEST(PecStart, IgnoresItsFlags) {
    Bytes segment = pecSegment(sectionOf({}));
    segment[525] = 0x71;
    segment[527] = 0xF8;
    VLMDesign design;
    ASSERT_TRUE(importSegment(design, segment));
    EXPECT_EQ(design.stitches(), (std::vector<VLMStitch>{{256, 2048, true, false}}));
}

TEST(PecBounds, AreThoseOfEveryPosition) {
    VLMDesign design;
    const PecSection section{
        .width = 40, .height = 30, .startX = 10, .startY = 5, .moves = bytes(5, 3, 0xFE, 0xB0, 2, 0x90, 10, 0x90, 20)};
    ASSERT_TRUE(importSegment(design, pecSegment(section)));
    EXPECT_EQ(design.xMin(), -10);
    EXPECT_EQ(design.xMax(), 5);
    EXPECT_EQ(design.yMin(), -13);
    EXPECT_EQ(design.yMax(), 10);
}

TEST(PecBounds, AreWidenedOnly) {
    VLMDesign design;
    design.setXMin(-100);
    design.setXMax(2);
    design.setYMin(-1);
    design.setYMax(100);
    ASSERT_TRUE(importPecSegmentFromDataerror(design, pecSegment(sectionOf(bytes(5, 3))), nullptr));
    EXPECT_EQ(design.xMin(), -100);
    EXPECT_EQ(design.xMax(), 5);
    EXPECT_EQ(design.yMin(), -3);
    EXPECT_EQ(design.yMax(), 100);
}

struct ErrorRow {
    const char* name;
    std::size_t size;     // of the segment
    int thumbnailOffset;  // where the stitches end, from offset 512 of the section
    int code;
    const char* message;
};
class PecErrors : public testing::TestWithParam<ErrorRow> {};
TEST_P(PecErrors, AreTold) {
    Bytes segment = pecSegment(sectionOf(repeated(20, 1)));
    segment.resize(GetParam().size);
    segment[511] = static_cast<std::uint8_t>(GetParam().thumbnailOffset);
    VLMDesign design;
    VLMError error;
    EXPECT_FALSE(importSegment(design, segment, &error));
    EXPECT_EQ(error.code, GetParam().code);
    EXPECT_EQ(error.recoverySuggestion, GetParam().message);
    EXPECT_EQ(error.failureReason, "");
    EXPECT_EQ(error.domain, "de.velamo.vlmdesign.ErrorDomain");
    EXPECT_TRUE(design.threads().empty());
    EXPECT_EQ(design.stitches().empty(), GetParam().code == 190);
}
const char* const tooSmallForAttributes = "Unable to import PEC segment (segment too small for attributes).";
const char* const tooSmallForBitmaps = "Unable to import PEC segment (segment too small for bitmap pointer).";
const char* const notTerminated = "Unable to import PEC segment (stitches not terminated).";
INSTANTIATE_TEST_SUITE_P(Rows, PecErrors,
                         testing::Values(ErrorRow{"OneByteTooShort", 528, 19, 190, tooSmallForAttributes},
                                         ErrorRow{"NoRoomForStitches", 529, 20, 192, notTerminated},
                                         ErrorRow{"EndsBeforeTheStitches", 529, 0, 192, notTerminated},
                                         ErrorRow{"EndsPastTheSegment", 529, 21, 191, tooSmallForBitmaps},
                                         ErrorRow{"EndsOneBytePastTheSegment", 540, 32, 191, tooSmallForBitmaps},
                                         ErrorRow{"NoEndMark", 540, 31, 192, notTerminated}),
                         [](const auto& row) { return row.param.name; });

TEST(PecErrors, NeedNoSlot) {
    VLMDesign design;
    EXPECT_FALSE(importSegment(design, Bytes(528)));
    EXPECT_FALSE(importSegment(design, Bytes(529)));
}

TEST(PecSecondAttempt, ReadsAGraphicHeaderThatIsOneByteTooLong) {
    PecSection section;
    VLMDesign wellFormed;
    ASSERT_TRUE(importSegment(wellFormed, pecSegment(section)));
    section.surplusHeader = 1;
    VLMDesign design;
    VLMError error;
    ASSERT_TRUE(importSegment(design, pecSegment(section), &error));
    EXPECT_EQ(error.code, 0);
    EXPECT_EQ(design.stitches(), wellFormed.stitches());
    EXPECT_EQ(design.threads(), wellFormed.threads());
    EXPECT_EQ(design.xMin(), wellFormed.xMin());
    EXPECT_EQ(design.xMax(), wellFormed.xMax());
    EXPECT_EQ(design.yMin(), wellFormed.yMin());
    EXPECT_EQ(design.yMax(), wellFormed.yMax());
}

TEST(PecSecondAttempt, LeavesItsStitchesWhenItFailsToo) {
    PecSection section = sectionOf(bytes(7, 63, 63, 1, 2, 0xFE, 0xB0));
    section.end = {};
    section.thumbnails = {};
    VLMDesign design;
    VLMError error;
    EXPECT_FALSE(importSegment(design, pecSegment(section), &error));
    EXPECT_EQ(error.code, 192);
    // One byte later: the start is (0x080, 0x007), and the moves begin with 63, 63.
    EXPECT_EQ(design.stitches(),
              (std::vector<VLMStitch>{
                  {128, -7, true, false}, {63, -63, false, false}, {1, -2, false, false}, {0, 0, false, true}}));
    EXPECT_TRUE(design.threads().empty());
    EXPECT_EQ(design.xMin(), 128);
    EXPECT_EQ(design.xMax(), 192);
    EXPECT_EQ(design.yMin(), -72);
    EXPECT_EQ(design.yMax(), -7);
}

TEST(PecSecondAttempt, StartsWithAnEmptyDesign) {
    VLMDesign design;
    design.stitches().push_back({9, 9, false, false});
    ASSERT_TRUE(importSegment(design, pecSegment(sectionOf(bytes(1, 1)))));
    EXPECT_EQ(design.stitches().size(), 3U);
    EXPECT_FALSE(importSegment(design, Bytes(529)));
    EXPECT_EQ(design.stitches().size(), 1U);
}

/// Decodes at the usual place only.
std::uint32_t blocksOf(VLMDesign& design, const Bytes& segment, VLMError* error = nullptr) {
    design.resetBounds();
    return importPecStichesFromDatawithOffseterror(design, segment, 525, error);
}

TEST(PecStitches, CountTheBlocks) {
    VLMDesign design;
    EXPECT_EQ(blocksOf(design, pecSegment(sectionOf({}))), 1U);
    EXPECT_EQ(blocksOf(design, pecSegment(sectionOf(bytes(0xFE, 0xB0, 2, 0xFE, 0xB0, 1)))), 3U);
    EXPECT_TRUE(design.threads().empty());
}

struct CutRow {
    const char* name;
    Bytes moves;  // to the end of the segment, without an end mark
    std::size_t stitches;
};
class PecCutRecords : public testing::TestWithParam<CutRow> {};
TEST_P(PecCutRecords, AreNoEnd) {
    PecSection section = sectionOf(bytes(1, 1, GetParam().moves));
    section.end = {};
    section.thumbnails = {};
    VLMDesign design;
    VLMError error;
    EXPECT_EQ(blocksOf(design, pecSegment(section), &error), 0U);
    EXPECT_EQ(error.code, 192);
    EXPECT_EQ(design.stitches().size(), 2 + GetParam().stitches);
}
INSTANTIATE_TEST_SUITE_P(Rows, PecCutRecords,
                         testing::Values(CutRow{"WithinTheMove", bytes(5), 0}, CutRow{"WithinX", bytes(0x90), 0},
                                         CutRow{"BehindX", bytes(0x90, 5), 0}, CutRow{"WithinY", bytes(5, 0x90), 0},
                                         CutRow{"WithinLongY", bytes(0x90, 5, 0x90), 0},
                                         CutRow{"WithinTheColourChangeMark", bytes(0xFE), 0},
                                         // The byte that is missing is one that nobody reads.
                                         CutRow{"WithinTheColourChange", bytes(0xFE, 0xB0), 1},
                                         CutRow{"BehindTheColourChange", bytes(0xFE, 0xB0, 1), 1}),
                         [](const auto& row) { return row.param.name; });

TEST(PecStitches, MayReachPastTheirEndButNotBeginThere) {
    PecSection section = sectionOf(bytes(1, 1, 0x90));
    section.end = {};
    section.thumbnails = bytes(5, 0x90, 3, 0xFF);
    VLMDesign design;
    VLMError error;
    EXPECT_EQ(blocksOf(design, pecSegment(section), &error), 0U);
    EXPECT_EQ(error.code, 192);
    EXPECT_EQ(design.stitches(),
              (std::vector<VLMStitch>{{0, 0, true, false}, {1, -1, false, false}, {5, -3, true, false}}));
}

TEST(PecStitches, EndMarkMayBeTheLastByte) {
    PecSection section = sectionOf(bytes(1, 1));
    section.thumbnails = {};
    VLMDesign design;
    EXPECT_EQ(blocksOf(design, pecSegment(section)), 1U);
}

TEST(PecStitches, OfTooFewBytesFail) {
    for (std::size_t size = 0; size < 529; ++size) {
        VLMDesign design;
        VLMError error;
        EXPECT_EQ(blocksOf(design, Bytes(size), &error), 0U);
        EXPECT_EQ(error.code, size < 509 ? 191 : 192) << size;
        EXPECT_EQ(design.stitches(), (std::vector<VLMStitch>{{0, 0, true, false}}));
    }
}

TEST(PecThreads, FollowTheIndices) {
    const Bytes indices = bytes(1, 16, 64, 63, 62, 66, 67, 69, 71, 75, 79, 92);
    Bytes moves;
    for (std::size_t i = 1; i < indices.size(); ++i) moves = bytes(moves, 0xFE, 0xB0, 1);
    PecSection section = sectionOf(moves);
    section.colors = indices;
    VLMDesign design;
    ASSERT_TRUE(importSegment(design, pecSegment(section)));
    EXPECT_EQ(keysOf(design), (std::vector<std::string>{"007", "005", "x7", "x8", "x9", "007", "405", "515", "513",
                                                        "058", "019", "086"}));
    for (const VLMThread& thread : design.threads()) {
        EXPECT_EQ(thread.palette(), "Brother");
        EXPECT_NE(thread.paletteName(), "");
        EXPECT_EQ(thread.tension(), 13);
        EXPECT_TRUE(thread.isShown());
    }
}

TEST(PecThreads, OfUnknownIndicesAreTheUsualOne) {
    for (const int index : {0, 65, 68, 70, 72, 93, 255}) {
        PecSection section = sectionOf({});
        section.colors = bytes(index);
        VLMDesign design;
        ASSERT_TRUE(importSegment(design, pecSegment(section)));
        ASSERT_EQ(design.threads().size(), 1U);
        EXPECT_EQ(design.threads()[0], VLMThread::initWithKeyofPalette("005", "Brother")) << index;
    }
}

TEST(PecThreads, BeyondTheListedOnesAreReadFromThePadding) {
    PecSection section = sectionOf(bytes(0xFE, 0xB0, 2, 0xFE, 0xB0, 1));
    section.colors = bytes(1);
    VLMDesign design;
    ASSERT_TRUE(importSegment(design, pecSegment(section)));
    EXPECT_EQ(keysOf(design), (std::vector<std::string>{"007", "019", "019"}));
}

TEST(PecThreads, AreAsManyAsTheBlocksNotAsTheColours) {
    PecSection section = sectionOf({});
    section.colors = bytes(1, 2, 3, 4);
    VLMDesign design;
    ASSERT_TRUE(importSegment(design, pecSegment(section)));
    EXPECT_EQ(keysOf(design), std::vector<std::string>{"007"});
}

TEST(PecThreads, MayReachIntoTheStitches) {
    Bytes moves;
    for (int change = 0; change < 600; ++change) moves = bytes(moves, 0xFE, 0xB0, 1);
    VLMDesign design;
    ASSERT_TRUE(importSegment(design, pecSegment(sectionOf(moves))));
    ASSERT_EQ(design.threads().size(), 601U);
    // 0xFE, 0xB0, 1 over and over from offset 532 of the section, which is thread 483.
    EXPECT_EQ(design.threads()[483].key(), "005");
    EXPECT_EQ(design.threads()[485].key(), "007");
}

TEST(PecReading, SurvivesEveryPrefix) {
    const Bytes whole = pecSegment();
    for (std::size_t size = 0; size <= whole.size(); ++size) {
        VLMDesign design;
        VLMError error;
        const bool isRead =
            importSegment(design, Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)), &error);
        const int code = size < 529 ? 190 : size < whole.size() - 8 ? 191 : 0;
        EXPECT_EQ(error.code, code) << size;
        EXPECT_EQ(isRead, code == 0) << size;
    }
}

/// Ten thousand sections with a few bytes changed: success or a known error, and no more out than in.
TEST(PecReading, SurvivesChangedBytes) {
    const Bytes whole = pecSegment();
    std::mt19937 random(3);
    for (int i = 0; i < 10000; ++i) {
        Bytes segment = whole;
        for (auto changes = random() % 4 + 1; changes > 0; --changes)
            segment[511 + random() % (segment.size() - 511)] = static_cast<std::uint8_t>(random());
        segment.resize(segment.size() - (random() % 8 == 0 ? random() % 20 : 0));
        VLMDesign design;
        VLMError error;
        const bool isRead = importSegment(design, segment, &error);
        EXPECT_TRUE(isRead ? error.code == 0 : error.code >= 190 && error.code <= 192) << error.code;
        EXPECT_EQ(isRead, !design.threads().empty());
        EXPECT_LE(design.stitches().size(), 1 + (segment.size() - 528) / 2 + 1);
        EXPECT_EQ(design.xMin() < largest, !design.stitches().empty());
    }
}

}  // namespace
}  // namespace velamo
