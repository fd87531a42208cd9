#include <gtest/gtest.h>

#include "tests/support/bytes.h"
#include "tests/support/designs.h"
#include "tests/support/temporary_folder.h"
#include "velamo/formats/exp.h"

namespace velamo {
namespace {

using test::bytes;
using test::Bytes;
using test::change;
using test::jump;
using test::sewn;
using test::stitch;

struct Row {
    const char* name;
    std::vector<VLMStitch> stitches;
    Bytes file;
};
class ExpWriting : public testing::TestWithParam<Row> {};
TEST_P(ExpWriting, GivesTheRow) {
    EXPECT_EQ(writeExp(sewn(GetParam().stitches)), GetParam().file);
}
INSTANTIATE_TEST_SUITE_P(
    Rows, ExpWriting,
    testing::Values(
        Row{"Stitch", {stitch(3, -2)}, bytes(3, 0xFE)}, Row{"NoStitch", {}, bytes()},
        Row{"Jump", {jump(-1, 7)}, bytes(0x80, 2, 0xFF, 7)},
        Row{"ColourChangeWithMove", {change(5, 5)}, bytes(0x80, 1, 0, 0, 5, 5)},
        Row{"ColourChangeThatJumps", {{5, -5, true, true}}, bytes(0x80, 1, 0, 0, 0x80, 2, 5, 0xFB)},
        Row{"FractionsAddUp",
            {stitch(0.3F, 0), stitch(0.3F, 0), stitch(0.3F, 0), stitch(0.3F, 0)},
            bytes(0, 0, 0, 0, 0, 0, 1, 0)},
        Row{"RoundedDown", {stitch(-0.5F, -0.5F), stitch(0.5F, 0.5F)}, bytes(0xFF, 0xFF, 1, 1)},
        Row{"FractionsOfAllKinds", {jump(0.5F, 0), change(0.5F, 0)}, bytes(0x80, 2, 0, 0, 0x80, 1, 0, 0, 1, 0)},
        Row{"LongestMoves", {stitch(127, -127)}, bytes(127, 0x81)},
        Row{"WhatIsTooLongWrapsAround", {stitch(130, -200), stitch(1000, 256)}, bytes(130, 56, 0xE8, 0)}),
    [](const auto& row) { return row.param.name; });

TEST(ExpExport, LeavesTheDesignAsReadingGivesIt) {
    const test::TemporaryFolder folder;
    for (const bool useThreadFile : {false, true}) {
        VLMDesign design = sewn({stitch(1, 1)}, 25);
        design.setUseThreadFile(useThreadFile);
        design.setHoopFromVendorwithCode("Janome", 28);
        ASSERT_TRUE(exportExpDesignToURLerror(design, folder.path() / "rose.exp", nullptr));
        EXPECT_EQ(test::TemporaryFolder::read(folder.path() / "rose.exp"), "\x01\x01");
        EXPECT_EQ(design.designType(), "EXP");
        EXPECT_EQ(design.designVersion(), 10);
        EXPECT_EQ(design.designHoop(), nullptr);
        EXPECT_EQ(test::keysOf(design), useThreadFile ? std::vector<Text>(25, "800") : test::numberedKeys(25));
        EXPECT_EQ(design.threads()[24].palette(), useThreadFile ? "Brother" : "Undefined");
    }
}

TEST(ExpExport, ReportsTheSystemsErrorAndChangesNothing) {
    const test::TemporaryFolder folder;
    VLMDesign design = sewn({stitch(1, 1)});
    VLMError error;
    EXPECT_FALSE(exportExpDesignToURLerror(design, folder.path(), &error));
    EXPECT_EQ(error.domain, systemErrorDomain);
    EXPECT_EQ(error.code, EISDIR);
    EXPECT_FALSE(design.designType());
    EXPECT_EQ(test::keysOf(design), std::vector<Text>{"800"});
}

TEST(ExpExport, SurvivesAwkwardNumbers) {
    for (const VLMDesign& design : test::awkwardDesigns())
        EXPECT_GE(writeExp(design).size(), 2 * design.stitches().size());
}

}  // namespace
}  // namespace velamo
