#include <gtest/gtest.h>

#include <chrono>

#include "tests/support/bytes.h"
#include "tests/support/designs.h"
#include "tests/support/temporary_folder.h"
#include "velamo/formats/jef.h"
#include "velamo/platform/system/local_time.h"

namespace velamo {
namespace {

using test::bytes;
using test::Bytes;
using test::change;
using test::jump;
using test::le32;
using test::repeated;
using test::sewn;
using test::stitch;

constexpr std::size_t tablesOffset = 116;
const ExportOptions newYear{.dateText = "20260101000000"};

Bytes fileOf(VLMDesign& design) {
    VLMError error;
    const auto file = writeJef(design, newYear, &error);
    EXPECT_TRUE(file) << error.message();
    return file.value_or(Bytes());
}

Bytes streamOf(VLMDesign& design) {
    const Bytes file = fileOf(design);
    return {file.begin() + static_cast<std::ptrdiff_t>(tablesOffset + 8 * design.threads().size()), file.end()};
}

std::int64_t numberAt(const Bytes& file, std::size_t offset) {
    return file.at(offset) | file.at(offset + 1) << 8 | file.at(offset + 2) << 16 |
           std::int64_t{file.at(offset + 3)} << 24;
}

TEST(JefWriting, FillsEveryField) {
    VLMDesign design = sewn({stitch(-100, 50), change(3, -4), stitch(200, 100)});
    design.setThreads({test::threadOf("227", "Janome"), test::threadOf("204", "Janome")});
    design.threads()[1].setTension(7);
    design.setXMin(-100.9F);
    EXPECT_EQ(fileOf(design), bytes(le32(132), le32(10), "20260101000000", 0, 0, le32(2), le32(5), le32(1), le32(100),
                                    le32(46), le32(103), le32(146), repeated(64, 0), le32(25), le32(3), le32(13),
                                    le32(7), 0x9C, 50, 0x80, 1, 3, 0xFC, 0xC8, 100, 0x80, 0x10));
}

struct Row {
    const char* name;
    std::vector<VLMStitch> stitches;
    Bytes stream;  // without its end
    std::int64_t count;
};
class JefStreams : public testing::TestWithParam<Row> {};
TEST_P(JefStreams, AreThoseOfTheRow) {
    VLMDesign design = sewn(GetParam().stitches);
    design.setXMin(-1);
    design.setXMax(1);
    design.setYMin(-1);
    design.setYMax(1);
    EXPECT_EQ(streamOf(design), bytes(GetParam().stream, 0x80, 0x10));
    EXPECT_EQ(numberAt(fileOf(design), 28), GetParam().count);
}
INSTANTIATE_TEST_SUITE_P(
    Rows, JefStreams,
    testing::Values(
        Row{"Stitch", {stitch(-3, 2)}, bytes(0xFD, 2), 2}, Row{"NoStitch", {}, {}, 1},
        Row{"Jump", {jump(5, -5)}, bytes(0x80, 2, 5, 0xFB), 3},
        Row{"ColourChange", {change(0, 0)}, bytes(0x80, 1, 0, 0), 3},
        Row{"ColourChangeThatJumps", {{1, 2, true, true}}, bytes(0x80, 1, 0, 0, 0x80, 2, 1, 2), 5},
        Row{"FractionsAddUp", {stitch(0.5F, 0), stitch(0.5F, 0)}, bytes(0, 0, 1, 0), 3},
        Row{"RoundedDown", {stitch(-0.25F, -0.25F), stitch(0, 0.25F)}, bytes(0xFF, 0xFF, 0, 1), 3},
        Row{"FractionsOfAllKinds",
            {jump(0.5F, 0), change(0.5F, 0), stitch(0.5F, 0)},
            bytes(0x80, 2, 0, 0, 0x80, 1, 1, 0, 0, 0),
            6},
        Row{"WhatIsTooLongWrapsAround", {stitch(130, -200), jump(0, 300)}, bytes(130, 56, 0x80, 2, 0, 44), 4}),
    [](const auto& row) { return row.param.name; });

TEST(JefThreads, BecomeTheNearestOfTheJanomePalette) {
    for (const bool useThreadFile : {false, true}) {
        VLMDesign design = sewn({stitch(1, 1)});
        const VLMThread kept = test::threadOf("204", "Janome");
        VLMThread unknown = test::threadOf("999", "Janome");
        VLMThread red = test::threadOf("800");
        red.setTension(99);
        red.setIsShown(false);
        VLMThread nearest = red;
        nearest.changeToColorinPalette(red.color(), "Janome");
        const std::vector<VLMThread> given{kept, unknown, red};
        design.setThreads(given);
        design.setUseThreadFile(useThreadFile);
        const Bytes file = fileOf(design);
        EXPECT_EQ(numberAt(file, tablesOffset), 3);
        EXPECT_EQ(numberAt(file, tablesOffset + 4), 23);
        EXPECT_EQ(VLMDesign::janomeColorCodes().at(static_cast<std::int32_t>(numberAt(file, tablesOffset + 8))),
                  nearest.key());
        EXPECT_EQ(numberAt(file, tablesOffset + 20), 99);
        EXPECT_EQ(design.threads(), useThreadFile ? ThreadList(given) : ThreadList({kept, unknown, nearest}));
    }
}

/// A design may change between a few colours a million times.
TEST(JefThreads, OfOneColourShareWhatTheyBecome) {
    VLMDesign design = sewn({stitch(1, 1)});
    VLMThread free;
    free.setColor(test::threadOf("800").color());
    design.setThreads({test::threadOf("800"), test::threadOf("405"), free});
    for (int i = 0; i < 3; ++i) {
        design.threads()[static_cast<std::size_t>(i)].setTension(i);
        design.threads()[static_cast<std::size_t>(i)].setLength(static_cast<float>(i) / 2);
    }
    std::vector<VLMThread> expected = design.threads().all();
    for (VLMThread& thread : expected) thread.changeToColorinPalette(thread.color(), "Janome");
    fileOf(design);
    EXPECT_EQ(design.threads().all(), expected);
    EXPECT_TRUE(design.threads()[0].sharesLookWith(design.threads()[2]));
    EXPECT_FALSE(design.threads()[0].sharesLookWith(design.threads()[1]));
}

TEST(JefThreads, WithoutPaletteAreWrittenToo) {
    VLMDesign design = sewn({stitch(1, 1)});
    design.threads()[0] = VLMThread();
    const Bytes file = fileOf(design);
    EXPECT_EQ(design.threads()[0].palette(), "Janome");
    EXPECT_EQ(VLMDesign::janomeColorCodes().at(static_cast<std::int32_t>(numberAt(file, tablesOffset))),
              design.threads()[0].key());
}

/// A square of the size around the origin.
VLMDesign square(float size) {
    return sewn({jump(-size / 2, -size / 2), stitch(size, size)});
}

struct HoopRow {
    const char* name;
    float size;
    const char* vendor;
    std::int32_t code;
    int error;
    std::int32_t chosen;  // on success
    float shift = 0;
};
class JefHoops : public testing::TestWithParam<HoopRow> {};
TEST_P(JefHoops, AreChosen) {
    const HoopRow& row = GetParam();
    VLMDesign design = square(row.size);
    design.setXMax(design.xMax() + row.shift);
    design.setXMin(design.xMin() + row.shift);
    const bool isBrother = std::string_view(row.vendor) == "Brother";
    if (isBrother)
        design.setDesignHoop(
            std::make_shared<VLMHoop>(VLMHoop::initWithHoopvendorcodewidthheightmultiHooproundHoopisWritable(
                "M", "Brother", row.code, 130, 180, false, false, true)));
    else
        design.setHoopFromVendorwithCode(row.vendor, row.code);
    const HoopHandle given = design.designHoop();
    VLMError error;
    const auto file = writeJef(design, newYear, &error);
    EXPECT_EQ(file.has_value(), row.error == 0);
    EXPECT_EQ(error.code, row.error);
    if (row.error != 0) {
        EXPECT_EQ(design.designHoop(), given);
        EXPECT_EQ(design.threads()[0].palette(), "Brother");
    } else {
        EXPECT_EQ(numberAt(*file, 32), row.chosen);
        EXPECT_EQ(design.hoopVendor(), "Janome");
        EXPECT_EQ(design.hoopCode(), row.chosen);
    }
}
INSTANTIATE_TEST_SUITE_P(Rows, JefHoops,
                         testing::Values(HoopRow{"FirstThatFits", 400, "", -1, 0, 1},
                                         HoopRow{"OwnIsKept", 400, "Janome", 28, 0, 28},
                                         HoopRow{"InPlaceOfAnotherVendors", 1200, "Brother", 7, 0, 2},
                                         HoopRow{"InPlaceOfPfaffs", 400, "Pfaff", 2, 0, 1},
                                         HoopRow{"TooLargeForAll", 2500, "Brother", 7, 63, 0},
                                         HoopRow{"TooLargeWithoutAny", 2500, "", -1, 63, 0},
                                         HoopRow{"TooLargeForItsOwn", 600, "Janome", 1, 60, 0},
                                         HoopRow{"TouchesTheEdgeOfTheOneThatFits", 500, "", -1, 62, 0},
                                         HoopRow{"OutsideOfItsOwn", 400, "Janome", 28, 62, 0, 1000},
                                         HoopRow{"OwnIsNotWritable", 400, "Janome", 5, 51, 0},
                                         HoopRow{"SizeBeforePlace", 600, "Janome", 1, 60, 0, 1000},
                                         HoopRow{"PlaceBeforeWritable", 400, "Janome", 5, 62, 0, 1000}),
                         [](const auto& row) { return row.param.name; });

TEST(JefHoops, TellWhatIsWrong) {
    for (const auto& [size, code, text] : {std::tuple{2500.0F, -1, "Design exceeds all hoop sizes."},
                                           {600.0F, 1, "Design exceeds the current hoop size."},
                                           {500.0F, -1, "Stitches ouside the current hoop."},
                                           {400.0F, 5, "Unable to export JEF file (unsupported hoop)."}}) {
        VLMDesign design = square(size);
        design.setHoopFromVendorwithCode("Janome", code);
        VLMError error;
        EXPECT_FALSE(writeJef(design, newYear, &error));
        EXPECT_EQ(error.recoverySuggestion, text);
        EXPECT_EQ(error.domain, designErrorDomain);
        EXPECT_FALSE(writeJef(design, newYear, nullptr));
    }
}

TEST(JefDates, AreNowUnlessGiven) {
    VLMDesign design = square(100);
    for (int attempt = 0; attempt < 3; ++attempt) {  // the second may end in between
        const std::string before = localTimeText();
        const Bytes one = writeJef(design, {}, nullptr).value();
        const Bytes other = writeJef(design, {}, nullptr).value();
        if (before != localTimeText()) continue;
        EXPECT_EQ(std::string(one.begin() + 8, one.begin() + 22), before);
        EXPECT_EQ(one, other);
        return;
    }
    FAIL() << "a write takes a second";
}

TEST(JefDates, HaveFourteenBytesWhateverIsGiven) {
    VLMDesign design = square(100);
    for (const auto& [given, written] :
         {std::pair{"2026", "20260000000000"}, {"20260101000000123", "20260101000000"}}) {
        const Bytes file = writeJef(design, {.dateText = given}, nullptr).value();
        EXPECT_EQ(std::string(file.begin() + 8, file.begin() + 24), written + std::string(2, '\0'));
    }
}

TEST(JefExport, KeepsHoopAndThreadsOfAFileThatCouldNotBeWritten) {
    const test::TemporaryFolder folder;
    VLMDesign design = square(100);
    design.setDesignType("PES");
    VLMError error;
    EXPECT_FALSE(exportJefDesignToURLerror(design, folder.path() / "missing/x.jef", &error));
    EXPECT_EQ(error.domain, systemErrorDomain);
    EXPECT_EQ(error.code, ENOENT);
    EXPECT_EQ(design.hoopVendor(), "Janome");
    EXPECT_EQ(design.threads()[0].palette(), "Janome");
    EXPECT_EQ(design.designType(), "PES");
    EXPECT_TRUE(exportJefDesignToURLerror(design, folder.path() / "x.jef", &error, newYear));
    EXPECT_EQ(design.designType(), "JEF");
    EXPECT_EQ(design.designVersion(), 10);
    EXPECT_EQ(design.hoopVendor(), "Janome");
    EXPECT_EQ(test::TemporaryFolder::read(folder.path() / "x.jef").substr(8, 14), newYear.dateText);
}

TEST(JefExport, SurvivesAwkwardNumbers) {
    for (VLMDesign& design : test::awkwardDesigns()) {
        VLMError error;
        const bool isWritten = writeJef(design, newYear, &error).has_value();
        EXPECT_EQ(isWritten, error.code == 0);
    }
}

}  // namespace
}  // namespace velamo
