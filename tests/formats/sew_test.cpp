#include "velamo/formats/sew.h"

#include <gtest/gtest.h>

#include <ostream>

#include "tests/support/janome_files.h"
#include "tests/support/stitches.h"
#include "tests/support/temporary_folder.h"

namespace velamo {
namespace {

using test::boundsOf;
using test::Bytes;
using test::bytes;
using test::change;
using test::jump;
using test::keysOf;
using test::noBounds;
using test::sewFile;
using test::stitch;
using Stitches = std::vector<VLMStitch>;

struct Row {
    const char* name;
    Bytes stream;
    Stitches stitches;
};
class SewStream : public testing::TestWithParam<Row> {};
TEST_P(SewStream, GivesTheRow) {
    VLMDesign design;
    VLMError error;
    EXPECT_TRUE(readSew(design, sewFile({1}, GetParam().stream), &error)) << error.message();
    EXPECT_EQ(error.code, 0);
    EXPECT_EQ(design.stitches(), GetParam().stitches);
    EXPECT_EQ(design.threads().size(), 1U);  // colour changes add none
}
INSTANTIATE_TEST_SUITE_P(
    Rows, SewStream,
    testing::Values(Row{"OneByteIsNoStitch", bytes(1), {}},  //
                    Row{"Stitch", bytes(10, 0xF6), {stitch(10, -10)}},
                    Row{"LargestMoves", bytes(127, 0x80, 0x81, 127), {stitch(127, -128), stitch(-127, 127)}},
                    Row{"ColourChangeDoesNotMove", bytes(0x80, 1, 5, 5, 1, 2), {change(0, 0), stitch(1, 2)}},
                    Row{"Jump", bytes(0x80, 2, 0x80, 0x7F, 1, 2), {jump(-128, 127), stitch(1, 2)}},
                    Row{"04IsNoJump", bytes(0x80, 4, 5, 5), {stitch(0, 0), stitch(5, 5)}},
                    Row{"UnknownEscapeIsAStitchOnTheSpot",
                        bytes(0x80, 7, 5, 5, 0x80, 0x80, 6, 6),
                        {stitch(0, 0), stitch(5, 5), stitch(0, 0), stitch(6, 6)}},
                    Row{"EndMark", bytes(1, 2, 0x80, 0x10, 5, 5, 3, 4), {stitch(1, 2)}},
                    Row{"EndMarkFirst", bytes(0x80, 0x10, 0, 0), {}},
                    Row{"EscapeWithTwoBytesLeftEnds", bytes(1, 2, 0x80, 7), {stitch(1, 2)}},
                    Row{"EscapeWithThreeBytesLeftEnds", bytes(1, 2, 0x80, 2, 5), {stitch(1, 2)}},
                    Row{"TrailingByteIsNotRead", bytes(1, 2, 3), {stitch(1, 2)}},
                    Row{"TrailingEscapeIsNotRead", bytes(1, 2, 0x80), {stitch(1, 2)}}),
    [](const auto& row) { return row.param.name; });

TEST(SewLength, UpTo7544BytesIsNoFile) {
    const Bytes whole = sewFile({1}, bytes(9));
    for (const std::size_t length : {0U, 1U, 2U, 4U, 100U, 7543U, 7544U}) {
        VLMDesign design;
        VLMError error;
        EXPECT_FALSE(readSew(design, std::span(whole).first(length), &error));
        EXPECT_EQ(error.code, 90);
        EXPECT_EQ(error.recoverySuggestion, "Unable to read SEW: file size too small to hold any stitches.");
        EXPECT_EQ(error.domain, "de.velamo.vlmdesign.ErrorDomain");
        EXPECT_TRUE(design.threads().empty());
    }
    VLMDesign design;
    EXPECT_TRUE(readSew(design, whole, nullptr));
    EXPECT_TRUE(design.stitches().empty());
    EXPECT_EQ(design.threads().size(), 1U);
    EXPECT_EQ(boundsOf(design), noBounds);
}

TEST(SewThreads, AreOneToTwelve) {
    for (const std::size_t count : {0U, 13U, 0x100U, 0x10CU, 0xFFFFU}) {
        Bytes file = sewFile({}, bytes(1, 2));
        file = test::with(file, 0, test::le16(static_cast<std::int64_t>(count)));
        VLMDesign design;
        VLMError error;
        EXPECT_FALSE(readSew(design, file, &error)) << count;
        EXPECT_EQ(error.code, 91);
        EXPECT_EQ(error.recoverySuggestion, "Unable to read SEW: Number of colors invalid.");
        EXPECT_TRUE(design.threads().empty());
    }
    for (const std::size_t count : {1U, 12U}) {
        VLMDesign design;
        EXPECT_TRUE(readSew(design, sewFile(std::vector<int>(count, 2), bytes(1, 2)), nullptr));
        EXPECT_EQ(keysOf(design), std::vector<Text>(count, Text("001")));
    }
}

TEST(SewThreads, AreThoseOfTheirIndices) {
    VLMDesign design;
    ASSERT_TRUE(readSew(design, sewFile({1, 12, 25, 78}, bytes(1, 2)), nullptr));
    EXPECT_EQ(keysOf(design), (std::vector<Text>{"002", "207", "227", "224"}));
    for (const VLMThread& thread : design.threads()) {
        EXPECT_EQ(thread.palette(), "Janome");
        EXPECT_EQ(thread.paletteName(), "Janome Embroidery");
        EXPECT_EQ(thread.tension(), 13);
    }
    EXPECT_EQ(design.threads()[0].color(), VLMColor::initWithRedgreenblue(0, 0, 0));
}

TEST(SewThreads, OfUnknownIndicesAreGreyWithoutAnother) {
    VLMDesign design;
    ASSERT_TRUE(readSew(design, sewFile({0, 79, 0xFFFF}, bytes(1, 2)), nullptr));
    EXPECT_EQ(keysOf(design), (std::vector<Text>{"x9", std::nullopt, std::nullopt}));
    for (const VLMThread& thread : design.threads()) {
        EXPECT_EQ(thread.color(), VLMColor());
        EXPECT_EQ(thread.palette(), "Janome");
        EXPECT_EQ(thread.paletteName(), "");
    }
}

struct VersionRow {
    std::vector<int> indices;
    std::int32_t version;
};
void PrintTo(const VersionRow& row, std::ostream* out) {
    *out << testing::PrintToString(row.indices);
}
class SewVersion : public testing::TestWithParam<VersionRow> {};
TEST_P(SewVersion, IsThatOfTheIndices) {
    const test::TemporaryFolder folder;
    VLMDesign design;
    const auto file = folder.write("x.sew", sewFile(GetParam().indices, bytes(1, 2)));
    ASSERT_TRUE(importSewDesignFromURLerror(design, file, nullptr));
    EXPECT_EQ(design.designVersion(), GetParam().version);
    EXPECT_EQ(design.designType(), "SEW");
}
INSTANTIATE_TEST_SUITE_P(Rows, SewVersion,
                         testing::Values(VersionRow{{0, 1, 2, 12}, 10}, VersionRow{{13}, 20}, VersionRow{{13, 1}, 20},
                                         VersionRow{{1, 200, 1}, 20}));

TEST(SewBounds, AreThoseOfEveryPositionButTheOrigin) {
    VLMDesign design;
    ASSERT_TRUE(readSew(design, sewFile({1}, bytes(10, 5, 0x80, 2, 20, 0xF6, 0x80, 1, 99, 99, 0xFF, 0)), nullptr));
    EXPECT_EQ(boundsOf(design), (test::Bounds{10, -5, 30, 5}));
}

TEST(SewImport, SetsTypeAndVersionEvenWhenItFails) {
    const test::TemporaryFolder folder;
    VLMDesign design;
    design.setDesignVersion(99);
    VLMError error;
    EXPECT_FALSE(importSewDesignFromURLerror(design, folder.path() / "missing.sew", &error));
    EXPECT_EQ(error.code, 90);
    EXPECT_EQ(design.designType(), "SEW");
    EXPECT_EQ(design.designVersion(), 10);
}

}  // namespace
}  // namespace velamo
