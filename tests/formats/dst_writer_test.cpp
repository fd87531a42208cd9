#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "tests/support/bytes.h"
#include "tests/support/designs.h"
#include "tests/support/other_user.h"
#include "tests/support/temporary_folder.h"
#include "velamo/formats/dst.h"

namespace velamo {
namespace {

using test::bytes;
using test::Bytes;
using test::change;
using test::jump;
using test::sewn;
using test::stitch;

constexpr std::size_t headerSize = 512;
const Bytes closing = bytes(0, 0, 0xF3, 0x1A);

/// A design whose box is wide enough for anything, whatever its stitches are.
VLMDesign boundlessDesign(std::vector<VLMStitch> stitches, std::size_t threads = 1) {
    VLMDesign design = sewn(std::move(stitches), threads);
    design.setXMin(-1);
    design.setXMax(1);
    design.setYMin(-1);
    design.setYMax(1);
    return design;
}

Bytes fileOf(const VLMDesign& design) {
    VLMError error;
    const auto file = writeDst(design, &error);
    EXPECT_TRUE(file) << error.message();
    return file.value_or(Bytes());
}

std::string headerOf(const VLMDesign& design) {
    const Bytes file = fileOf(design);
    return {file.begin(), file.begin() + headerSize};
}

Bytes recordsOf(const VLMDesign& design) {
    const Bytes file = fileOf(design);
    EXPECT_EQ(Bytes(file.end() - 4, file.end()), closing);
    return {file.begin() + headerSize, file.end() - 4};
}

TEST(DstHeaderWriting, FillsEveryField) {
    VLMDesign design = sewn({stitch(100, -200), change(0, 0), stitch(-150, 300)}, 2);
    design.setDesignName("Rose.jef");
    const std::string lines =
        "LA:Rose            \rST:      5\rCO:  1\r+X:  100\r-X:   50\r+Y:  100\r-Y:  200\rAX:-   50\rAY:+  100\r"
        "MX:+    0\rMY:+    0\rPD:******\r\x1A";
    EXPECT_EQ(headerOf(design), lines + std::string(headerSize - lines.size(), ' '));
    EXPECT_EQ(lines.size(), 125U);
}

struct LabelRow {
    const char* name;
    Text designName;
    std::string label;
};
class DstLabels : public testing::TestWithParam<LabelRow> {};
TEST_P(DstLabels, HaveSixteenCharacters) {
    VLMDesign design = boundlessDesign({stitch(1, 1)});
    design.setDesignName(GetParam().designName);
    const std::string header = headerOf(design);
    EXPECT_EQ(header.size(), headerSize);
    EXPECT_EQ(header.substr(0, 23), "LA:" + GetParam().label + "\rST:");
}
INSTANTIATE_TEST_SUITE_P(
    Rows, DstLabels,
    testing::Values(LabelRow{"Padded", "Rose.jef", "Rose            "},
                    LabelRow{"CutToSixteen", "abcdefghijklmnopqrst.dst", "abcdefghijklmnop"},
                    LabelRow{"WithoutLastExtensionOnly", "a.b.dst", "a.b             "},
                    LabelRow{"Absent", {}, "                "}, LabelRow{"Empty", "", "                "},
                    LabelRow{"Accents", "Caf\u00E9 \u0141.dst", "Cafe ?          "},
                    LabelRow{"Picture", "\U0001F339 rose.dst", "? rose          "},
                    LabelRow{
                        "SixteenPictures",
                        "\U0001F339\U0001F339\U0001F339\U0001F339\U0001F339\U0001F339\U0001F339\U0001F339\U0001F339"
                        "\U0001F339\U0001F339\U0001F339\U0001F339\U0001F339\U0001F339\U0001F339\U0001F339.dst",
                        "????????????????"},
                    LabelRow{"NoUtf8", "a\xFF\xFE.dst", "a??             "}),
    [](const auto& row) { return row.param.name; });

struct EndRow {
    const char* name;
    float x;
    float y;
    std::string fields;
};
class DstEndPoints : public testing::TestWithParam<EndRow> {};
TEST_P(DstEndPoints, AreTheRawSum) {
    EXPECT_EQ(headerOf(boundlessDesign({stitch(GetParam().x, GetParam().y)})).substr(74, 20), GetParam().fields);
}
INSTANTIATE_TEST_SUITE_P(Rows, DstEndPoints,
                         testing::Values(EndRow{"SignThenSpacesThenDigits", -1234, 56, "AX:- 1234\rAY:+   56\r"},
                                         EndRow{"Truncated", 1.9F, -1.9F, "AX:+    1\rAY:-    1\r"},
                                         EndRow{"TruncatedToZeroIsPlus", -0.9F, -0.0F, "AX:+    0\rAY:+    0\r"},
                                         EndRow{"Farthest", 99999, -99999, "AX:+99999\rAY:-99999\r"}),
                         [](const auto& row) { return row.param.name; });

TEST(DstHeaderWriting, TruncatesTheBounds) {
    VLMDesign design = sewn({stitch(1, 1)});
    design.setXMax(12.9F);
    design.setXMin(-3.9F);
    design.setYMax(99999);
    design.setYMin(-0.5F);
    EXPECT_EQ(headerOf(design).substr(38, 36), "+X:   12\r-X:    3\r+Y:99999\r-Y:    0\r");
}

struct RecordRow {
    const char* name;
    std::vector<VLMStitch> stitches;
    Bytes records;
};
class DstRecords : public testing::TestWithParam<RecordRow> {};
TEST_P(DstRecords, AreThoseOfTheRow) {
    EXPECT_EQ(recordsOf(boundlessDesign(GetParam().stitches)), GetParam().records);
}
INSTANTIATE_TEST_SUITE_P(
    Rows, DstRecords,
    testing::Values(RecordRow{"Stitch", {stitch(1, 0)}, bytes(1, 0, 3)},
                    RecordRow{"Jump", {jump(0, 1)}, bytes(0x80, 0, 0x83)},
                    RecordRow{"ColourChangeWithMove", {change(-1, -1)}, bytes(0x42, 0, 0xC3)},
                    RecordRow{"ColourChangeThatJumps", {{0, 0, true, true}}, bytes(0, 0, 0xC3)},
                    RecordRow{"FractionsAddUp",
                              {stitch(0.4F, 0), stitch(0.4F, 0), stitch(0.4F, 0)},
                              bytes(0, 0, 3, 0, 0, 3, 1, 0, 3)},
                    RecordRow{"RoundedDown", {stitch(-0.5F, 0), stitch(0.5F, 0)}, bytes(2, 0, 3, 1, 0, 3)},
                    RecordRow{"RoundedDownInY", {stitch(0, -0.5F), stitch(0, 0.5F)}, bytes(0x40, 0, 3, 0x80, 0, 3)},
                    RecordRow{"WhatIsTooLongGoesOn",
                              {stitch(130, 0), stitch(0, 0), stitch(0, 0)},
                              bytes(0x05, 0x05, 0x07, 0x04, 0, 3, 0, 0, 3)},
                    RecordRow{"TooLongTheOtherWay",
                              {stitch(0, -250), stitch(0, 1), stitch(0, 0)},
                              bytes(0x50, 0x50, 0x13, 0x50, 0x50, 0x13, 0x50, 0x80, 3)},
                    RecordRow{"CarryOfTheLastIsLost", {stitch(500, 0.9F)}, bytes(0x05, 0x05, 0x07)}),
    [](const auto& row) { return row.param.name; });

TEST(DstRecords, HoldEveryMoveThatFits) {
    std::vector<VLMStitch> stitches;
    for (int move = -121; move <= 121; ++move)
        for (const int other : {-121, -40, -13, -1, 0, 5, 14, 41, 121})
            stitches.push_back(stitch(static_cast<float>(move), static_cast<float>(other)));
    VLMDesign design;
    ASSERT_TRUE(readDst(design, fileOf(boundlessDesign(stitches)), nullptr));
    EXPECT_EQ(design.stitches(), stitches);
}

/// The record of a move as one would write it down step by step, for comparison: the weights from the largest on.
struct PlainAxis {
    float carry = 0;

