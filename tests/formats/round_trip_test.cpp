// What is written reads back the same, as far as the format can hold it, and is written the same again.
#include <gtest/gtest.h>

#include <fstream>
#include <map>

#include "tests/support/designs.h"
#include "tests/support/other_user.h"
#include "tests/support/samples.h"
#include "tests/support/temporary_folder.h"
#include "velamo/formats/export.h"
#include "velamo/formats/format.h"
#include "velamo/formats/import.h"

namespace velamo {
namespace {

using test::change;
using test::jump;
using test::sewn;
using test::stitch;
using test::TemporaryFolder;

const ExportOptions newYear{.dateText = "20260101000000"};

std::vector<Format> writableFormats() {
    std::vector<Format> formats;
    for (const Format& format : allFormats())
        if (format.writer != nullptr) formats.push_back(format);
    return formats;
}

/// Moves that every format holds: whole ones between places that are multiples of half a millimetre. The size is even,
/// so that half of it is whole as well.
VLMDesign twoColors() {
    VLMDesign design = sewn({jump(-50, -40), stitch(60, 0), stitch(0, 40), stitch(-30, 30), change(0, 0), jump(50, -60),
                             stitch(-5, 60), stitch(-25, -30)});
    design.setThreads({test::threadOf("800"), test::threadOf("507")});
    return design;
}

/// Each colour change is followed by a stitch on the spot: its own move, which stands in a pair of its own.
std::vector<VLMStitch> asExpGivesThem(const std::vector<VLMStitch>& stitches) {
    std::vector<VLMStitch> given;
    for (const VLMStitch& one : stitches) {
        given.push_back(one);
        if (one.isColorChange()) given.push_back(stitch(0, 0));
    }
    return given;
}

/// The section begins with a jump to where sewing starts, which is the origin in files of ours.
std::vector<VLMStitch> asPecGivesThem(const std::vector<VLMStitch>& stitches) {
    std::vector<VLMStitch> given{jump(0, 0)};
    given.insert(given.end(), stitches.begin(), stitches.end());
    return given;
}

/// A colour change's own record repeats its place, and so makes the change a jump; and of the records as many are
/// missed at the end as there are colour changes, by which the file's count of stitches is too small.
std::vector<VLMStitch> asPcsGivesThem(const std::vector<VLMStitch>& stitches) {
    std::vector<VLMStitch> given;
    std::size_t changes = 0;
    for (const VLMStitch& one : stitches) {
        given.emplace_back(one.deltaX(), one.deltaY(), one.isJumpStitch() || one.isColorChange(), one.isColorChange());
        if (one.isColorChange()) given.push_back(stitch(0, 0));
        changes += one.isColorChange();
    }
    given.resize(given.size() - changes);
    return given;
}

/// What a reader makes of the stitches that were written.
struct Losses {
    std::vector<VLMStitch> (*given)(const std::vector<VLMStitch>& stitches);
    bool isSameAgain = true;  // a second export gives the same bytes, of several colours too
    double colorLoss = 0;     // how far a colour's part may be off
};
std::vector<VLMStitch> asTheyAre(const std::vector<VLMStitch>& stitches) {
    return stitches;
}
const std::map<std::string_view, Losses> lossesOfFormats{
    {"dst", {asTheyAre}},      {"exp", {asExpGivesThem, false}}, {"jef", {asTheyAre}},
    {"pec", {asPecGivesThem}}, {"pes", {asPecGivesThem}},        {"pcs", {asPcsGivesThem, false, 1.01 / 255}},
};

class RoundTrips : public testing::TestWithParam<Format> {
protected:
    [[nodiscard]] std::filesystem::path target(const std::string& folder) const {
        std::filesystem::create_directories(folder_.path() / folder);
        return folder_.path() / folder / ("rose." + std::string(GetParam().extension));
    }
    /// Writes the design to the file and reads that into another one.
    [[nodiscard]] static VLMDesign throughFile(VLMDesign& design, const std::filesystem::path& file) {
        VLMError error;
        EXPECT_TRUE(exportDesignToURLerror(design, file, &error, newYear)) << error.message();
        VLMDesign read;
        EXPECT_TRUE(importDesignFromURLerror(read, file, &error)) << error.message();
        return read;
    }

private:
    TemporaryFolder folder_;
};

TEST_P(RoundTrips, GiveTheDesignBack) {
    VLMDesign design = twoColors();
    const VLMDesign read = throughFile(design, target("one"));
    EXPECT_EQ(read.stitches(), lossesOfFormats.at(GetParam().extension).given(design.stitches().all()));
    EXPECT_EQ(read.designType(), design.designType());
    EXPECT_EQ(read.designVersion(), design.designVersion());
    EXPECT_EQ(read.hoopName(), design.hoopName());
    EXPECT_EQ(read.threads().size(), 2U);
    for (std::size_t i = 0; i < 2; ++i) {
        // What the design has after the export is what the file holds.
        const double loss = lossesOfFormats.at(GetParam().extension).colorLoss;
        EXPECT_NEAR(read.threads()[i].color().red(), design.threads()[i].color().red(), loss) << i;
        EXPECT_NEAR(read.threads()[i].color().green(), design.threads()[i].color().green(), loss) << i;
        EXPECT_NEAR(read.threads()[i].color().blue(), design.threads()[i].color().blue(), loss) << i;
        EXPECT_EQ(read.threads()[i].key(), design.threads()[i].key()) << i;
        EXPECT_EQ(read.threads()[i].palette(), design.threads()[i].palette()) << i;
        EXPECT_EQ(read.threads()[i].tension(), 13) << i;
    }
    EXPECT_EQ(test::boundsOf(read), test::boundsOf(design));
}

TEST_P(RoundTrips, GiveTheSameFileAgain) {
    for (const bool isOneColor : {true, false}) {
        if (!isOneColor && !lossesOfFormats.at(GetParam().extension).isSameAgain) continue;
        VLMDesign design = twoColors();
        if (isOneColor) {
            design.stitches().all().erase(design.stitches().begin() + 4);
            design.threads().all().resize(1);
        }
        const auto one = target("one");
        const auto other = target("other");
        VLMDesign read = throughFile(design, one);
        VLMError error;
        EXPECT_TRUE(exportDesignToURLerror(read, other, &error, newYear)) << error.message();
        EXPECT_EQ(TemporaryFolder::read(one), TemporaryFolder::read(other)) << isOneColor;
    }
}

TEST_P(RoundTrips, KeepTheColoursInTheSideFile) {
    VLMDesign design = twoColors();
    const auto file = target("one");
    design.setDesignLocation(file);
    design.setUseThreadFile(true);
    const VLMDesign read = throughFile(design, file);
    EXPECT_TRUE(read.useThreadFile());
    EXPECT_EQ(test::keysOf(read), (std::vector<Text>{"800", "507"}));
    EXPECT_EQ(design.threads(), twoColors().threads());
}

TEST_P(RoundTrips, LeaveTheOldFileWhereTheFolderMayNotBeWritten) {
    const auto file = target("one");
    std::ofstream(file) << "old";
    std::filesystem::permissions(file.parent_path(), std::filesystem::perms(0555));
    EXPECT_TRUE(test::inBoundProcess(file.parent_path().parent_path(), [&] {
        VLMDesign design = twoColors();
        VLMError error;
        return !exportDesignToURLerror(design, file, &error, newYear) && error.code == EACCES &&
               error.domain == systemErrorDomain;
    }));
    std::filesystem::permissions(file.parent_path(), std::filesystem::perms(0755));
    EXPECT_EQ(TemporaryFolder::read(file), "old");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(file.parent_path()), {}), 1);
}

