#include "velamo/formats/janome.h"

#include <gtest/gtest.h>

#include <ostream>

#include "tests/support/janome_files.h"
#include "tests/support/stitches.h"

namespace velamo {
namespace {

using test::Bytes;
using test::bytes;
using test::change;
using test::jump;
using test::stitch;
using Stitches = std::vector<VLMStitch>;

struct Row {
    const char* name;
    Bytes stream;
    Stitches stitches;
    std::size_t colorChanges = 0;
};
class JanomeStream : public testing::TestWithParam<Row> {};
TEST_P(JanomeStream, GivesTheRow) {
    VLMDesign design;
    EXPECT_EQ(readJanomeStitches(design, GetParam().stream, JanomeDialect::jef), GetParam().colorChanges);
    EXPECT_EQ(design.stitches(), GetParam().stitches);
}
INSTANTIATE_TEST_SUITE_P(
    Jef, JanomeStream,
    testing::Values(Row{"Nothing", {}, {}},  //
                    Row{"Stitch", bytes(10, 0xF6), {stitch(10, -10)}},
                    Row{"LargestMoves", bytes(127, 0x80, 0x81, 127), {stitch(127, -128), stitch(-127, 127)}},
                    Row{"ColourChangeMoves", bytes(0x80, 1, 5, 0xFB, 1, 2), {change(5, -5), stitch(1, 2)}, 1},
                    Row{"TwoColourChanges", bytes(0x80, 1, 0, 0, 0x80, 1, 1, 1), {change(0, 0), change(1, 1)}, 2},
                    Row{"Jump", bytes(0x80, 2, 0x80, 0x7F, 1, 2), {jump(-128, 127), stitch(1, 2)}},
                    Row{"JumpOfTheOtherKind", bytes(0x80, 4, 0x80, 0x7F, 1, 2), {jump(-128, 127), stitch(1, 2)}},
                    Row{"UnknownEscapeIsAStitchOnTheSpot", bytes(0x80, 7, 5, 5), {stitch(0, 0), stitch(5, 5)}},
                    Row{"EndMark", bytes(1, 2, 0x80, 0x10, 5, 5, 3, 4), {stitch(1, 2)}},
                    Row{"EndMarkFirst", bytes(0x80, 0x10, 0, 0), {}},
                    Row{"EscapeWithTwoBytesLeftEnds", bytes(1, 2, 0x80, 7), {stitch(1, 2)}},
                    Row{"EscapeWithThreeBytesLeftEnds", bytes(1, 2, 0x80, 2, 5), {stitch(1, 2)}},
                    Row{"TrailingByteIsNotRead", bytes(1, 2, 3), {stitch(1, 2)}},
                    Row{"TrailingEscapeIsNotRead", bytes(1, 2, 0x80), {stitch(1, 2)}}),
    [](const auto& row) { return row.param.name; });

TEST(JanomeEscapes, AreFourAndTheRestStandsStill) {
    for (int control = 0; control < 256; ++control) {
        VLMDesign design;
        const auto changes = readJanomeStitches(design, bytes(0x80, control, 3, 4), JanomeDialect::jef);
        EXPECT_EQ(changes, control == 1 ? 1U : 0U) << control;
        const Stitches expected = control == 1                   ? Stitches{change(3, 4)}
                                  : control == 2 || control == 4 ? Stitches{jump(3, 4)}
                                  : control == 0x10              ? Stitches{}
                                                                 : Stitches{stitch(0, 0), stitch(3, 4)};
        EXPECT_EQ(design.stitches(), expected) << control;
    }
}

TEST(JanomeEscapes, OfSewFilesAreThree) {
    for (int control = 0; control < 256; ++control) {
        VLMDesign design;
        const auto changes = readJanomeStitches(design, bytes(0x80, control, 3, 4), JanomeDialect::sew);
        EXPECT_EQ(changes, control == 1 ? 1U : 0U) << control;
        const Stitches expected = control == 1      ? Stitches{change(0, 0)}
                                  : control == 2    ? Stitches{jump(3, 4)}
                                  : control == 0x10 ? Stitches{}
                                                    : Stitches{stitch(0, 0), stitch(3, 4)};
        EXPECT_EQ(design.stitches(), expected) << control;
    }
}

struct ThreadRow {
    int index;
    Text key;       // as SEW files have it
    Text usualKey;  // as JEF and JPX files have it
};
void PrintTo(const ThreadRow& row, std::ostream* out) {
    *out << row.index;
}
class JanomeThreads : public testing::TestWithParam<ThreadRow> {};
TEST_P(JanomeThreads, AreThoseOfTheIndex) {
    EXPECT_EQ(janomeThread(GetParam().index).key(), GetParam().key);
    const VLMThread thread = janomeThreadOrUsual(GetParam().index);
    EXPECT_EQ(thread.key(), GetParam().usualKey);
    EXPECT_EQ(thread.palette(), "Janome");
    EXPECT_EQ(thread.paletteName(), "Janome Embroidery");
}
INSTANTIATE_TEST_SUITE_P(Rows, JanomeThreads,
                         testing::Values(ThreadRow{1, "002", "002"}, ThreadRow{23, "220", "220"},
                                         ThreadRow{25, "227", "227"}, ThreadRow{73, "275", "275"},
                                         ThreadRow{78, "224", "224"}, ThreadRow{0, "x9", "220"},
                                         ThreadRow{79, std::nullopt, "220"}, ThreadRow{200, std::nullopt, "220"},
                                         ThreadRow{-1, std::nullopt, "220"}));

struct SizeRow {
    std::int32_t threads;
    std::size_t smallestFile;
};
void PrintTo(const SizeRow& row, std::ostream* out) {
    *out << row.threads;
}
class JanomeSizeTest : public testing::TestWithParam<SizeRow> {};
TEST_P(JanomeSizeTest, WrapsAround) {
    const auto [threads, smallestFile] = GetParam();
    EXPECT_TRUE(passesSizeTest(threads, 4, 120, smallestFile));
    EXPECT_EQ(passesSizeTest(threads, 4, 120, smallestFile - 1), smallestFile == 0);
}
INSTANTIATE_TEST_SUITE_P(Rows, JanomeSizeTest,
                         testing::Values(SizeRow{0, 120}, SizeRow{1, 124}, SizeRow{-1, 116}, SizeRow{-30, 0},
                                         SizeRow{-31, 0}, SizeRow{0x1FFFFFE1, 0x7FFFFFFC}, SizeRow{0x1FFFFFE2, 0},
                                         SizeRow{0x3FFFFFFF, 116}, SizeRow{0x40000000, 120}, SizeRow{0x40000001, 124},
                                         SizeRow{std::numeric_limits<std::int32_t>::min(), 120}));

TEST(JanomeStitchOffset, NeedsFourBytesBehindIt) {
    EXPECT_TRUE(isStitchOffset(0, 4));
    EXPECT_FALSE(isStitchOffset(0, 3));
    EXPECT_TRUE(isStitchOffset(96, 100));
    EXPECT_FALSE(isStitchOffset(97, 100));
    EXPECT_FALSE(isStitchOffset(-1, 100));
    EXPECT_FALSE(isStitchOffset(std::numeric_limits<std::int32_t>::max(), 100));
    EXPECT_FALSE(isStitchOffset(std::numeric_limits<std::int32_t>::min(), 100));
}

TEST(JanomeTables, AreReadWholeOrNotAtAll) {
    const Bytes file = bytes(9, 9, test::janomeTables({.indices = {1, 0}, .tensions = {-5, 0x7FFFFFFF}}));
    for (std::size_t length = 0; length < file.size(); ++length) {
        VLMDesign design;
        EXPECT_FALSE(readJanomeThreads(design, std::span(file).first(length), 2, 2));
        EXPECT_TRUE(design.threads().empty());
    }
    VLMDesign design;
    EXPECT_TRUE(readJanomeThreads(design, file, 2, 2));
    EXPECT_EQ(test::keysOf(design), (std::vector<Text>{"002", "220"}));
    EXPECT_EQ(test::tensionsOf(design), (std::vector<std::int32_t>{-5, 0x7FFFFFFF}));
}

TEST(JanomeTables, OfNoThreadsAreAlwaysThere) {
    VLMDesign design;
    EXPECT_TRUE(readJanomeThreads(design, {}, 2, 0));
    EXPECT_TRUE(readJanomeThreads(design, {}, 2, -1));
    EXPECT_TRUE(design.threads().empty());
}

}  // namespace
}  // namespace velamo
