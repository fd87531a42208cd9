#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>

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
using test::repeated;
using test::sewn;
using test::stitch;

constexpr std::size_t attributesSize = 512;
constexpr std::size_t movesOffset = 532;

Bytes part(const Bytes& whole, std::size_t start, std::size_t size) {
    return {whole.begin() + static_cast<std::ptrdiff_t>(start),
            whole.begin() + static_cast<std::ptrdiff_t>(start + size)};
}

TEST(PecSegmentWriting, FillsEveryField) {
    VLMDesign design = sewn({jump(-20, -16), stitch(41, 30), change(0, 0), stitch(-3, 4)});
    design.setThreads({test::threadOf("800"), test::threadOf("x7")});
    design.setDesignName("Rose.pes");
    const Bytes moves = bytes(0x9F, 0xEC, 0x90, 0x10, 41, 0x62, 0xFE, 0xB0, 2, 0x7D, 0x7C, 0xFF);
    EXPECT_EQ(exportPecSegmentToData(design),
              bytes("LA:Rose            \r", repeated(12, ' '), 0xFF, 0, 6, 38, repeated(12, ' '), 1, 5, 64,
                    repeated(512 - 51, ' '), 0, 0, le24(20 + static_cast<std::int64_t>(moves.size())), 0x31, 0xFF, 0xF0,
                    le16(41), le16(34), 0xE0, 1, 0xB0, 1, 0x90, 20, 0x90, 17, moves));
}

struct LabelRow {
    const char* name;
    Text designName;
    std::string label;
};
class PecLabels : public testing::TestWithParam<LabelRow> {};
TEST_P(PecLabels, HaveSixteenCharacters) {
    VLMDesign design = sewn({stitch(1, 1)});
    design.setDesignName(GetParam().designName);
    EXPECT_EQ(part(exportPecSegmentToData(design), 0, 20), bytes("LA:", GetParam().label, "\r"));
}
INSTANTIATE_TEST_SUITE_P(Rows, PecLabels,
                         testing::Values(LabelRow{"Padded", "Rose.pes", "Rose            "},
                                         LabelRow{"CutToSixteen", "abcdefghijklmnopqrst.pes", "abcdefghijklmnop"},
                                         LabelRow{"Absent", {}, "                "},
                                         LabelRow{"Accents", "Caf\u00E9 Stra\u00DFe.pec",
                                                  "Caf\xE9 Stra\xDF"
                                                  "e     "},
                                         LabelRow{"Picture", "\U0001F339 \u0141.pes", "? ?             "},
                                         LabelRow{"NoUtf8", "a\xFF.pes", "a?              "}),
                         [](const auto& row) { return row.param.name; });