TEST_P(RoundTrips, LeaveAFolderOfTheFilesName) {
    const auto file = target("one");
    std::filesystem::create_directory(file);
    VLMDesign design = twoColors();
    VLMError error;
    EXPECT_FALSE(exportDesignToURLerror(design, file, &error, newYear));
    EXPECT_EQ(error.domain, systemErrorDomain);
    EXPECT_EQ(error.code, EISDIR);
    EXPECT_TRUE(std::filesystem::is_directory(file));
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(file.parent_path()), {}), 1);
}

TEST_P(RoundTrips, KeepPlacesWithinATenthOfAMillimetre) {
    // Fractions must not add up: after any number of stitches the needle is where it should be.
    std::vector<VLMStitch> stitches;
    stitches.reserve(2001);
    for (int i = 0; i < 2000; ++i)
        stitches.push_back(stitch(i % 200 < 100 ? 0.37F : -0.37F, i % 300 < 150 ? 0.21F : -0.21F));
    stitches.push_back(stitch(-20, -20));  // the origin lies within the bounds
    VLMDesign design = sewn(std::move(stitches));
    VLMDesign read = throughFile(design, target("one"));
    const bool hasStart = GetParam().extension == "pes" || GetParam().extension == "pec";
    ASSERT_EQ(read.stitches().size(), design.stitches().size() + (hasStart ? 1 : 0));
    DesignPoint sewnPlace;
    DesignPoint readPlace;
    for (std::size_t i = 0; i < design.stitches().size(); ++i) {
        sewnPlace.x += double{design.stitches()[i].deltaX()};
        sewnPlace.y += double{design.stitches()[i].deltaY()};
        const std::size_t start = hasStart ? 1 : 0;
        readPlace.x += double{read.stitches()[i + start].deltaX()};
        readPlace.y += double{read.stitches()[i + start].deltaY()};
        EXPECT_NEAR(readPlace.x, sewnPlace.x, 1.01) << i;
        EXPECT_NEAR(readPlace.y, sewnPlace.y, 1.01) << i;
    }
}

