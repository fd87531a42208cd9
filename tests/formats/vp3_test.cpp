#include "velamo/formats/vp3.h"

#include <gtest/gtest.h>

#include <limits>
#include <ostream>
#include <random>

#include "tests/support/temporary_folder.h"
#include "tests/support/vp3_file.h"
#include "velamo/formats/import.h"

namespace velamo {
namespace {

using test::be32;
using test::bytes;
using test::Bytes;
using test::repeated;
using test::vp3File;
using test::Vp3File;
using test::vp3Header;
using test::vp3Section;
using test::Vp3Section;

constexpr float largest = std::numeric_limits<float>::max();
constexpr std::int32_t most = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t least = std::numeric_limits<std::int32_t>::min();

/// As import does before it asks the reader.
VLMDesign newDesign() {
    VLMDesign design;
    design.setDesignType("VP3");
    design.setDesignVersion(10);
    return design;
}

struct Row {
    const char* name;
    Bytes stitches;
    std::vector<VLMStitch> expected;
};
class Vp3Stitches : public testing::TestWithParam<Row> {};
TEST_P(Vp3Stitches, GiveTheRow) {
    VLMDesign design = newDesign();
    VLMError error;
    // Two bytes behind the section, which it must not touch, let it be empty.
    EXPECT_TRUE(readVp3(design, bytes(vp3File({.sections = {{.stitches = GetParam().stitches}}}), 1, 1), &error));
    EXPECT_EQ(error.code, 0);
    EXPECT_EQ(design.stitches(), GetParam().expected);
    EXPECT_EQ(design.designVersion(), 10);
}
INSTANTIATE_TEST_SUITE_P(
    Rows, Vp3Stitches,
    testing::Values(
        Row{"None", {}, {}}, Row{"DownIsNegative", bytes(10, 5), {{10, -5, false, false}}},
        Row{"Limits", bytes(0x7F, 0x7F, 0x81, 0x80), {{127, -127, false, false}, {-127, 128, false, false}}},
        Row{"OnTheSpot", bytes(0, 0), {{0, 0, false, false}}},
        Row{"Jump", bytes(0x80, 1, 0x01, 0x02, 0xFF, 0xFE, 9, 9), {{258, 2, true, false}}},
        Row{"JumpLimits", bytes(0x80, 1, 0x7F, 0xFF, 0x80, 0x00, 9, 9), {{32767, 32768, true, false}}},
        Row{"EscapeWithOtherBytesIsAStitchOnTheSpot",
            bytes(0x80, 2, 0x80, 3, 0x80, 0, 0x80, 0x80, 0x80, 0xFF),
            {5, VLMStitch(0, 0, false, false)}},
        Row{"EscapeAsYIsAMove", bytes(1, 0x80, 1, 1), {{1, 128, false, false}, {1, -1, false, false}}},
        Row{"LastByteOfAnOddSectionIsNotRead", bytes(1, 1, 2), {{1, -1, false, false}}},
        Row{"RecordsOfAllKinds",
            bytes(1, 2, 0x80, 1, 0, 3, 0, 4, 5, 6, 0x80, 3, 5, 6),
            {{1, -2, false, false}, {3, -4, true, false}, {0, 0, false, false}, {5, -6, false, false}}}),
    [](const auto& row) { return row.param.name; });

TEST(Vp3Stitches, JumpMayReachIntoTheNextSection) {
    // The first section ends in the middle of a jump, whose last bytes are the first ones of the next: 0, 5, 0.
    VLMDesign design = newDesign();
    const Vp3File file{.sections = {{.stitches = bytes(0x80, 1, 0, 7, 0)}, {.stitches = bytes(1, 1)}}};
    ASSERT_TRUE(readVp3(design, vp3File(file), nullptr));
    EXPECT_EQ(design.stitches(), (std::vector<VLMStitch>{{7, 0, true, true}, {1, -1, false, false}}));
}

TEST(Vp3Stitches, LastJumpMayLackTheBytesThatNobodyReads) {
    VLMDesign design = newDesign();
    ASSERT_TRUE(readVp3(design, vp3File({.sections = {{.stitches = bytes(0x80, 1, 0, 7, 0, 8)}}}), nullptr));
    EXPECT_EQ(design.stitches(), (std::vector<VLMStitch>{{7, -8, true, false}}));
}

TEST(Vp3Stitches, PastTheFileFailAtTheFirstThatDoesNotFit) {
    for (const auto& stitches :
         {bytes(1, 1, 2, 2), bytes(1, 1, 2, 2, 3), bytes(1, 1, 2, 2, 0x80, 1), bytes(1, 1, 2, 2, 0x80, 1, 0, 7, 0)}) {
        VLMDesign design = newDesign();
        VLMError error;
        EXPECT_FALSE(readVp3(design, vp3File({.sections = {{.stitches = stitches, .surplusLength = 100}}}), &error));
        EXPECT_EQ(error.code, 154);
        EXPECT_EQ(design.stitches(), (std::vector<VLMStitch>{{1, -1, false, false}, {2, -2, false, false}}));
        EXPECT_EQ(design.threads().size(), 1U);
        EXPECT_EQ(design.xMax(), 3);
        EXPECT_EQ(design.yMin(), -3);
    }
}

TEST(Vp3Stitches, PastTheFileAfterTheLongestLengthEndToo) {
    Bytes file = vp3File();
    const std::size_t section = vp3Header({}).size();
    const Bytes length = be32(most);
    std::copy(length.begin(), length.end(), file.begin() + static_cast<std::ptrdiff_t>(section) + 3);
    VLMDesign design = newDesign();
    VLMError error;
    EXPECT_FALSE(readVp3(design, file, &error));
    EXPECT_EQ(error.code, 154);
    EXPECT_EQ(design.stitches().size(), 2U);
}

struct GapRow {
    const char* name;
    Vp3Section first;
    Vp3Section second;
    float gapX;  // on the second section's stitch
    float gapY;
    std::int32_t version;
};
class Vp3Gaps : public testing::TestWithParam<GapRow> {};
TEST_P(Vp3Gaps, AreCarriedByTheFirstStitchOfTheSection) {
    VLMDesign design = newDesign();
    Vp3Section first = GetParam().first;
    Vp3Section second = GetParam().second;
    first.stitches = bytes(1, 1);
    second.stitches = bytes(2, 3, 4, 5);
    ASSERT_TRUE(readVp3(design, vp3File({.sections = {first, second}}), nullptr));
    ASSERT_EQ(design.stitches().size(), 3U);
    EXPECT_EQ(design.stitches()[1], VLMStitch(GetParam().gapX + 2, GetParam().gapY - 3, false, false));
    EXPECT_EQ(design.stitches()[2], VLMStitch(4, -5, false, false));
    EXPECT_EQ(design.designVersion(), GetParam().version);
}
INSTANTIATE_TEST_SUITE_P(
    Rows, Vp3Gaps,
    testing::Values(GapRow{"None", {.endX = 100, .endY = 100}, {.startX = 100, .startY = 100}, 0, 0, 10},
                    GapRow{"BelowATenthIsNone", {.endX = 100, .endY = 100}, {.startX = 199, .startY = 1}, 0, 0, 10},
                    GapRow{"ToTheRight", {.endX = 100, .endY = 0}, {.startX = 250, .startY = 0}, 1, 0, 20},
                    GapRow{"UpIsNotTurnedRound", {.endX = 0, .endY = 0}, {.startX = 0, .startY = 1000}, 0, 10, 20},
                    GapRow{"TruncatedTowardZero", {}, {.startX = -199, .startY = -299}, -1, -2, 20},
                    GapRow{"FirstEndCountsFromItsStart", {.startX = 50, .endX = 60}, {.startX = 310}, 2, 0, 20},
                    GapRow{"EndWrapsAround", {.startX = 99, .endX = most}, {.startX = least + 98}, 0, 0, 10},
                    GapRow{"EndWrapsAroundBothWays",
                           {.startX = -99, .startY = 99, .endX = least, .endY = most},
                           {.startX = most - 98, .startY = least + 98},
                           0,
                           0,
                           10},
                    GapRow{"WayWrapsAround", {.endX = most}, {.startX = least}, 0, 0, 10},
                    GapRow{"LongestWay", {.endX = 0}, {.startX = most}, 21474836, 0, 20},
                    GapRow{"LongestWayBack", {.endX = 0}, {.startX = least}, -21474836, 0, 20}),
    [](const auto& row) { return row.param.name; });

TEST(Vp3Gaps, BeforeTheFirstSectionMakeVersion20) {
    VLMDesign design = newDesign();
    ASSERT_TRUE(readVp3(
        design, vp3File({.sections = {{.startX = -1000, .startY = 300, .stitches = bytes(1, 1, 2, 2)}}}), nullptr));
    EXPECT_EQ(design.stitches(), (std::vector<VLMStitch>{{-9, 2, false, false}, {2, -2, false, false}}));
    EXPECT_EQ(design.designVersion(), 20);
}

TEST(Vp3Gaps, AreAddedToAnyKindOfRecord) {
    VLMDesign design = newDesign();
    const Vp3File file{.sections = {{.startX = 100, .stitches = bytes(0x80, 2)},
                                    {.startX = 200, .stitches = bytes(0x80, 1, 0, 7, 0, 7, 0, 0)}}};
    ASSERT_TRUE(readVp3(design, vp3File(file), nullptr));
    EXPECT_EQ(design.stitches(), (std::vector<VLMStitch>{{1, 0, false, true}, {8, -7, true, false}}));
}

TEST(Vp3Gaps, OfASectionWithoutStitchesAreLost) {
    VLMDesign design = newDesign();
    const Vp3File file{.sections = {{.startX = 100, .stitches = {}}, {.startX = 300, .stitches = bytes(1, 1)}}};
    ASSERT_TRUE(readVp3(design, vp3File(file), nullptr));
    EXPECT_EQ(design.stitches(), (std::vector<VLMStitch>{{3, -1, false, false}}));
    EXPECT_EQ(design.threads().size(), 2U);
}

TEST(Vp3ColourChanges, AreTheLastStitchesOfAllSectionsButTheLast) {
    VLMDesign design = newDesign();
    const Vp3Section section{.stitches = bytes(1, 1, 2, 2)};
    ASSERT_TRUE(readVp3(design, vp3File({.sections = {section, section, section}}), nullptr));
    EXPECT_EQ(design.stitches(), (std::vector<VLMStitch>{{1, -1, false, false},
                                                         {2, -2, false, true},
                                                         {1, -1, false, false},
                                                         {2, -2, false, true},
                                                         {1, -1, false, false},
                                                         {2, -2, false, false}}));
    EXPECT_EQ(design.threads().size(), 3U);
}

TEST(Vp3ColourChanges, OfEmptySectionsMarkTheStitchBeforeAgain) {
    VLMDesign design = newDesign();
    const Vp3Section full{.stitches = bytes(1, 1, 2, 2)};
    const Vp3Section empty{.stitches = {}};
    ASSERT_TRUE(readVp3(design, bytes(vp3File({.sections = {empty, full, empty, full, empty}}), 0, 0), nullptr));
    EXPECT_EQ(design.stitches(),
              (std::vector<VLMStitch>{
                  {1, -1, false, false}, {2, -2, false, true}, {1, -1, false, false}, {2, -2, false, true}}));
    EXPECT_EQ(design.threads().size(), 5U);
}

TEST(Vp3ColourChanges, MarkTheLastOfManyStitches) {
    // As many stitches as may be gathered before they are put into the design, and one more or less.
    for (const std::size_t count : {255U, 256U, 257U, 512U}) {
        VLMDesign design = newDesign();
        const Vp3Section section{.stitches = repeated(2 * count, 1)};
        ASSERT_TRUE(readVp3(design, bytes(vp3File({.sections = {section, {.stitches = {}}}}), 0, 0), nullptr));
        ASSERT_EQ(design.stitches().size(), count);
        EXPECT_TRUE(design.stitches()[count - 1].isColorChange());
        EXPECT_FALSE(design.stitches()[count - 2].isColorChange());
    }
}

struct HoopRow {
    int width;
    int height;
    int widthInMillimetres;
    int heightInMillimetres;
};
void PrintTo(const HoopRow& row, std::ostream* out) {
    *out << row.width << " x " << row.height;
}
class Vp3Hoops : public testing::TestWithParam<HoopRow> {};
TEST_P(Vp3Hoops, AreRoundedUp) {
    VLMDesign design = newDesign();
    ASSERT_TRUE(readVp3(design, vp3File({.hoopWidth = GetParam().width, .hoopHeight = GetParam().height}), nullptr));
    ASSERT_NE(design.designHoop(), nullptr);
    const VLMHoop& hoop = *design.designHoop();
    EXPECT_EQ(hoop.width(), GetParam().widthInMillimetres);
    EXPECT_EQ(hoop.height(), GetParam().heightInMillimetres);
    EXPECT_EQ(hoop.name(), "");
    EXPECT_EQ(hoop.vendor(), "");
    EXPECT_EQ(hoop.code(), 0);
    EXPECT_FALSE(hoop.isMultiHoop());
    EXPECT_FALSE(hoop.isRounded());
    EXPECT_FALSE(hoop.isWritable());
}
INSTANTIATE_TEST_SUITE_P(Rows, Vp3Hoops,
                         testing::Values(HoopRow{100000, 100001, 100, 101}, HoopRow{1, 999, 1, 1},
                                         HoopRow{0, 1000, 0, 1}, HoopRow{-1, -1000, 0, 0}, HoopRow{-1998, -1999, 0, -1},
                                         HoopRow{most, least, 2147484, -2147482}));

TEST(Vp3Threads, AreFreeColours) {
    VLMDesign design = newDesign();
    ASSERT_TRUE(readVp3(design, vp3File(), nullptr));
    ASSERT_EQ(design.threads().size(), 1U);
    const VLMThread& thread = design.threads()[0];
    // Fractions are worked out in single precision.
    EXPECT_EQ(thread.color(), VLMColor::initWithRedgreenblue(1.0, static_cast<double>(51 / 255.0F), 0.0));
    EXPECT_NE(thread.color().green(), 51 / 255.0);
    EXPECT_EQ(thread.name(), "Red (1234)");
    EXPECT_EQ(thread.key(), "");
    EXPECT_EQ(thread.palette(), "");
    EXPECT_EQ(thread.paletteName(), "Maker");
    EXPECT_EQ(thread.length(), 0);
    EXPECT_EQ(thread.tension(), 13);
    EXPECT_TRUE(thread.isShown());
}

struct TextRow {
    const char* name;
    Bytes catalogueNumber;
    Bytes description;
    Bytes maker;
    std::string threadName;
    std::string paletteName;
};
class Vp3Texts : public testing::TestWithParam<TextRow> {};
TEST_P(Vp3Texts, NameTheThread) {
    VLMDesign design = newDesign();
    ASSERT_TRUE(readVp3(design,
                        vp3File({.sections = {{.catalogueNumber = GetParam().catalogueNumber,
                                               .description = GetParam().description,
                                               .maker = GetParam().maker}}}),
                        nullptr));
    ASSERT_EQ(design.threads().size(), 1U);
    EXPECT_EQ(design.threads()[0].name(), GetParam().threadName);
    EXPECT_EQ(design.threads()[0].paletteName(), GetParam().paletteName);
    EXPECT_EQ(design.stitches().size(), 2U);
}
INSTANTIATE_TEST_SUITE_P(Rows, Vp3Texts,
                         testing::Values(TextRow{"NoDescription", bytes("1234"), {}, bytes("M"), "1234", "M"},
                                         TextRow{"NoCatalogueNumber", {}, bytes("Red"), bytes("M"), "Red ()", "M"},
                                         TextRow{"NoTexts", {}, {}, {}, "", ""},
                                         TextRow{"Latin1", bytes(0xB9), bytes("Gr", 0xFC, "n ", 0xE6), bytes(0xC5, "s"),
                                                 "Gr\u00FCn \u00E6 (\u00B9)", "\u00C5s"},
                                         TextRow{"PatternsAreNoPatterns", bytes("%@"), bytes("%i%n"), bytes("%s"),
                                                 "%i%n (%@)", "%s"},
                                         TextRow{"Long", repeated(300, '7'), bytes("Red"), repeated(65535, 'm'),
                                                 "Red (" + std::string(300, '7') + ")", std::string(65535, 'm')}),
                         [](const auto& row) { return row.param.name; });

TEST(Vp3Threads, FirstColourOfTheTableCounts) {
    VLMDesign design = newDesign();
    const Vp3Section section{.colorTable = bytes(9, 0, 255, 0, 9, 9, 9, 255, 0, 255, 9, 9)};
    ASSERT_TRUE(readVp3(design, vp3File({.sections = {section}}), nullptr));
    EXPECT_EQ(design.threads()[0].color(), VLMColor::initWithRedgreenblue(0, 1, 0));
    EXPECT_EQ(design.threads()[0].name(), "Red (1234)");
}

TEST(Vp3Threads, WithoutATableReadTheirColourAllTheSame) {
    VLMDesign design = newDesign();
    // The bytes where the table would be: three unread ones, then the length of the first text.
    const Vp3Section section{.colorTable = {}, .catalogueNumber = repeated(0x00FF, '1')};
    ASSERT_TRUE(readVp3(design, vp3File({.sections = {section}}), nullptr));
    EXPECT_EQ(design.threads()[0].color(),
              VLMColor::initWithRedgreenblue(static_cast<double>(9 / 255.0F), static_cast<double>(9 / 255.0F), 0));
    EXPECT_EQ(design.stitches().size(), 2U);
}

TEST(Vp3Blocks, BetweenTheFieldsArePassedOver) {
    VLMDesign design = newDesign();
    const Vp3File file{.sections = {{.skippedBlock = 500}, {.skippedBlock = 1}},
                       .headerBlock = 300,
                       .blockBeforeHoop = 257,
                       .blockBehindHoop = 1000,
                       .blockBeforeColors = 65535};
    ASSERT_TRUE(readVp3(design, vp3File(file), nullptr));
    EXPECT_EQ(design.hoopWidth(), 100);
    EXPECT_EQ(design.stitches().size(), 4U);
    EXPECT_EQ(design.threads().size(), 2U);
}

TEST(Vp3Blocks, BetweenSectionsArePassedOver) {
    VLMDesign design = newDesign();
    // What a section claims beyond its records is read as records of it.
    Bytes file = vp3Header({.colorCount = 2});
    file = bytes(file, vp3Section({.surplusLength = 4}), 3, 3, 4, 4, vp3Section({}));
    ASSERT_TRUE(readVp3(design, file, nullptr));
    EXPECT_EQ(design.stitches().size(), 6U);
}

TEST(Vp3Bounds, AreThoseOfThePositions) {
    VLMDesign design = newDesign();
    const Vp3File file{.sections = {{.startX = 1000, .startY = 1000, .endX = 500, .stitches = bytes(5, 5, 0xFB, 1)},
                                    {.startX = 1500, .startY = 2000, .stitches = bytes(1, 1)}}};
    ASSERT_TRUE(readVp3(design, vp3File(file), nullptr));
    EXPECT_EQ(design.xMin(), 10);
    EXPECT_EQ(design.xMax(), 15);
    EXPECT_EQ(design.yMin(), 4);
    EXPECT_EQ(design.yMax(), 13);
}

struct ErrorRow {
    const char* name;
    Bytes file;
    int code;
    const char* message;
    bool hasHoop = false;
    std::size_t threads = 0;
};
class Vp3Errors : public testing::TestWithParam<ErrorRow> {};
TEST_P(Vp3Errors, AreTold) {
    VLMDesign design = newDesign();
    VLMError error;
    EXPECT_FALSE(readVp3(design, GetParam().file, &error));
    EXPECT_EQ(error.code, GetParam().code);
    EXPECT_EQ(error.recoverySuggestion, GetParam().message);
    EXPECT_EQ(error.failureReason, "");
    EXPECT_EQ(error.domain, "de.velamo.vlmdesign.ErrorDomain");
    EXPECT_EQ(design.designHoop() != nullptr, GetParam().hasHoop);
    EXPECT_EQ(design.threads().size(), GetParam().threads);
    EXPECT_FALSE(readVp3(design, GetParam().file, nullptr));
}

Bytes first(std::size_t size) {
    const Bytes whole = vp3File();
    return {whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)};
}

const char* const noHeader = "Unable to import VP3 file (missing header).";
const char* const noStitchSection = "Unable to import VP3 file (no stitch section).";
const char* const noHoop = "Unable to import VP3 file (no hoop data).";
const char* const noColors = "Unable to import VP3 file (no colors).";
const char* const tooSmall = "Unable to import VP3 file (file too small for offset).";
// Where the fields stand in a file whose blocks are all empty.
constexpr std::size_t p1 = 15;
constexpr std::size_t hoop = p1 + 61;
constexpr std::size_t p2 = hoop + 8;
constexpr std::size_t p3 = p2 + 26;
constexpr std::size_t firstSection = p3 + 4;
INSTANTIATE_TEST_SUITE_P(
    Rows, Vp3Errors,
    testing::Values(
        ErrorRow{"NoFile", {}, 150, noHeader}, ErrorRow{"SevenBytes", first(7), 150, noHeader},
        ErrorRow{"OtherMark", bytes("%vsn%", repeated(300, 0)), 150, noHeader},
        ErrorRow{"LargeMark", bytes("%VSM%", repeated(300, 0)), 150, noHeader},
        ErrorRow{"BlockBeforeTheHoopNotThere", first(p1 + 1), 150, noHeader},
        ErrorRow{"HeaderBlockPastTheFile", bytes("%vsm%", 0, 0xFF, 0xFF, repeated(65535, 0)), 150, noHeader},
        ErrorRow{"HoopNotThere", first(p1 + 2), 152, noHoop}, ErrorRow{"HoopCut", first(hoop + 7), 152, noHoop},
        ErrorRow{"BlockBeforeTheHoopPastTheFile", bytes(first(p1), 0xFF, 0xFF, repeated(65535, 0)), 152, noHoop},
        ErrorRow{"NothingBehindTheHoop", first(p2 + 1), 151, noStitchSection, true},
        ErrorRow{"BlockBehindTheHoopPastTheFile", bytes(first(p2), 0, 1, repeated(25, 0)), 151, noStitchSection, true},
        ErrorRow{"BlockBeforeTheColoursNotThere", first(p3 + 1), 151, noStitchSection, true},
        ErrorRow{"ColoursNotThere", first(p3 + 3), 153, noColors, true},
        ErrorRow{"BlockBeforeTheColoursPastTheFile", bytes(first(p3), 0, 1, 0, 0), 153, noColors, true},
        ErrorRow{"NoColours", vp3File({.colorCount = 0}), 153, noColors, true},
        ErrorRow{"SectionNotThere", first(firstSection), 154, tooSmall, true},
        ErrorRow{"SectionHeadCut", first(firstSection + 19), 154, tooSmall, true},
        ErrorRow{"SecondSectionNotThere", vp3File({.colorCount = 2}), 154, tooSmall, true, 1},
        ErrorRow{"ManySectionsNotThere", vp3File({.colorCount = 65535}), 154, tooSmall, true, 1}),
    [](const auto& row) { return row.param.name; });

TEST(Vp3Errors, LeaveTheBoundsAloneInTheHeader) {
    VLMDesign design = newDesign();
    design.setXMin(7);
    EXPECT_FALSE(readVp3(design, vp3File({.colorCount = 0}), nullptr));
    EXPECT_EQ(design.xMin(), 7);
    EXPECT_FALSE(readVp3(design, first(firstSection), nullptr));
    EXPECT_EQ(design.xMin(), largest);
    EXPECT_EQ(design.yMax(), -largest);
}

/// The gap is told before the colour is looked for, the thread before the stitches.
TEST(Vp3Errors, KeepWhatWasReadBefore) {
    const Bytes whole = vp3File({.sections = {{.startX = 100}}});
    for (std::size_t size = firstSection; size < whole.size(); ++size) {
        VLMDesign design = newDesign();
        VLMError error;
        EXPECT_FALSE(readVp3(design, std::span(whole).first(size), &error));
        EXPECT_EQ(error.code, 154);
        const std::size_t threadEnd = firstSection + 16 + 6 + 3 + 2 + 4 + 2 + 3 + 2 + 5;
        EXPECT_EQ(design.designVersion(), size < firstSection + 15 ? 10 : 20) << size;
        EXPECT_EQ(design.threads().size(), size < threadEnd ? 0U : 1U) << size;
        EXPECT_EQ(design.stitches().size(), size < whole.size() - 2 ? 0U : 1U) << size;
    }
}

TEST(Vp3Errors, NeedTwoBytesWhereStitchesBegin) {
    const auto codeOf = [](const Bytes& stitches) {
        VLMDesign design = newDesign();
        VLMError error;
        // The last section may be longer than its records say.
        const bool isRead = readVp3(design, vp3File({.sections = {{.stitches = stitches}}}), &error);
        EXPECT_EQ(isRead, error.code == 0);
        return error.code;
    };
    EXPECT_EQ(codeOf({}), 154);
    EXPECT_EQ(codeOf(bytes(1)), 154);
    EXPECT_EQ(codeOf(bytes(1, 1)), 0);
}

/// A length that leads backward is followed: the records of the section are none then.
TEST(Vp3Sections, MayLeadBackward) {
    Vp3Section once;
    once.surplusLength = -static_cast<std::int64_t>(vp3Section(once).size());
    VLMDesign design = newDesign();
    VLMError error;
    EXPECT_TRUE(readVp3(design, vp3File({.sections = {once}, .colorCount = 3}), &error));
    EXPECT_EQ(design.threads().size(), 3U);
    EXPECT_TRUE(design.stitches().empty());
}

TEST(Vp3Sections, ThatLeadBeforeTheFileFail) {
    VLMDesign design = newDesign();
    VLMError error;
    EXPECT_FALSE(readVp3(design, vp3File({.sections = {{.surplusLength = -100000}}, .colorCount = 2}), &error));
    EXPECT_EQ(error.code, 154);
    EXPECT_EQ(design.threads().size(), 1U);
}

TEST(Vp3Sections, ThatLeadBackwardStayInProportionToTheFile) {
    // Each of 65535 sections is the same one, with a text of 64 KiB: 4 GiB in all.
    Vp3Section section;
    section.maker = repeated(65535, 'm');
    section.surplusLength = -static_cast<std::int64_t>(vp3Section(section).size());
    VLMDesign design = newDesign();
    VLMError error;
    EXPECT_FALSE(readVp3(design, vp3File({.sections = {section}, .colorCount = 65535}), &error));
    EXPECT_EQ(error.code, 154);
    EXPECT_LT(design.threads().size(), 50U);
}

TEST(Vp3Sections, ThatAreReadOverAndOverStayInProportionToTheFile) {
    // One of 150,000 stitches, then one that leads back to it.
    const Bytes full = vp3Section({.stitches = repeated(300000, 1)});
    Vp3Section back;
    back.surplusLength = -static_cast<std::int64_t>(full.size() + vp3Section(back).size());
    const Bytes file = bytes(vp3Header({.colorCount = 65535}), full, vp3Section(back));
    VLMDesign design = newDesign();
    VLMError error;
    EXPECT_FALSE(readVp3(design, file, &error));
    EXPECT_EQ(error.code, 154);
    EXPECT_GE(design.stitches().size(), 300000U);
    EXPECT_LE(design.stitches().size(), 4 * file.size() + (1U << 19));
}

TEST(Vp3Import, SetsTypeAndVersionEvenWhenItFails) {
    const test::TemporaryFolder folder;
    VLMDesign design;
    design.setDesignVersion(99);
    VLMError error;
    EXPECT_FALSE(importVp3DesignFromURLerror(design, folder.path() / "missing.vp3", &error));
    EXPECT_EQ(error.code, 150);
    EXPECT_EQ(design.designType(), "VP3");
    EXPECT_EQ(design.designVersion(), 10);
}

TEST(Vp3Import, ReadsAFile) {
    const test::TemporaryFolder folder;
    VLMDesign design;
    ASSERT_TRUE(importDesignFromURLerror(design, folder.write("rose.vp3", vp3File()), nullptr));
    EXPECT_EQ(design.designType(), "VP3");
    EXPECT_EQ(design.designVersion(), 10);
    EXPECT_EQ(design.stitches(), (std::vector<VLMStitch>{{10, -5, false, false}, {-1, -1, false, false}}));
    EXPECT_EQ(design.xMin(), 9);
    EXPECT_EQ(design.xMax(), 10);
    EXPECT_EQ(design.yMin(), -6);
    EXPECT_EQ(design.yMax(), -5);
}

TEST(Vp3Reading, SurvivesEveryPrefix) {
    const Bytes whole = vp3File({.sections = {{}, {}}});
    for (std::size_t size = 0; size < whole.size(); ++size) {
        VLMDesign design = newDesign();
        VLMError error;
        EXPECT_FALSE(readVp3(design, std::span(whole).first(size), &error)) << size;
        const int code = size < p1 + 2 ? 150 : size < p2 ? 152 : size < p3 + 2 ? 151 : size < firstSection ? 153 : 154;
        EXPECT_EQ(error.code, code) << size;
    }
}

TEST(Vp3Reading, SurvivesChangedBytes) {
    const Bytes whole = vp3File({.sections = {{.startX = 100}, {}, {}}});
    std::mt19937 random(5);
    for (int i = 0; i < 10000; ++i) {
        Bytes file = whole;
        for (auto changes = random() % 4 + 1; changes > 0; --changes)
            file[random() % file.size()] = static_cast<std::uint8_t>(random());
        file.resize(file.size() - (random() % 8 == 0 ? random() % file.size() : 0));
        VLMDesign design = newDesign();
        VLMError error;
        const bool isRead = readVp3(design, file, &error);
        EXPECT_TRUE(isRead ? error.code == 0 : error.code >= 150 && error.code <= 154) << error.code;
        EXPECT_LE(design.stitches().size(), 4 * file.size() + (1U << 19));
    }
}

}  // namespace
}  // namespace velamo
