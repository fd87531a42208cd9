#include <gtest/gtest.h>

#include "tests/support/bytes.h"
#include "tests/support/designs.h"
#include "tests/support/temporary_folder.h"
#include "velamo/formats/pcs.h"

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

constexpr std::size_t recordsOffset = 4 + 64 + 2;
constexpr std::size_t recordSize = 9;
constexpr std::size_t endSize = 13;

Bytes fileOf(VLMDesign& design) {
    VLMError error;
    const auto file = writePcs(design, &error);
    EXPECT_TRUE(file) << error.message();
    return file.value_or(Bytes());
}

/// The records of the file, one after the other, without the first colour record.
std::vector<Bytes> recordsOf(const Bytes& file) {
    std::vector<Bytes> records;
    for (std::size_t at = recordsOffset; at + recordSize + endSize <= file.size(); at += recordSize)
        records.emplace_back(file.begin() + static_cast<std::ptrdiff_t>(at),
                             file.begin() + static_cast<std::ptrdiff_t>(at + recordSize));
    return records;
}

Bytes record(std::int64_t x, std::int64_t y, int kind) {
    return bytes(0, le24(x), 0, le24(y), kind);
}
Bytes colorRecord(int index) {
    return bytes(index, repeated(7, 0), 3);
}

VLMThread freeThread(double red, double green, double blue) {
    VLMThread thread = test::threadOf("800");
    thread.changeToColorinPalette(VLMColor::initWithRedgreenblue(red, green, blue), "");
    return thread;
}

TEST(PcsWriting, FillsEveryField) {
    VLMDesign design = sewn({jump(10, -10), stitch(5, 5), change(0, 0), stitch(-20, 0)});
    design.setThreads({freeThread(1, 0.5, 0), freeThread(0.999, 0, 1)});
    // The small hoop's middle is 400 tenths from its corner.
    EXPECT_EQ(fileOf(design), bytes(0x32, 2, le16(16), 255, 127, 0, 0, 254, 0, 255, 0, repeated(56, 0), le16(3),
                                    colorRecord(0), record(246, 234, 4), record(249, 237, 0), colorRecord(1),
                                    record(249, 237, 0), record(237, 237, 0), repeated(13, 0)));
    EXPECT_EQ(design.hoopVendor(), "Pfaff");
    EXPECT_EQ(design.hoopCode(), 2);
}

struct PlaceRow {
    const char* name;
    float x;
    std::int64_t written;
};
class PcsPlaces : public testing::TestWithParam<PlaceRow> {};
TEST_P(PcsPlaces, AreSixthsOfAMillimetreFromTheCorner) {
    VLMDesign design = sewn({stitch(GetParam().x, 0), stitch(-GetParam().x, GetParam().x)});
    for (auto set : {&VLMDesign::setXMin, &VLMDesign::setYMin}) (design.*set)(-1);
    for (auto set : {&VLMDesign::setXMax, &VLMDesign::setYMax}) (design.*set)(1);
    const auto records = recordsOf(fileOf(design));
    EXPECT_EQ(records.at(1), record(GetParam().written, 240, 0));
    EXPECT_EQ(records.at(2), record(240, GetParam().written, 0));
}
INSTANTIATE_TEST_SUITE_P(Rows, PcsPlaces,
                         testing::Values(PlaceRow{"Middle", 0, 240}, PlaceRow{"Corner", -400, 0},
                                         PlaceRow{"HalfATenthLeftOfTheCorner", -400.5F, 0},
                                         PlaceRow{"ATenthLeftOfTheCorner", -401, 0xFFFFFE},
                                         PlaceRow{"FarLeftOfTheCorner", -402.5F, 0xFFFFFD},
                                         PlaceRow{"HalfUpward", -397.5F, 2}, PlaceRow{"Down", 1, 241},
                                         PlaceRow{"Fraction", 0.9F, 241}, PlaceRow{"FarEdge", 400, 480}),
                         [](const auto& row) { return row.param.name; });

TEST(PcsWriting, AddsUpInSinglePrecision) {
    // 16777216 + 1 is 16777216 in single precision: the second stitch moves nothing.
    VLMDesign design = sewn({stitch(16777216, 0), stitch(1, 0), stitch(-16777216, 0)});
    design.setXMin(-1);
    design.setXMax(1);
    EXPECT_EQ(recordsOf(fileOf(design)).at(3), record(240, 240, 0));
}

TEST(PcsWriting, GivesEveryBlockAColourRecord) {
    VLMDesign design = sewn({stitch(1, 0), change(1, 0), {1, 0, true, true}}, 3);
    const auto records = recordsOf(fileOf(design));
    ASSERT_EQ(records.size(), 6U);
    EXPECT_EQ(records[0], colorRecord(0));
    EXPECT_EQ(records[2], colorRecord(1));
    EXPECT_EQ(records[3], record(241, 240, 0));
    EXPECT_EQ(records[4], colorRecord(2));
    EXPECT_EQ(records[5], record(242, 240, 4));
}

TEST(PcsThreads, GetColoursOfTheirOwn) {
    for (const bool useThreadFile : {false, true}) {
        VLMDesign design = sewn({stitch(1, 1)}, 2);
        const VLMThread given = design.threads()[0];
        design.setUseThreadFile(useThreadFile);
        const Bytes file = fileOf(design);
        EXPECT_EQ(file.at(4), static_cast<int>(given.color().red() * 255));
        EXPECT_EQ(file.at(7), 0);
        EXPECT_EQ(Bytes(file.begin() + 12, file.begin() + 68), repeated(56, 0));
        EXPECT_EQ(design.threads()[0].color(), given.color());
        EXPECT_EQ(design.threads()[0].palette(), useThreadFile ? "Brother" : "");
        EXPECT_EQ(design.threads()[1].key(), useThreadFile ? "800" : "");
    }
}