INSTANTIATE_TEST_SUITE_P(Each, RoundTrips, testing::ValuesIn(writableFormats()),
                         [](const auto& row) { return std::string(row.param.type); });

/// Stitches that the rules of a format keep from being written the same again.
struct Drift {
    std::string name;
    std::string extension;
    std::vector<VLMStitch> sewn;
    std::vector<VLMStitch> writtenAgain;
    std::size_t threads = 1;
    std::vector<VLMStitch> written = sewn;
};

class SecondExports : public testing::TestWithParam<Drift> {};
TEST_P(SecondExports, DifferByTheFormatsRules) {
    const auto& drift = GetParam();
    const TemporaryFolder folder;
    VLMDesign design = sewn(drift.sewn, drift.threads);
    std::vector<std::string> files;
    for (const auto& expected : {drift.written, drift.writtenAgain}) {
        const auto file = folder.path() / ("rose." + drift.extension);
        VLMError error;
        ASSERT_TRUE(exportDesignToURLerror(design, file, &error, newYear)) << error.message();
        EXPECT_EQ(design.stitches().all(), expected);
        files.push_back(TemporaryFolder::read(file));
        design = VLMDesign();
        ASSERT_TRUE(importDesignFromURLerror(design, file, &error)) << error.message();
    }
    EXPECT_NE(files[0], files[1]);
}
const std::vector<Drift> drifts{
    {.name = "AChangeInExpGainsAStitchOnTheSpot",
     .extension = "exp",
     .sewn = {stitch(10, 5), change(0, 0), stitch(-40, 0)},
     .writtenAgain = {stitch(10, 5), change(0, 0), stitch(0, 0), stitch(-40, 0)},
     .threads = 2},
    {.name = "AChangeInPcsGainsAStitchAndLosesTheLast",
     .extension = "pcs",
     .sewn = {stitch(10, 5), change(0, 0), stitch(-40, 0), stitch(5, 5)},
     .writtenAgain = {stitch(10, 5), change(0, 0), stitch(0, 0), stitch(-40, 0)},
     .threads = 2},
    {.name = "ARepeatedPlaceInPcsMakesAJump",
     .extension = "pcs",
     .sewn = {stitch(10, 5), stitch(20, 20), stitch(0, 0), stitch(-10, 0)},
     .writtenAgain = {stitch(10, 5), jump(20, 20), stitch(0, 0), stitch(-10, 0)}},
    {.name = "ALongMoveInPcsIsAJump",
     .extension = "pcs",
     .sewn = {stitch(10, 5), stitch(150, 20), stitch(-10, 0)},
     .writtenAgain = {stitch(10, 5), jump(150, 20), stitch(-10, 0)}},
    {.name = "AnOddSizeInPecStartsHalfATenthOff",
     .extension = "pec",
     .sewn = {jump(10, 5), stitch(5, 5), stitch(-21, 3)},
     .writtenAgain = {jump(9.5, 5), stitch(5, 5), stitch(-21, 3)}},
    {.name = "AnOddSizeInPesStartsHalfATenthOff",
     .extension = "pes",
     .sewn = {jump(10, 5), stitch(5, 5), stitch(-21, 3)},
     .writtenAgain = {jump(9.5, 5), stitch(5, 5), stitch(-21, 3)}},
    {.name = "ACutIsUnevenOnceItIsRounded",
     .extension = "exp",
     .sewn = {jump(41.5, 504), stitch(10, 5)},
     .writtenAgain = {jump(10.25, 126), jump(10.25, 126), jump(10.25, 126), jump(10.25, 126), stitch(10, 5)},
     .written = {jump(10.375, 126), jump(10.375, 126), jump(10.375, 126), jump(10.375, 126), stitch(10, 5)}},
    {.name = "AJumpWithinTheGridOfPcsGoes",
     .extension = "pcs",
     .sewn = {stitch(10, 5), jump(0.5, 0), stitch(20, 0)},
     .writtenAgain = {stitch(10, 5), stitch(20, 0)}},
    {.name = "APieceOfAStitchBehindAJumpGoesAtTheEnd",
     .extension = "dst",
     .sewn = {stitch(-10, 5), jump(20, -20), stitch(130, 0)},
     .writtenAgain = {stitch(-10, 5), jump(20, -20), stitch(120, 0)},
     .written = {stitch(-10, 5), jump(20, -20), stitch(120, 0), jump(10, 0)}},
    {.name = "APieceOfAStitchBehindAJumpJoinsTheNext",
     .extension = "jef",
     .sewn = {jump(10, 5), stitch(5, 210), change(0, 0), jump(20, -9), stitch(-4, -4)},
     .writtenAgain = {jump(10, 5), stitch(3, 126), jump(22, 75), change(0, 0), stitch(-4, -4)},
     .threads = 2,
     .written = {jump(10, 5), stitch(3, 126), jump(2, 84), jump(20, -9), change(0, 0), stitch(-4, -4)}},
    {.name = "AThreadWithoutABlockIsLostInDst",
     .extension = "dst",
     .sewn = {stitch(10, 5), stitch(-15, -15)},
     .writtenAgain = {stitch(10, 5), stitch(-15, -15)},
     .threads = 2},
};
INSTANTIATE_TEST_SUITE_P(Each, SecondExports, testing::ValuesIn(drifts),
                         [](const auto& row) { return row.param.name; });

