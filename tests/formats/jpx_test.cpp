#include "velamo/formats/jpx.h"

#include <gtest/gtest.h>

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
using test::jpxColorCountOffset;
using test::jpxFile;
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

const std::map<int, std::string> messages{{210, "Unable to import JPX file (no meta data)."},
                                          {211, "Unable to import JPX file (no color codes)."},
                                          {212, "Unable to import JPX file (invalid offset)."}};

TEST(JpxReading, GivesThreadsAndStitches) {
    VLMDesign design;
    VLMError error;
    const Bytes file =
        jpxFile({.indices = {1, 200},
                 .tensions = {7, -3},
                 .version = 0x82,
                 .stream = bytes(10, 0xF6, 0x80, 2, 1, 2, 0x80, 4, 3, 4, 0x80, 1, 5, 6, 0x80, 0x10, 0, 0)});
    EXPECT_TRUE(readJpx(design, file, &error)) << error.message();
    EXPECT_EQ(error.code, 0);
    EXPECT_EQ(design.stitches(), (Stitches{stitch(10, -10), jump(1, 2), jump(3, 4), change(5, 6)}));
    EXPECT_EQ(keysOf(design), (Keys{"002", "220"}));
    EXPECT_EQ(tensionsOf(design), (Tensions{7, -3}));
    EXPECT_EQ(boundsOf(design), (test::Bounds{10, -10, 19, 2}));
    EXPECT_EQ(design.hoopVendor(), "Janome");
    EXPECT_EQ(design.hoopCode(), 28);
    EXPECT_EQ(design.designVersion(), -126);
}

/// Sizes and offsets count in 32 bits on the machines and wrap around there.
struct HeaderRow {
    const char* name;
    std::int64_t colorCount;
    std::int64_t stitchOffset;
    std::size_t fileSize;
    int code;
    std::size_t threads = 0;
};
class JpxHeader : public testing::TestWithParam<HeaderRow> {};
TEST_P(JpxHeader, FailsByTheFirstCheckThatFinds) {
    const HeaderRow& row = GetParam();
    Bytes file = repeated(row.fileSize, 0);
    file = with(file, 0, bytes(le32(row.stitchOffset), 5));
    file = with(file, jpxColorCountOffset, le32(row.colorCount));
    file = with(file, 40, le32(4));
    VLMDesign design;
    VLMError error;
    EXPECT_EQ(readJpx(design, file, &error), row.code == 0);
    EXPECT_EQ(error.code, row.code);
    EXPECT_EQ(error.recoverySuggestion, row.code == 0 ? "" : messages.at(row.code));
    EXPECT_EQ(design.threads().size(), row.threads);
    EXPECT_EQ(design.stitches().empty(), row.code != 0);
    // Version and hoop are known by then.
    EXPECT_EQ(design.designVersion(), 5);
    EXPECT_EQ(design.hoopCode(), 4);
}
INSTANTIATE_TEST_SUITE_P(
    Rows, JpxHeader,
    testing::Values(
        HeaderRow{"SmallestFile", 0, 116, 120, 0}, HeaderRow{"SevenThreadsFitIn120Bytes", 7, 116, 120, 0, 7},
        HeaderRow{"EightNeed124Bytes", 8, 116, 123, 211}, HeaderRow{"EightFitIn124Bytes", 8, 116, 124, 0, 8},
        HeaderRow{"TablesAreCheckedBeforeTheOffset", 8, -1, 123, 211},
        HeaderRow{"CountThatWrapsToNothing", 0x20000000, 0, 200, 211},
        HeaderRow{"CountThatWrapsToNothingAndOffset", 0x20000000, 197, 200, 212},
        HeaderRow{"LargestCountThatDoesNotWrap", 0x0FFFFFF8, -1, 200, 211},
        HeaderRow{"SmallestCountThatWraps", 0x0FFFFFF9, -1, 200, 212},
        HeaderRow{"LargestCount", 0x7FFFFFFF, 0, 200, 211}, HeaderRow{"NegativeCountIsNone", -1, 0, 120, 0},
        HeaderRow{"OffsetLeavesFourBytes", 1, 196, 200, 0, 1}, HeaderRow{"OffsetLeavesThreeBytes", 1, 197, 200, 212},
        HeaderRow{"OffsetAtTheEnd", 1, 200, 200, 212}, HeaderRow{"NegativeOffset", 1, -1, 200, 212},
        HeaderRow{"OffsetThatWraps", 1, 0x7FFFFFFC, 200, 212}, HeaderRow{"SmallestOffset", 1, -0x80000000LL, 200, 212}),
    [](const auto& row) { return row.param.name; });

TEST(JpxHeader, Below120BytesIsNone) {
    const Bytes whole = jpxFile();
    for (std::size_t length = 0; length < 120; ++length) {
        VLMDesign design;
        VLMError error;
        EXPECT_FALSE(readJpx(design, std::span(whole).first(length), &error));
        EXPECT_EQ(error.code, 210);
        EXPECT_EQ(error.recoverySuggestion, messages.at(210));
        EXPECT_EQ(error.domain, "de.velamo.vlmdesign.ErrorDomain");
        EXPECT_EQ(design.designVersion(), 0);
        EXPECT_EQ(design.designHoop(), nullptr);
    }
}

TEST(JpxThreads, NeedNotMatchTheColourChanges) {
    Bytes stream;
    for (int i = 0; i < 5; ++i) stream = bytes(stream, 0x80, 1, 0, 0);
    VLMDesign design;
    EXPECT_TRUE(readJpx(design, jpxFile({.indices = {1, 2}, .tensions = {7, 8}, .stream = stream}), nullptr));
    EXPECT_EQ(keysOf(design), (Keys{"002", "001"}));
    EXPECT_EQ(design.stitches(), Stitches(5, change(0, 0)));
    VLMDesign other;
    EXPECT_TRUE(readJpx(other, jpxFile({.indices = {1, 2, 4}, .tensions = {7, 8, 9}}), nullptr));
    EXPECT_EQ(keysOf(other), (Keys{"002", "001", "203"}));
}

TEST(JpxBounds, OfNoStitchStayAtTheExtremes) {
    VLMDesign design;
    EXPECT_TRUE(readJpx(design, jpxFile({.stream = test::janomeEnd}), nullptr));
    EXPECT_EQ(boundsOf(design), noBounds);
}

TEST(JpxImport, WithoutThreadsFails) {
    const test::TemporaryFolder folder;
    VLMDesign design;
    VLMError error;
    const auto file = folder.write("x.jpx", jpxFile({.indices = {}, .tensions = {}, .stream = bytes(1, 2, 3, 4)}));
    // 120 bytes: the smallest file that is one.
    EXPECT_EQ(std::filesystem::file_size(file), 120U);
    EXPECT_FALSE(importDesignFromURLerror(design, file, &error));
    EXPECT_EQ(error.code, 12);
}

TEST(JpxImport, SetsTheTypeEvenWhenItFails) {
    const test::TemporaryFolder folder;
    VLMDesign design;
    design.setDesignVersion(99);
    VLMError error;
    EXPECT_FALSE(importJpxDesignFromURLerror(design, folder.path() / "missing.jpx", &error));
    EXPECT_EQ(error.code, 210);
    EXPECT_EQ(design.designType(), "JPX");
    EXPECT_EQ(design.designVersion(), 99);
}

}  // namespace
}  // namespace velamo
