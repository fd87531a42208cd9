#include "velamo/formats/jef.h"

#include <gtest/gtest.h>

#include <ostream>

#include "tests/support/janome_files.h"
#include "tests/support/stitches.h"
#include "tests/support/temporary_folder.h"
#include "velamo/formats/import.h"

namespace velamo {
namespace {

using test::boundsOf;
using test::Bytes;
using test::bytes;
using test::change;
using test::jefColorCountOffset;
using test::jefFile;
using test::jump;
using test::keysOf;
using test::le32;
using test::noBounds;
using test::repeated;
using test::stitch;
using test::tensionsOf;
using test::with;
using Keys = std::vector<Text>;
using Stitches = std::vector<VLMStitch>;
using Tensions = std::vector<std::int32_t>;

const std::map<int, std::string> messages{{20, "Unable to import JEF file (no meta data)."},
                                          {21, "Unable to import JEF file (no color codes)."},
                                          {23, "Unable to import JEF file (invalid offset)."},
                                          {24, "Unable to import JEF file (color changes)."}};

TEST(JefReading, GivesThreadsAndStitches) {
    VLMDesign design;
    VLMError error;
    const Bytes file =
        jefFile({.indices = {1, 25},
                 .tensions = {7, -3},
                 .stream = bytes(10, 0xF6, 0x80, 2, 1, 2, 0x80, 4, 3, 4, 0x80, 1, 5, 6, 0x80, 0x10, 0, 0)});
    EXPECT_TRUE(readJef(design, file, "jef", &error)) << error.message();
    EXPECT_EQ(error.code, 0);
    EXPECT_EQ(design.stitches(), (Stitches{stitch(10, -10), jump(1, 2), jump(3, 4), change(5, 6)}));
    EXPECT_EQ(keysOf(design), (Keys{"002", "227"}));
    EXPECT_EQ(tensionsOf(design), (Tensions{7, -3}));
    EXPECT_EQ(boundsOf(design), (test::Bounds{10, -10, 19, 2}));
    EXPECT_EQ(design.hoopVendor(), "Janome");
    EXPECT_EQ(design.hoopCode(), 28);
}

/// Files whose header makes no sense. Sizes and offsets count in 32 bits on the machines and wrap around there.
struct HeaderRow {
    const char* name;
    std::int64_t colorCount;
    std::int64_t stitchOffset;
    std::size_t fileSize;
    int code;
};
class JefHeader : public testing::TestWithParam<HeaderRow> {};
TEST_P(JefHeader, FailsByTheFirstCheckThatFinds) {
    const HeaderRow& row = GetParam();
    Bytes file = repeated(row.fileSize, 0);
    file = with(file, 0, bytes(le32(row.stitchOffset), 0x82));
    file = with(file, jefColorCountOffset, le32(row.colorCount));
    file = with(file, 32, le32(4));
    VLMDesign design;
    VLMError error;
    EXPECT_FALSE(readJef(design, file, "jef", &error));
    EXPECT_EQ(error.code, row.code);
    EXPECT_EQ(error.recoverySuggestion, messages.at(row.code));
    EXPECT_EQ(error.domain, "de.velamo.vlmdesign.ErrorDomain");
    EXPECT_TRUE(design.threads().empty());
    EXPECT_TRUE(design.stitches().empty());
    // Type, version and hoop are known by then; the bounds are still what they were.
    EXPECT_EQ(design.designType(), "JEF");
    EXPECT_EQ(design.designVersion(), -126);
    EXPECT_EQ(design.hoopCode(), 4);
    EXPECT_EQ(boundsOf(design), (test::Bounds{0, 0, 0, 0}));
}
INSTANTIATE_TEST_SUITE_P(
    Rows, JefHeader,
    testing::Values(
        HeaderRow{"SmallestFileHasNoTable", 0, 48, 52, 21}, HeaderRow{"ATableOfNothingNeeds120Bytes", 0, 0, 119, 21},
        HeaderRow{"FirstTableMissesAByte", 2, 0, 127, 21}, HeaderRow{"TableCheckComesBeforeTheOffset", 2, -1, 127, 21},
        HeaderRow{"SecondTableMissesAByte", 2, 0, 131, 21},
        HeaderRow{"OffsetIsCheckedBeforeTheSecondTable", 2, 128, 131, 23},
        HeaderRow{"CountThatWrapsToNothing", 0x40000000, 0, 200, 21},
        HeaderRow{"CountThatWrapsToNothingAndOffset", 0x40000000, 197, 200, 23},
        HeaderRow{"LargestCountThatDoesNotWrap", 0x1FFFFFE1, -1, 200, 21},
        HeaderRow{"SmallestCountThatWraps", 0x1FFFFFE2, -1, 200, 23}, HeaderRow{"LargestCount", 0x7FFFFFFF, 0, 200, 21},
        HeaderRow{"NegativeCountPasses", -17, 49, 52, 23}, HeaderRow{"NoCountAndOffset", 0, 117, 120, 23},
        HeaderRow{"OffsetLeavesThreeBytes", 1, 197, 200, 23}, HeaderRow{"OffsetAtTheEnd", 1, 200, 200, 23},
        HeaderRow{"OffsetPastTheEnd", 1, 1000, 200, 23}, HeaderRow{"NegativeOffset", 1, -1, 200, 23},
        HeaderRow{"OffsetThatWraps", 1, 0x7FFFFFFC, 200, 23}, HeaderRow{"LargestOffset", 1, 0x7FFFFFFF, 200, 23},
        HeaderRow{"SmallestOffset", 1, -0x80000000LL, 200, 23}),
    [](const auto& row) { return row.param.name; });

TEST(JefHeader, Below52BytesIsNone) {
    const Bytes whole = jefFile();
    for (std::size_t length = 0; length < 52; ++length) {
        VLMDesign design;
        VLMError error;
        EXPECT_FALSE(readJef(design, std::span(whole).first(length), "jef", &error));
        EXPECT_EQ(error.code, 20);
        EXPECT_EQ(error.recoverySuggestion, messages.at(20));
        EXPECT_EQ(design.designType(), std::nullopt);
        EXPECT_EQ(design.designHoop(), nullptr);
    }
}

TEST(JefHeader, MayBeReadAsStitches) {
    VLMDesign design;
    const Bytes file = with(jefFile({.stream = {}}), 0, bytes(le32(0), 0x80, 0x10));
    EXPECT_TRUE(readJef(design, file, "jef", nullptr));
    EXPECT_EQ(design.stitches(), (Stitches{stitch(0, 0), stitch(0, 0)}));
}

struct VersionRow {
    std::string extension;
    int version;
    std::string type;
    std::int32_t designVersion;
};
void PrintTo(const VersionRow& row, std::ostream* out) {
    *out << '"' << row.extension << "\" " << row.version;
}
class JefVersion : public testing::TestWithParam<VersionRow> {};
TEST_P(JefVersion, ComesFromTheFileAndItsName) {
    VLMDesign design;
    EXPECT_TRUE(readJef(design, jefFile({.version = GetParam().version}), GetParam().extension, nullptr));
    EXPECT_EQ(design.designType(), GetParam().type);
    EXPECT_EQ(design.designVersion(), GetParam().designVersion);
}
INSTANTIATE_TEST_SUITE_P(Rows, JefVersion,
                         testing::Values(VersionRow{"jef", 20, "JEF", 20}, VersionRow{"JEF", 20, "JEF", 20},
                                         VersionRow{"jef+", 20, "JEF+", 200}, VersionRow{"Jef+", 3, "JEF+", 30},
                                         VersionRow{"jef", 0x82, "JEF", -126}, VersionRow{"jef+", 0x80, "JEF+", -1280},
                                         VersionRow{"jpx", 20, "?", 0}, VersionRow{"", 20, "?", 0}));

struct HoopRow {
    int code;
    std::int32_t hoopCode;
};
void PrintTo(const HoopRow& row, std::ostream* out) {
    *out << row.code;
}
class JefHoop : public testing::TestWithParam<HoopRow> {};
TEST_P(JefHoop, IsThatOfTheCodeOrTheOneBefore) {
    VLMDesign design;
    ASSERT_TRUE(design.setHoopFromVendorwithCode("Pfaff", 3));
    EXPECT_TRUE(readJef(design, jefFile({.hoop = GetParam().code}), "jef", nullptr));
    EXPECT_EQ(design.hoopCode(), GetParam().hoopCode);
}
INSTANTIATE_TEST_SUITE_P(Rows, JefHoop,
                         testing::Values(HoopRow{0, 0}, HoopRow{28, 28}, HoopRow{5, 5}, HoopRow{33, 3},
                                         HoopRow{28 + 0x100, 3}, HoopRow{-1, -1}, HoopRow{-2, 3}));

TEST(JefThreads, OfUnknownIndicesAre220) {
    VLMDesign design;
    const Bytes stream = bytes(0x80, 1, 0, 0, 0x80, 1, 0, 0, 0x80, 1, 0, 0, 1, 1);
    EXPECT_TRUE(readJef(design, jefFile({.indices = {0, 200, 23, -1}, .tensions = {1, 2, 3, 4}, .stream = stream}),
                        "jef", nullptr));
    EXPECT_EQ(keysOf(design), (Keys(4, "220")));
    EXPECT_EQ(tensionsOf(design), (Tensions{1, 2, 3, 4}));
    for (const VLMThread& thread : design.threads()) {
        EXPECT_EQ(thread.paletteName(), "Janome Embroidery");
        EXPECT_EQ(thread.palette(), "Janome");
    }
}

TEST(JefThreads, AreAddedForFurtherColourChanges) {
    VLMDesign design;
    const Bytes stream = bytes(1, 1, 0x80, 1, 0, 0, 0x80, 1, 0, 0, 0x80, 1, 0, 0, 1, 1);
    EXPECT_TRUE(readJef(design, jefFile({.indices = {1, 4}, .tensions = {7, 9}, .stream = stream}), "jef", nullptr));
    // The grey of the added ones comes from the palette of the others; the rest is as in the last one.
    EXPECT_EQ(keysOf(design), (Keys{"002", "203", "221", "221"}));
    EXPECT_EQ(tensionsOf(design), (Tensions{7, 9, 9, 9}));
    EXPECT_EQ(design.threads()[2], design.threads()[3]);
    EXPECT_EQ(design.threads()[3].name(), "Gray");
    EXPECT_EQ(design.threads()[3].palette(), "Janome");
    EXPECT_EQ(design.threads()[1].key(), "203");
}

TEST(JefThreads, TooManyAreAnErrorThatKeepsEverything) {
    VLMDesign design;
    VLMError error;
    const Bytes file = jefFile({.indices = {1, 2, 4}, .tensions = {7, 8, 9}, .stream = bytes(1, 2, 0x80, 1, 3, 4)});
    EXPECT_FALSE(readJef(design, file, "jef", &error));
    EXPECT_EQ(error.code, 24);
    EXPECT_EQ(error.recoverySuggestion, messages.at(24));
    EXPECT_EQ(keysOf(design), (Keys{"002", "001", "203"}));
    EXPECT_EQ(design.stitches(), (Stitches{stitch(1, 2), change(3, 4)}));
    EXPECT_EQ(boundsOf(design), (test::Bounds{1, 2, 4, 6}));
}

class JefWithoutThreads : public testing::TestWithParam<int> {};
TEST_P(JefWithoutThreads, IsAnError) {
    VLMDesign design;
    VLMError error;
    Bytes file = jefFile({.indices = {}, .tensions = {}, .stream = bytes(1, 2, 0x80, 1, 3, 4)});
    file = with(file, jefColorCountOffset, le32(GetParam()));
    EXPECT_FALSE(readJef(design, file, "jef", &error));
    EXPECT_EQ(error.code, 24);
    EXPECT_TRUE(design.threads().empty());
    EXPECT_EQ(design.stitches(), (Stitches{stitch(1, 2), change(3, 4)}));
}
INSTANTIATE_TEST_SUITE_P(Counts, JefWithoutThreads, testing::Values(0, -1, std::numeric_limits<int>::min()));

TEST(JefBounds, OfNoStitchStayAtTheExtremes) {
    VLMDesign design;
    EXPECT_TRUE(readJef(design, jefFile({.stream = test::janomeEnd}), "jef", nullptr));
    EXPECT_EQ(boundsOf(design), noBounds);
    EXPECT_EQ(design.threads().size(), 1U);
}

TEST(JefImport, TellsTheVariantsApartByTheName) {
    const test::TemporaryFolder folder;
    for (const auto& [name, type, version] : {std::tuple{"x.jef", "JEF", 20}, {"x.JEF+", "JEF+", 200}}) {
        VLMDesign design;
        VLMError error;
        EXPECT_TRUE(importDesignFromURLerror(design, folder.write(name, jefFile({.version = 20})), &error))
            << error.message();
        EXPECT_EQ(design.designType(), type);
        EXPECT_EQ(design.designVersion(), version);
        EXPECT_EQ(design.displayRange(), (StitchRange{0, 1}));
    }
}

TEST(JefImport, OfAnEndMarkFindsNoStitches) {
    const test::TemporaryFolder folder;
    VLMDesign design;
    VLMError error;
    EXPECT_FALSE(importDesignFromURLerror(design, folder.write("x.jef", jefFile({.stream = test::janomeEnd})), &error));
    EXPECT_EQ(error.code, 11);
}

TEST(JefImport, LeavesTheTypeWhenTheFileIsNotThere) {
    const test::TemporaryFolder folder;
    VLMDesign design;
    VLMError error;
    EXPECT_FALSE(importJefDesignFromURLerror(design, folder.path() / "missing.jef", &error));
    EXPECT_EQ(error.code, 20);
    EXPECT_EQ(design.designType(), std::nullopt);
}

}  // namespace
}  // namespace velamo