    std::uint32_t take(float delta, const std::array<std::pair<int, int>, 5>& bits) {
        const float whole = std::floor(delta + carry);
        float v = whole;
        std::uint32_t record = 0;
        constexpr std::array<float, 5> weights{81, 27, 9, 3, 1};
        constexpr std::array<float, 5> limits{41, 14, 5, 2, 1};
        for (std::size_t i = 0; i < weights.size(); ++i) {
            if (v >= limits[i]) {
                record |= 1U << bits[i].first;
                v -= weights[i];
            }
            if (v <= -limits[i]) {
                record |= 1U << bits[i].second;
                v += weights[i];
            }
        }
        carry = carry + delta - whole + v;
        return record;
    }
};

TEST(DstRecords, AgreeWithThePlainEncoder) {
    std::mt19937 random(5);
    std::uniform_real_distribution<float> any(-140, 140);
    std::vector<VLMStitch> stitches;
    Bytes records;
    PlainAxis x;
    PlainAxis y;
    for (int i = 0; i < 50000; ++i) {
        const bool isWhole = random() % 2 == 0;
        const float dx = isWhole ? std::floor(any(random)) : any(random);
        const float dy = random() % 5 == 0 ? any(random) * 1000 : any(random);
        stitches.push_back(stitch(dx, dy));
        const std::uint32_t record = x.take(dx, {{{18, 19}, {10, 11}, {2, 3}, {8, 9}, {0, 1}}}) |
                                     y.take(dy, {{{21, 20}, {13, 12}, {5, 4}, {15, 14}, {7, 6}}}) | 0x030000U;
        for (const unsigned shift : {0U, 8U, 16U}) records.push_back(static_cast<std::uint8_t>(record >> shift));
    }
    stitches.push_back(stitch(static_cast<float>(-sewn(stitches).lastStitch().x), 0));
    VLMDesign design = boundlessDesign(stitches);
    design.stitches().all().back().setDeltaY(static_cast<float>(-design.lastStitch().y));
    const Bytes written = recordsOf(design);
    ASSERT_EQ(written.size(), records.size() + 3);
    EXPECT_TRUE(std::equal(records.begin(), records.end(), written.begin()));
}

struct LimitRow {
    const char* name;
    int code;
    void (*spoil)(VLMDesign& design);
};
class DstLimits : public testing::TestWithParam<LimitRow> {};
TEST_P(DstLimits, AreKept) {
    const test::TemporaryFolder folder;
    VLMDesign design = boundlessDesign({stitch(1, 1)});
    design.setDesignType("PES");
    design.setHoopFromVendorwithCode("Janome", 28);
    GetParam().spoil(design);
    const ThreadList threads = design.threads().copy();
    VLMError error;
    EXPECT_EQ(exportDstDesignToURLerror(design, folder.path() / "rose.dst", &error), GetParam().code == 0);
    EXPECT_EQ(error.code, GetParam().code);
    EXPECT_EQ(std::filesystem::exists(folder.path() / "rose.dst"), GetParam().code == 0);
    if (GetParam().code == 0) return;
    EXPECT_EQ(design.designType(), "PES");
    EXPECT_EQ(design.threads(), threads);
    EXPECT_EQ(design.hoopCode(), 28);
}
void setThreads(VLMDesign& design, std::size_t count) {
    design.threads().all().assign(count, test::threadOf("800"));
}
INSTANTIATE_TEST_SUITE_P(
    Rows, DstLimits,
    testing::Values(LimitRow{"ThousandThreadsFit", 0, [](VLMDesign& design) { setThreads(design, 1000); }},
                    LimitRow{"AThreadMore", 134, [](VLMDesign& design) { setThreads(design, 1001); }},
                    LimitRow{"OriginLeftOfTheBox", 130,
                             [](VLMDesign& design) {
                                 design.setXMin(5);
                                 design.setXMax(20);
                             }},
                    LimitRow{"OriginRightOfTheBox", 130, [](VLMDesign& design) { design.setXMax(-0.5F); }},
                    LimitRow{"OriginBelowTheBox", 130, [](VLMDesign& design) { design.setYMin(0.5F); }},
                    LimitRow{"OriginAboveTheBox", 130, [](VLMDesign& design) { design.setYMax(-1); }},
                    LimitRow{"OriginOnTheEdge", 0, [](VLMDesign& design) { design.setXMin(0); }},
                    LimitRow{"WidestBox", 0,
                             [](VLMDesign& design) {
                                 design.setXMax(99999);
                                 design.setYMin(-99999);
                             }},
                    LimitRow{"TooFarRight", 130, [](VLMDesign& design) { design.setXMax(99999.5F); }},
                    LimitRow{"TooFarLeft", 130, [](VLMDesign& design) { design.setXMin(-100000); }},
                    LimitRow{"TooFarUp", 130, [](VLMDesign& design) { design.setYMax(100000); }},
                    LimitRow{"TooFarDown", 130, [](VLMDesign& design) { design.setYMin(-100000); }},
                    LimitRow{"NoBounds", 130, [](VLMDesign& design) { design.resetBounds(); }},
                    LimitRow{"EndTooFarRight", 132,
                             [](VLMDesign& design) {
                                 design.setStitches({stitch(99999, 0), stitch(0.5F, 0)});
                             }},
                    LimitRow{"EndTooFarDown", 132, [](VLMDesign& design) { design.setStitches({stitch(0, -100000)}); }},
                    LimitRow{"EndIsNowhere", 132,
                             [](VLMDesign& design) { design.setStitches({stitch(0, std::nanf(""))}); }},
                    LimitRow{"ThreadsBeforeBounds", 134,
                             [](VLMDesign& design) {
                                 setThreads(design, 1001);
                                 design.resetBounds();
                             }},
                    LimitRow{"BoundsBeforeEnd", 130,
                             [](VLMDesign& design) {
                                 design.setStitches({stitch(0, -100000)});
                                 design.resetBounds();
                             }}),
    [](const auto& row) { return row.param.name; });

TEST(DstLimits, CountTheEndMarkToTheStitches) {
    for (const std::size_t stitches : {9999997U, 9999998U}) {
        VLMDesign design = boundlessDesign({});
        design.stitches().all().assign(stitches, stitch(0, 0));
        VLMError error;
        EXPECT_EQ(writeDst(design, &error).has_value(), stitches == 9999997U);
        EXPECT_EQ(error.code, stitches == 9999997U ? 0 : 133);
    }
}

TEST(DstWriting, TellsWhatIsWrong) {
    VLMDesign design = boundlessDesign({stitch(1, 1)});
    design.setXMin(1);
    VLMError error;
    EXPECT_FALSE(writeDst(design, &error));
    EXPECT_EQ(error.recoverySuggestion, "Unable to export DST file (invalid bounderies).");
    EXPECT_EQ(error.domain, designErrorDomain);
    EXPECT_FALSE(writeDst(design, nullptr));
}

TEST(DstWriting, LeavesTheDesignAsReadingGivesIt) {
    const test::TemporaryFolder folder;
    for (const bool useThreadFile : {false, true}) {
        VLMDesign design = boundlessDesign({stitch(1, 1)}, 25);
        design.setUseThreadFile(useThreadFile);
        design.setHoopFromVendorwithCode("Janome", 28);
        const ThreadList shared = design.threads();
        ASSERT_TRUE(exportDstDesignToURLerror(design, folder.path() / "rose.dst", nullptr));
        EXPECT_EQ(design.designType(), "DST");
        EXPECT_EQ(design.designVersion(), 10);
        EXPECT_EQ(design.designHoop(), nullptr);
        EXPECT_EQ(test::keysOf(design), useThreadFile ? std::vector<Text>(25, "800") : test::numberedKeys(25));
        EXPECT_EQ(design.threads()[0].palette(), useThreadFile ? "Brother" : "Undefined");
        EXPECT_TRUE(design.threads().isSharedWith(shared));
    }
}

TEST(DstWriting, ReportsTheSystemsErrorAndChangesNothing) {
    const test::TemporaryFolder folder;
    VLMDesign design = boundlessDesign({stitch(1, 1)});
    const ThreadList threads = design.threads().copy();
    for (const auto& [target, code] :
         {std::pair{folder.path(), EISDIR}, {folder.path() / "missing/rose.dst", ENOENT}}) {
        VLMError error;
        EXPECT_FALSE(exportDstDesignToURLerror(design, target, &error));
        EXPECT_EQ(error.domain, systemErrorDomain);
        EXPECT_EQ(error.code, code);
        EXPECT_FALSE(exportDstDesignToURLerror(design, target, nullptr));
    }
    EXPECT_FALSE(design.designType());
    EXPECT_EQ(design.threads(), threads);
    EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
}

TEST(DstWriting, SurvivesAwkwardNumbers) {
    for (VLMDesign& design : test::awkwardDesigns()) {
        const std::size_t size = headerSize + 3 * design.stitches().size() + closing.size();
        EXPECT_EQ(writeDst(design, nullptr).value_or(Bytes(size)).size(), size);
    }
}

}  // namespace
}  // namespace velamo