struct LimitRow {
    const char* name;
    std::size_t threads;
    std::size_t stitches;
    int code;
};
class PcsWritingLimits : public testing::TestWithParam<LimitRow> {};
TEST_P(PcsWritingLimits, AreKept) {
    VLMDesign design = sewn(std::vector<VLMStitch>(GetParam().stitches, stitch(0, 0)), GetParam().threads);
    VLMError error;
    EXPECT_EQ(writePcs(design, &error).has_value(), GetParam().code == 0);
    EXPECT_EQ(error.code, GetParam().code);
    if (GetParam().code == 0) return;
    EXPECT_EQ(error.message(), GetParam().code == 180 ? "Unable to export PCS file (too many colors)."
                                                      : "Unable to export PCS file (too many stitches).");
    EXPECT_EQ(design.threads()[0].palette(), "Brother");
    EXPECT_EQ(design.designHoop(), nullptr);
}
INSTANTIATE_TEST_SUITE_P(Rows, PcsWritingLimits,
                         testing::Values(LimitRow{"SixteenThreadsFit", 16, 20, 0}, LimitRow{"AThreadMore", 17, 20, 180},
                                         LimitRow{"MostStitches", 1, 14000, 0}, LimitRow{"AStitchMore", 1, 14001, 181},
                                         // A design of two blocks has a record more than stitches are counted.
                                         LimitRow{"MostStitchesOfTwoBlocks", 2, 14001, 0},
                                         LimitRow{"ThreadsBeforeStitches", 17, 15000, 180}),
                         [](const auto& row) { return row.param.name; });

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
    const char* text = "";
};
class PcsHoops : public testing::TestWithParam<HoopRow> {};
TEST_P(PcsHoops, AreChosen) {
    const HoopRow& row = GetParam();
    VLMDesign design = square(row.size);
    if (std::string_view(row.vendor) == "unwritable")
        design.setDesignHoop(
            std::make_shared<VLMHoop>(VLMHoop::initWithHoopvendorcodewidthheightmultiHooproundHoopisWritable(
                "X", "Pfaff", row.code, 100, 100, false, false, false)));
    else
        design.setHoopFromVendorwithCode(row.vendor, row.code);
    const HoopHandle given = design.designHoop();
    VLMError error;
    const auto file = writePcs(design, &error);
    EXPECT_EQ(file.has_value(), row.error == 0);
    EXPECT_EQ(error.code, row.error);
    EXPECT_EQ(error.recoverySuggestion, row.text);
    if (row.error != 0) {
        EXPECT_EQ(design.designHoop(), given);
        EXPECT_EQ(design.threads()[0].palette(), "Brother");
    } else {
        EXPECT_EQ(file->at(1), row.chosen);
        EXPECT_EQ(design.hoopVendor(), "Pfaff");
        EXPECT_EQ(design.hoopCode(), row.chosen);
    }
}
INSTANTIATE_TEST_SUITE_P(
    Rows, PcsHoops,
    testing::Values(
        HoopRow{"FirstThatFits", 400, "", -1, 0, 2}, HoopRow{"OwnIsKept", 400, "Pfaff", 3, 0, 3},
        HoopRow{"InPlaceOfJanomes", 1000, "Janome", 28, 0, 3},
        HoopRow{"TooLargeForAll", 1300, "Janome", 28, 63, 0, "Design exceeds all hoop sizes."},
        HoopRow{"TooLargeForItsOwn", 900, "Pfaff", 2, 60, 0, "Operation aborted: Design exceeds largest hoop size."},
        HoopRow{"TouchesTheEdge", 800, "", -1, 62, 0, "Stitches ouside the current hoop."},
        HoopRow{"OwnIsNotWritable", 400, "unwritable", 9, 51, 0, "Unable to export file (unsupported hoop)."}),
    [](const auto& row) { return row.param.name; });

TEST(PcsExport, KeepsHoopAndThreadsOfAFileThatCouldNotBeWritten) {
    const test::TemporaryFolder folder;
    VLMDesign design = square(100);
    VLMError error;
    EXPECT_FALSE(exportPcsDesignToURLerror(design, folder.path(), &error));
    EXPECT_EQ(error.domain, systemErrorDomain);
    EXPECT_EQ(error.code, EISDIR);
    EXPECT_EQ(design.hoopVendor(), "Pfaff");
    EXPECT_EQ(design.threads()[0].palette(), "");
    EXPECT_FALSE(design.designType());
    EXPECT_TRUE(exportPcsDesignToURLerror(design, folder.path() / "x.pcs", &error));
    EXPECT_EQ(design.designType(), "PCS");
    EXPECT_EQ(design.designVersion(), 20);
    EXPECT_EQ(design.hoopVendor(), "Pfaff");
}

TEST(PcsExport, SurvivesAwkwardNumbers) {
    for (VLMDesign& design : test::awkwardDesigns()) {
        design.threads().push_back(freeThread(1e30, -1e30, std::numeric_limits<double>::quiet_NaN()));
        VLMError error;
        const bool isWritten = writePcs(design, &error).has_value();
        EXPECT_EQ(isWritten, error.code == 0);
    }
}

}  // namespace
}  // namespace velamo