struct MoveRow {
    const char* name;
    std::vector<VLMStitch> stitches;
    Bytes moves;  // without the end mark
};
class PecWrittenMoves : public testing::TestWithParam<MoveRow> {};
TEST_P(PecWrittenMoves, AreThoseOfTheRow) {
    VLMDesign design = sewn(GetParam().stitches);
    const Bytes segment = exportPecSegmentToData(design);
    const Bytes expected = bytes(GetParam().moves, 0xFF);
    EXPECT_EQ(Bytes(segment.begin() + movesOffset, segment.end()), expected);
    EXPECT_EQ(part(segment, 514, 3), le24(20 + static_cast<std::int64_t>(expected.size())));
}
INSTANTIATE_TEST_SUITE_P(
    Rows, PecWrittenMoves,
    testing::Values(
        MoveRow{"Stitch", {stitch(5, -3)}, bytes(5, 3)}, MoveRow{"NoStitch", {}, {}},
        MoveRow{"NegativeStitch", {stitch(-1, 1)}, bytes(0x7F, 0x7F)},
        MoveRow{"LongestStitches", {stitch(63, -63), stitch(-64, 64)}, bytes(63, 63, 64, 64)},
        MoveRow{"Jump", {jump(-1, 0)}, bytes(0x9F, 0xFF, 0x90, 0)},
        MoveRow{
            "LongestJumps", {jump(2047, -2047), jump(-2048, 2048)}, bytes(0x97, 0xFF, 0x97, 0xFF, 0x98, 0, 0x98, 0)},
        MoveRow{"ColourChangesAlternate",
                {change(0, 0), change(9, 9), {9, 9, true, true}},
                bytes(0xFE, 0xB0, 2, 0xFE, 0xB0, 1, 0xFE, 0xB0, 2)},
        MoveRow{"FractionsAddUp", {stitch(0.4F, 0), stitch(0.4F, 0), stitch(0.4F, 0)}, bytes(0, 0, 0, 0, 1, 0)},
        MoveRow{"FractionsOfYAreRoundedDownward",
                {stitch(0, 0.25F), stitch(0, -0.25F), stitch(0, -0.5F)},
                bytes(0, 0x7F, 0, 1, 0, 0)},
        MoveRow{"ColourChangeKeepsTheCarry",
                {stitch(0.5F, 0), change(0.25F, 0), jump(0.5F, 0)},
                bytes(0, 0, 0xFE, 0xB0, 2, 0x90, 1, 0x90, 0)},
        MoveRow{"WhatDoesNotFitKeepsItsLowerBits",
                {stitch(300, 200), jump(4097, 5000)},
                bytes(0x2C, 0xB8, 0x90, 1, 0x9C, 0x78)}),
    [](const auto& row) { return row.param.name; });

TEST(PecThreads, BecomeTheNearestOfTheBrotherPalette) {
    for (const bool useThreadFile : {false, true}) {
        VLMDesign design = sewn({stitch(1, 1)});
        VLMThread janome = test::threadOf("204", "Janome");
        janome.setTension(99);
        VLMThread nearest = janome;
        nearest.changeToColorinPalette(janome.color(), "Brother");
        const VLMThread unknown = test::threadOf("none");
        const std::vector<VLMThread> given{unknown, test::threadOf("x7"), janome, VLMThread()};
        design.setThreads(given);
        design.setUseThreadFile(useThreadFile);
        const Bytes segment = exportPecSegmentToData(design);
        EXPECT_EQ(segment.at(48), 3);
        EXPECT_EQ(part(segment, 49, 2), bytes(16, 64));
        EXPECT_EQ(VLMDesign::brotherColorCodes().at(segment.at(51)), nearest.key());
        EXPECT_EQ(design.threads()[2], useThreadFile ? janome : nearest);
        EXPECT_EQ(design.threads()[3].palette(), useThreadFile ? Text() : Text("Brother"));
        EXPECT_EQ(design.threads()[0], unknown);
    }
}

TEST(PecThreads, MayFillTheAttributesAndMore) {
    for (const std::size_t threads : {463U, 464U, 600U, 2000U}) {
        VLMDesign design = sewn({stitch(1, 1)}, threads);
        const Bytes segment = exportPecSegmentToData(design);
        EXPECT_EQ(segment.at(48), (threads - 1) & 0xFFU);
        EXPECT_EQ(segment.size(), std::max(attributesSize, 49 + threads) + 20 + 3);
        EXPECT_EQ(part(segment, 514, 3), le24(static_cast<std::int64_t>(segment.size() - attributesSize)));
        EXPECT_EQ(segment.at(49 + 462), 5);
    }
}

/// A section of more threads has no place for its header, so there is no file of that.
TEST(PecThreads, OfAFileFillTheAttributesAtMost) {
    const test::TemporaryFolder folder;
    for (const std::size_t threads : {463U, 464U}) {
        const auto file = folder.path() / (std::to_string(threads) + ".pec");
        VLMDesign design = sewn({stitch(1, 1)}, threads);
        VLMError error;
        const bool isWritten = exportPecDesignToURLerror(design, file, &error);
        EXPECT_EQ(isWritten, threads == 463);
        EXPECT_EQ(error.code, isWritten ? 0 : EFBIG);
        EXPECT_EQ(std::filesystem::exists(file), isWritten);
    }
}

