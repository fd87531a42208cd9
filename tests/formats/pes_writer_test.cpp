#include <gtest/gtest.h>

#include <bit>

#include "tests/support/bytes.h"
#include "tests/support/designs.h"
#include "tests/support/temporary_folder.h"
#include "velamo/formats/pec.h"
#include "velamo/formats/pec_thumbnail.h"
#include "velamo/formats/pes.h"

namespace velamo {
namespace {

using test::bytes;
using test::Bytes;
using test::change;
using test::jump;
using test::le16;
using test::le24;
using test::le32;
using test::repeated;
using test::sewn;
using test::stitch;

constexpr std::size_t blocksOffset = 104;
constexpr std::size_t thumbnailSize = 228;

Bytes fileOf(VLMDesign& design) {
    VLMError error;
    const auto file = writePes(design, &error);
    EXPECT_TRUE(file) << error.message();
    return file.value_or(Bytes());
}

std::size_t sectionOffsetOf(const Bytes& file) {
    EXPECT_EQ(file.at(11), 0);
    return file.at(8) | static_cast<std::size_t>(file.at(9)) << 8 | static_cast<std::size_t>(file.at(10)) << 16;
}

/// Blocks and colour table.
Bytes blocksOf(const Bytes& file) {
    return {file.begin() + blocksOffset, file.begin() + static_cast<std::ptrdiff_t>(sectionOffsetOf(file))};
}

Bytes single(float number) {
    return le32(std::bit_cast<std::int32_t>(number));
}

Bytes points(const std::vector<std::pair<int, int>>& places) {
    Bytes written;
    for (const auto& [x, y] : places) written = bytes(written, le16(x), le16(y));
    return written;
}
Bytes block(int kind, int color, const std::vector<std::pair<int, int>>& places) {
    return bytes(le16(kind), le16(color), le16(static_cast<std::int64_t>(places.size())), points(places));
}
const Bytes between = bytes(3, 8);

void setBounds(VLMDesign& design, float xMin, float yMin, float xMax, float yMax) {
    design.setXMin(xMin);
    design.setYMin(yMin);
    design.setXMax(xMax);
    design.setYMax(yMax);
}

TEST(PesWriting, FillsEveryField) {
    VLMDesign design = sewn({stitch(-100, 50), stitch(300, -120)});
    design.setXMin(-100.9F);
    design.setYMin(-70.5F);
    const Bytes file = fileOf(design);
    const Bytes bounds = bytes(le16(899), le16(929), le16(1100), le16(1070));
    const Bytes start =
        bytes("#PES0001", le24(static_cast<std::int64_t>(sectionOffsetOf(file))), 0, le16(0), le16(1), le16(1), 0xFF,
              0xFF, le16(0), le16(7), "CEmbOne", bounds, bounds, single(1), single(0), single(0), single(1),
              single(1000), single(1000), le16(1), le16(-100), le16(70), le16(300), le16(120), repeated(10, 0), 0xFF,
              0xFF, le16(0), le16(7), "CSewSeg", block(0, 5, {{-100, -50}, {200, 70}}), 1, 0, 0, 0, 5, 0, 0, 0, 0, 0);
    const Bytes section = exportPecSegmentToData(design);
    EXPECT_EQ(file, bytes(start, section, pecThumbnailsOfDesignAndThreads(design)));
    EXPECT_EQ(sectionOffsetOf(file), start.size());
    EXPECT_EQ(start.size(), blocksOffset + 14 + 10);
}

struct BlockRow {
    const char* name;
    std::vector<VLMStitch> stitches;
    Bytes blocks;
};
class PesBlocks : public testing::TestWithParam<BlockRow> {};
TEST_P(PesBlocks, AreThoseOfTheRow) {
    VLMDesign design = sewn(GetParam().stitches);
    design.setThreads({test::threadOf("800"), test::threadOf("x7")});
    const Bytes colorTable = bytes(2, 0, 0, 0, 5, 0, 3, 0, 64, 0, 0, 0, 0, 0);
    EXPECT_EQ(blocksOf(fileOf(design)), bytes(GetParam().blocks, colorTable));
}
INSTANTIATE_TEST_SUITE_P(
    Rows, PesBlocks,
    testing::Values(BlockRow{"Stitches", {stitch(1, 2), stitch(3, 4)}, block(0, 5, {{1, -2}, {4, -6}})},
                    BlockRow{"NoStitch", {}, block(0, 5, {})},
                    BlockRow{
                        "LeadingJumpsAreAddedUp", {jump(10, 20), jump(1, 2), stitch(5, 5)}, block(0, 5, {{16, -27}})},
                    BlockRow{"NothingButJumps", {jump(10, 20)}, block(0, 5, {})},
                    BlockRow{"JumpOpensABlock",
                             {stitch(1, 1), jump(10, 0), stitch(1, 1)},
                             bytes(block(0, 5, {{1, -1}}), between, block(0, 5, {{11, -1}, {11, -1}, {12, -2}}))},
                    BlockRow{"ColourChangeHasABlockOfItsOwn",
                             {stitch(1, 1), change(4, 0), stitch(1, 1)},
                             bytes(block(0, 5, {{1, -1}}), between, block(1, 64, {{1, -1}, {5, -1}}), between,
                                   block(0, 64, {{5, -1}, {5, -1}, {6, -2}}))},
                    BlockRow{"ColourChangeOnTheSpot",
                             {stitch(1, 1), change(0, 0)},
                             bytes(block(0, 5, {{1, -1}}), between, block(1, 64, {{1, -1}, {1, -1}}), between,
                                   block(0, 64, {{1, -1}, {1, -1}}))},
                    BlockRow{"ColourChangeFirst",
                             {change(0, 0), stitch(1, 0)},
                             bytes(block(0, 5, {}), between, block(1, 64, {{0, 0}, {0, 0}}), between,
                                   block(0, 64, {{0, 0}, {0, 0}, {1, 0}}))},
                    BlockRow{"MoreColourChangesThanThreads",
                             {stitch(1, 0), change(0, 0), change(0, 0)},
                             bytes(block(0, 5, {{1, 0}}), between, block(1, 64, {{1, 0}, {1, 0}}), between,
                                   block(0, 64, {{1, 0}, {1, 0}}), between, block(1, 16, {{1, 0}, {1, 0}}), between,
                                   block(0, 16, {{1, 0}, {1, 0}}))},
                    BlockRow{"HalvesAreRoundedAway",
                             {stitch(0.5F, 0.5F), stitch(-1, -1), stitch(2, 2)},
                             block(0, 5, {{1, -1}, {-1, 1}, {2, -2}})},
                    BlockRow{"BelowHalvesAreRoundedToZero", {stitch(0.49F, -0.49F)}, block(0, 5, {{0, 0}})}),
    [](const auto& row) { return row.param.name; });

TEST(PesWriting, AddsUpInDoublePrecision) {
    // In single precision the two small stitches would vanish beside the long one.
    VLMDesign design = sewn({stitch(1 << 24, 0), stitch(0.75F, 0), stitch(0.75F, 0), stitch(1 - (1 << 24), 0)});
    setBounds(design, 0, 0, 1, 1);
    EXPECT_EQ(blocksOf(fileOf(design)),
              bytes(block(0, 5, {{0, 0}, {0, 0}, {2, 0}, {3, 0}}), 1, 0, 0, 0, 5, 0, 0, 0, 0, 0));
}

TEST(PesThreads, StandInTheTableWithThreeTimesTheirNumber) {
    VLMDesign design = sewn({stitch(1, 1)}, 64);
    const Bytes blocks = blocksOf(fileOf(design));
    const Bytes table(blocks.end() - (4 + 4 * std::ptrdiff_t{64} + 2), blocks.end());
    EXPECT_EQ(table.at(0), 64);
    for (std::size_t i = 0; i < 64; ++i) {
        const Bytes entry(table.begin() + static_cast<std::ptrdiff_t>(4 + 4 * i),
                          table.begin() + static_cast<std::ptrdiff_t>(8 + 4 * i));
        EXPECT_EQ(entry, bytes(5, 0, i == 63 ? 0 : static_cast<int>(3 * (i + 1)), 0)) << i;
    }
}

TEST(PesThreads, BecomeTheNearestOfTheBrotherPalette) {
    for (const bool useThreadFile : {false, true}) {
        VLMDesign design = sewn({stitch(1, 1)});
        const VLMThread janome = test::threadOf("204", "Janome");
        VLMThread nearest = janome;
        nearest.changeToColorinPalette(janome.color(), "Brother");
        design.setThreads({janome});
        design.setUseThreadFile(useThreadFile);
        const Bytes file = fileOf(design);
        EXPECT_EQ(VLMDesign::brotherColorCodes().at(file.at(blocksOffset + 2)), nearest.key());
        EXPECT_EQ(file.at(sectionOffsetOf(file) + 49), file.at(blocksOffset + 2));
        EXPECT_EQ(design.threads()[0], useThreadFile ? janome : nearest);
    }
}

TEST(PesWriting, HasAThumbnailOfTheWholeAndOfEachThread) {
    for (const std::size_t threads : {1U, 3U, 64U}) {
        VLMDesign design = sewn({stitch(30, 30), change(0, 0), stitch(-10, 20)}, threads);
        const Bytes file = fileOf(design);
        const Bytes section = exportPecSegmentToData(design);
        const std::size_t thumbnails = sectionOffsetOf(file) + section.size();
        ASSERT_EQ(file.size(), thumbnails + thumbnailSize * (threads + 1));
        for (std::size_t i = 0; i <= threads; ++i) {
            const auto start = file.begin() + static_cast<std::ptrdiff_t>(thumbnails + thumbnailSize * i);
            EXPECT_EQ(Bytes(start, start + thumbnailSize),
                      exportPecBitmapToDataForThread(design, static_cast<std::int32_t>(i) - 1))
                << i;
        }
    }
}

struct LimitRow {
    const char* name;
    int code;
    void (*spoil)(VLMDesign& design);
};
class PesLimits : public testing::TestWithParam<LimitRow> {};
TEST_P(PesLimits, AreKept) {
    const test::TemporaryFolder folder;
    VLMDesign design = sewn({stitch(1, 1)});
    design.setThreads({test::threadOf("204", "Janome")});
    design.setHoopFromVendorwithCode("Janome", 28);
    GetParam().spoil(design);
    VLMError error;
    EXPECT_EQ(exportPesDesignToURLerror(design, folder.path() / "x.pes", &error), GetParam().code == 0);
    EXPECT_EQ(error.code, GetParam().code);
    EXPECT_EQ(std::filesystem::exists(folder.path() / "x.pes"), GetParam().code == 0);
    EXPECT_EQ(design.designHoop() == nullptr, GetParam().code == 0);
    EXPECT_EQ(design.designType(), GetParam().code == 0 ? Text("PES") : Text());
    EXPECT_EQ(design.threads()[0].palette(), GetParam().code == 0 ? "Brother" : "Janome");
}
void setThreads(VLMDesign& design, std::size_t count) {
    design.threads().all().assign(count, test::threadOf("204", "Janome"));
}
INSTANTIATE_TEST_SUITE_P(
    Rows, PesLimits,
    testing::Values(
        LimitRow{"WholeField", 0, [](VLMDesign& design) { setBounds(design, -650, -900, 650, 900); }},
        LimitRow{"TooWide", 200, [](VLMDesign& design) { setBounds(design, -651, 0, 650, 1); }},
        LimitRow{"TooHigh", 200, [](VLMDesign& design) { setBounds(design, 0, -900, 1, 901); }},
        LimitRow{"FractionsOfTheSizeDoNotCount", 201, [](VLMDesign& design) { setBounds(design, -650, 0, 650.5F, 1); }},
        LimitRow{"NarrowButTooFarRight", 201, [](VLMDesign& design) { setBounds(design, 600, 0, 650.5F, 1); }},
        LimitRow{"TooFarLeft", 201, [](VLMDesign& design) { setBounds(design, -650.5F, 0, 0, 1); }},
        LimitRow{"TooFarUp", 201, [](VLMDesign& design) { setBounds(design, 0, 0, 1, 900.5F); }},
        LimitRow{"TooFarDown", 201, [](VLMDesign& design) { setBounds(design, 0, -900.5F, 1, 0); }},
        LimitRow{"SixtyFourThreadsFit", 0, [](VLMDesign& design) { setThreads(design, 64); }},
        LimitRow{"AThreadMore", 202, [](VLMDesign& design) { setThreads(design, 65); }},
        LimitRow{"MostStitches", 0, [](VLMDesign& design) { design.stitches().all().assign(30000, stitch(0, 0)); }},
        LimitRow{"AStitchMore", 203, [](VLMDesign& design) { design.stitches().all().assign(30001, stitch(0, 0)); }},
        LimitRow{"SizeBeforePlace", 200, [](VLMDesign& design) { setBounds(design, -651, -901, 651, 901); }},
        LimitRow{"PlaceBeforeThreads", 201,
                 [](VLMDesign& design) {
                     setBounds(design, 700, 0, 701, 1);
                     setThreads(design, 65);
                 }},
        LimitRow{"ThreadsBeforeStitches", 202,
                 [](VLMDesign& design) {
                     setThreads(design, 65);
                     design.stitches().all().assign(30001, stitch(0, 0));
                 }}),
    [](const auto& row) { return row.param.name; });

TEST(PesLimits, HaveTheirTexts) {
    for (const auto& [bounds, text] :
         {std::pair{test::Bounds{-700, 0, 700, 1}, "The design is larger than supported by PES v1.0."},
          {test::Bounds{600, 0, 700, 1}, "The design needs to be centered."}}) {
        VLMDesign design = sewn({stitch(1, 1)});
        setBounds(design, bounds[0], bounds[1], bounds[2], bounds[3]);
        VLMError error;
        EXPECT_FALSE(writePes(design, &error));
        EXPECT_EQ(error.recoverySuggestion, text);
        EXPECT_EQ(error.domain, designErrorDomain);
        EXPECT_FALSE(writePes(design, nullptr));
    }
}

TEST(PesWriting, NeverNeedsMoreThanTheOffsetReaches) {
    // The most that a file can hold: every stitch a colour change, and as many threads as there may be.
    VLMDesign design = sewn({}, 64);
    design.stitches().all().assign(30000, change(0, 0));
    setBounds(design, -650, -900, 650, 900);
    EXPECT_LT(fileOf(design).size(), 1U << 21);
}

TEST(PesExport, KeepsThreadsOfAFileThatCouldNotBeWritten) {
    const test::TemporaryFolder folder;
    VLMDesign design = sewn({stitch(1, 1)});
    design.setThreads({test::threadOf("204", "Janome")});
    design.setHoopFromVendorwithCode("Janome", 28);
    VLMError error;
    EXPECT_FALSE(exportPesDesignToURLerror(design, folder.path(), &error));
    EXPECT_EQ(error.domain, systemErrorDomain);
    EXPECT_EQ(error.code, EISDIR);
    EXPECT_EQ(design.threads()[0].palette(), "Brother");
    EXPECT_EQ(design.hoopCode(), 28);
    EXPECT_FALSE(design.designType());
    ASSERT_TRUE(exportPesDesignToURLerror(design, folder.path() / "x.pes", &error));
    EXPECT_EQ(design.designVersion(), 10);
    EXPECT_EQ(design.designHoop(), nullptr);
}

TEST(PesExport, SurvivesAwkwardNumbers) {
    for (VLMDesign& design : test::awkwardDesigns()) {
        VLMError error;
        const bool isWritten = writePes(design, &error).has_value();
        EXPECT_EQ(isWritten, error.code == 0);
    }
}

}  // namespace
}  // namespace velamo
