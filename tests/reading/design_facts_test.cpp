#include "reading/design_facts.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

#include "tests/support/designs.h"

namespace velamo {
namespace {

using test::change;
using test::sewn;
using test::stitch;
using test::threadOf;

TEST(DesignFacts, TellTheThreadsThatSew) {
    VLMDesign design =
        sewn({stitch(0, 0), stitch(30, 40), change(0, 0), change(0, 0), stitch(0, 0), stitch(0, -100)}, 0);
    design.setDesignType("PES");
    design.setDesignVersion(10);
    design.threads().push_back(threadOf("800"));
    design.threads().push_back(threadOf("843"));
    design.threads().push_back(threadOf("7", "Undefined"));
    const DesignFacts facts = factsOfDesign(design);
    EXPECT_EQ(facts.attributes, attributesOfDesign(design));
    EXPECT_EQ(facts.format, "PES");
    EXPECT_EQ(facts.version, 10);
    EXPECT_EQ(facts.blocks, 2);
    EXPECT_DOUBLE_EQ(facts.length, 15);
    ASSERT_EQ(facts.threads.size(), 2U);
    EXPECT_EQ(facts.threads[0],
              (ThreadFacts{.color = 0xED171F, .name = "Red", .palette = "Brother", .stitches = 2, .length = 5}));
    EXPECT_EQ(facts.threads[1], (ThreadFacts{.color = {}, .name = {}, .palette = {}, .stitches = 2, .length = 10}));
    EXPECT_EQ(facts.hoop, std::nullopt);
}

TEST(DesignFacts, TellTheHoop) {
    VLMDesign design = sewn({stitch(0, 0), stitch(30, 40)});
    ASSERT_TRUE(design.setHoopFromVendorwithCode("Janome", 2));
    EXPECT_EQ(factsOfDesign(design).hoop, (HoopFacts{"Janome", "B/RE", 140, 200}));
}

TEST(DesignFacts, TellNoThreadThatTheDesignLacks) {
    const VLMDesign design = sewn({stitch(0, 0), change(0, 0), stitch(1, 0), change(0, 0), stitch(1, 0)}, 1);
    EXPECT_EQ(factsOfDesign(design).blocks, 3);
    EXPECT_EQ(factsOfDesign(design).threads.size(), 1U);
}

/// Whatever a file holds, many designs' threads fit into memory, and into an answer.
TEST(DesignFacts, LeaveOutWhatIsTooMuch) {
    std::vector<VLMStitch> stitches;
    for (int i = 0; i < 5000; ++i) stitches.insert(stitches.end(), {change(0, 0), stitch(1, 0)});
    const DesignFacts facts = factsOfDesign(sewn(stitches, 5000));
    EXPECT_EQ(facts.blocks, 5000);
    EXPECT_LE(facts.threads.size() * sizeof(ThreadFacts), mostBytesOfThreads);
    EXPECT_GT(facts.threads.size(), 300U);
}

struct NameRow {
    const char* name;
    std::size_t length;
    bool isKept;
};
class ThreadNames : public testing::TestWithParam<NameRow> {};
TEST_P(ThreadNames, HaveTheLengthOfNames) {
    VLMDesign design = sewn({stitch(0, 0), stitch(1, 0)});
    const std::string name(GetParam().length, 'x');
    design.threads()[0].setName(name);
    EXPECT_EQ(factsOfDesign(design).threads.at(0).name, GetParam().isKept ? Text(name) : Text());
}
INSTANTIATE_TEST_SUITE_P(Rows, ThreadNames,
                         testing::Values(NameRow{"Longest", longestThreadText, true},
                                         NameRow{"TooLong", longestThreadText + 1, false}),
                         [](const auto& row) { return row.param.name; });

struct ColorRow {
    const char* name;
    double red;
    double green;
    double blue;
    std::uint32_t number;
};
class ColorNumbers : public testing::TestWithParam<ColorRow> {};
TEST_P(ColorNumbers, AreBytes) {
    const ColorRow& row = GetParam();
    EXPECT_EQ(colorNumber(VLMColor::initWithRedgreenblue(row.red, row.green, row.blue)), row.number);
}
INSTANTIATE_TEST_SUITE_P(
    Rows, ColorNumbers,
    testing::Values(ColorRow{"Red", 1, 0, 0, 0xFF0000}, ColorRow{"Rounded", 0.5, 0.001, 0.003, 0x800001},
                    ColorRow{"Outside", -1, 2, 1e300, 0x00FFFF},
                    ColorRow{"NoNumber", std::numeric_limits<double>::quiet_NaN(), 1, 0, 0x00FF00}),
    [](const auto& row) { return row.param.name; });

}  // namespace
}  // namespace velamo