TEST(PecSegmentWriting, KnowsItsSizeBefore) {
    for (const std::size_t threads : {1U, 463U, 464U, 2000U}) {
        VLMDesign design = sewn({stitch(1, 1), jump(200, 3), change(0, 0), stitch(-63, 1)}, threads);
        EXPECT_EQ(sizeOfPecSegment(design), exportPecSegmentToData(design).size()) << threads;
    }
    for (VLMDesign& design : test::awkwardDesigns())
        EXPECT_EQ(sizeOfPecSegment(design), exportPecSegmentToData(design).size());
}

TEST(PecSegmentWriting, TruncatesTheMiddle) {
    VLMDesign design = sewn({stitch(1, 1)});
    design.setXMin(-1000);
    design.setXMax(1001);
    design.setYMin(5);
    design.setYMax(-10);
    const Bytes segment = exportPecSegmentToData(design);
    EXPECT_EQ(part(segment, 520, 12), bytes(le16(2001), le16(-15), 0xE0, 1, 0xB0, 1, 0x93, 0xE8, 0x9F, 0xF9));
}

TEST(PecSegmentWriting, SurvivesAwkwardNumbers) {
    for (VLMDesign& design : test::awkwardDesigns()) EXPECT_GE(exportPecSegmentToData(design).size(), movesOffset + 1);
}

TEST(PecWriting, IsASectionAndOneThumbnail) {
    for (const bool useThreadFile : {false, true}) {
        VLMDesign design = sewn({stitch(30, 30), change(0, 0), stitch(-10, 20)}, 2);
        design.setUseThreadFile(useThreadFile);
        const Bytes section = exportPecSegmentToData(design);
        VLMError error;
        EXPECT_EQ(writePec(design, &error), bytes("#PEC0001", section, exportPecBitmapToDataForThread(design, -1)));
        EXPECT_EQ(exportPecBitmapToDataForThread(design, -1).size(), 228U);
    }
}

TEST(PecExport, SetsTypeVersionAndHoopAfterSuccess) {
    const test::TemporaryFolder folder;
    VLMDesign design = sewn({stitch(1, 1)}, 1);
    design.setThreads({test::threadOf("204", "Janome")});
    design.setHoopFromVendorwithCode("Janome", 28);
    VLMError error;
    EXPECT_FALSE(exportPecDesignToURLerror(design, folder.path() / "missing/x.pec", &error));
    EXPECT_EQ(error.domain, systemErrorDomain);
    EXPECT_EQ(error.code, ENOENT);
    EXPECT_FALSE(design.designType());
    EXPECT_EQ(design.hoopCode(), 28);
    EXPECT_EQ(design.threads()[0].palette(), "Brother");
    EXPECT_TRUE(exportPecDesignToURLerror(design, folder.path() / "x.pec", &error));
    EXPECT_EQ(design.designType(), "PEC");
    EXPECT_EQ(design.designVersion(), 10);
    EXPECT_EQ(design.designHoop(), nullptr);
}

TEST(PecExport, MakesNoneOfTheChecksOfPes) {
    VLMDesign design = sewn({stitch(3000, 3000)}, 100);
    EXPECT_TRUE(writePec(design, nullptr));
}

TEST(PecExport, RefusesWhatTheOffsetOfTheThumbnailsCannotReach) {
    VLMDesign design = sewn({});
    design.stitches().all().assign((1U << 22) - 100, jump(0, 0));
    test::measure(design);
    EXPECT_TRUE(writePec(design, nullptr));
    design.stitches().all().resize(1U << 22, jump(0, 0));
    const VLMThread janome = test::threadOf("204", "Janome");
    design.setThreads({janome});
    VLMError error;
    EXPECT_FALSE(writePec(design, &error));
    EXPECT_EQ(error.domain, systemErrorDomain);
    EXPECT_EQ(error.code, EFBIG);
    EXPECT_EQ(design.threads()[0], janome);  // it was refused before anything was done
}

}  // namespace
}  // namespace velamo