TEST(RoundTripsOf, AllWritableFormatsAreKnown) {
    EXPECT_EQ(lossesOfFormats.size(), writableFormats().size());
}

/// The conversions of the samples that fail, by the code they fail with: DST files must come back past the place where
/// they start (130), and the middle of a hoop is that place (62).
const std::map<std::string_view, std::map<std::string_view, int>> refusedConversions{
    {"jef", {{"dst", 130}}},
    {"jef+", {{"dst", 130}}},
    {"jpx", {{"dst", 130}}},
    {"sew", {{"dst", 130}}},
    {"exp", {{"dst", 130}}},
    {"dst", {{"dst", 130}}},
    {"ksm", {{"dst", 130}}},
    {"vp3", {{"dst", 130}, {"jef", 62}}},
    {"pcd", {{"dst", 130}, {"jef", 62}, {"pcs", 62}}},
    {"pcq", {{"dst", 130}, {"jef", 62}, {"pcs", 62}}},
    {"pes", {}},
    {"pec", {}},
    {"pcs", {}},
};

class Conversions : public testing::TestWithParam<Format> {};
TEST_P(Conversions, SucceedOrSayWhyNot) {
    const std::string_view source = GetParam().extension;
    const TemporaryFolder folder;
    const auto from = folder.write("from." + std::string(source), test::sampleFile(source));
    for (const Format& target : writableFormats()) {
        SCOPED_TRACE(target.extension);
        const auto to = folder.path() / ("to." + std::string(target.extension));
        VLMDesign design;
        VLMError error;
        ASSERT_TRUE(importDesignFromURLerror(design, from, &error)) << error.message();
        const bool isWritten = exportDesignToURLerror(design, to, &error);
        const auto& refused = refusedConversions.at(source);
        const auto expected = refused.find(target.extension);
        EXPECT_EQ(error.code, expected == refused.end() ? 0 : expected->second) << error.message();
        EXPECT_EQ(isWritten, error.code == 0);
        EXPECT_EQ(std::filesystem::exists(to), isWritten);
        if (!isWritten) continue;
        EXPECT_EQ(design.designType(), target.type);
        VLMDesign read;
        EXPECT_TRUE(importDesignFromURLerror(read, to, &error)) << error.message();
        EXPECT_EQ(read.threads().size(), design.threads().size());
    }
}
INSTANTIATE_TEST_SUITE_P(Each, Conversions, testing::ValuesIn(allFormats().begin(), allFormats().end()),
                         [](const auto& row) {
                             return std::string(row.param.type == "JEF+" ? "JEFPlus" : row.param.type);
                         });

}  // namespace
}  // namespace velamo
