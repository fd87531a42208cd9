#include "velamo/formats/pcs.h"

#include <gtest/gtest.h>

#include <limits>
#include <ostream>
#include <random>

#include "tests/support/pcs_file.h"
#include "tests/support/temporary_folder.h"
#include "velamo/formats/import.h"

namespace velamo {
namespace {

using test::bytes;
using test::Bytes;
using test::pcdFile;
using test::pcqFile;
using test::pcsFile;
using test::PcsFile;
using test::PcsKind;
using test::PcsRecord;
using test::PcsType;
using test::repeated;

constexpr float largest = std::numeric_limits<float>::max();

/// A colour record that stays where the needle is: at the hoop's middle when it is the first.
constexpr PcsRecord firstColor{0, 0, PcsKind::colorChange, 0};

/// A place of a record in tenths of a millimetre.
float tenths(int sixths) {
    return static_cast<float>(sixths * (5.0 / 3.0));
}

struct Row {
    const char* name;
    PcsType type;
    std::vector<PcsRecord> records;
    std::vector<VLMStitch> stitches;
    std::int32_t version = 20;
    std::size_t threads = 1;
};
class PcsRecords : public testing::TestWithParam<Row> {};
TEST_P(PcsRecords, GiveTheRow) {
    VLMDesign design;
    VLMError error;
    EXPECT_TRUE(readPcx(design, pcsFile({.type = GetParam().type, .records = GetParam().records}), &error));
    EXPECT_EQ(error.code, 0);
    EXPECT_EQ(design.stitches(), GetParam().stitches);
    EXPECT_EQ(design.designVersion(), GetParam().version);
    EXPECT_EQ(design.threads().size(), GetParam().threads);
}
constexpr PcsType pcs = PcsType::pcsSmallHoop;  // 80 x 80 mm: its middle is 240 sixths from the corner
INSTANTIATE_TEST_SUITE_P(
    Stitches, PcsRecords,
    testing::Values(
        Row{"FirstRecordIsNoStitch", pcs, {{300, 300}}, {}},
        Row{"SecondRecordIsTheFirstStitch", pcs, {{300, 300}, {306, 297}}, {{10, -5, false, false}}},
        Row{"FirstColourStartsAtTheMiddle", pcs, {firstColor, {246, 234}}, {{10, -10, false, false}}},
        Row{"OnTheCentreOfTheLargeHoop",
            PcsType::pcsLargeHoop,
            {firstColor, {360, 345}, {366, 345}},
            // The first place is where the needle is: it was moved there, and there is no stitch before it to tell so.
            {{0, 0, false, false}, {10, 0, false, false}}},
        Row{"Jump", pcs, {{300, 300}, {306, 300, PcsKind::jump}}, {{10, 0, true, false}}},
        Row{"OtherKindsAreStitches",
            pcs,
            {{300, 300},
             {306, 300, PcsKind{1}},
             {312, 300, PcsKind{2}},
             {318, 300, PcsKind{5}},
             {324, 300, PcsKind{255}}},
            {4, VLMStitch(10, 0, false, false)}},
        Row{"TwelveMillimetresIsNoJump",
            pcs,
            {{0, 0}, {72, 0}, {72, 72}, {0, 72}, {0, 0}},
            {{120, 0, false, false}, {0, 120, false, false}, {-120, 0, false, false}, {0, -120, false, false}}},
        Row{"LongerIsAJump",
            pcs,
            {{0, 0}, {75, 0}, {75, 75}, {0, 75}, {0, 0}},
            {{125, 0, true, false}, {0, 125, true, false}, {-125, 0, true, false}, {0, -125, true, false}}},
        Row{"RepeatedPlaceMakesTheStitchBeforeAJump",
            pcs,
            {{300, 300}, {306, 300}, {306, 300}, {312, 300}},
            {{10, 0, true, false}, {0, 0, false, false}, {10, 0, false, false}}},
        Row{"RepeatedJumpPlaceDoesNot",
            pcs,
            {{300, 300}, {306, 300}, {306, 300, PcsKind::jump}},
            {{10, 0, false, false}, {0, 0, true, false}}},
        Row{"RepeatedFirstPlaceHasNoStitchBefore", pcs, {{300, 300}, {300, 300}}, {{0, 0, false, false}}},
        Row{"PlaceRepeatedAfterAColourChangeMakesThatAJump",
            pcs,
            {firstColor, {246, 240}, {0, 5, PcsKind::colorChange, 1}, {246, 240}},
            {{10, 0, false, false}, {0, 0, true, true}, {0, 0, false, false}},
            20,
            2}),
    [](const auto& row) { return row.param.name; });
INSTANTIATE_TEST_SUITE_P(
    ColourChanges, PcsRecords,
    testing::Values(Row{"WithoutAPlaceOfItsOwn",
                        pcs,
                        {firstColor, {246, 240}, {0, 0, PcsKind::colorChange, 1}, {252, 240}},
                        {{10, 0, false, false}, {0, 0, false, true}, {10, 0, false, false}},
                        20,
                        2},
                    Row{"WithXOnlyStays",
                        pcs,
                        {firstColor, {246, 240}, {300, 0, PcsKind::colorChange, 1}, {252, 240}},
                        {{10, 0, false, false}, {0, 0, false, true}, {10, 0, false, false}},
                        20,
                        2},
                    Row{"WithYOnlyStays",
                        pcs,
                        {firstColor, {246, 240}, {0, 300, PcsKind::colorChange, 1}, {252, 240}},
                        {{10, 0, false, false}, {0, 0, false, true}, {10, 0, false, false}},
                        20,
                        2},
                    Row{"WithAPlaceMoves",
                        pcs,
                        {firstColor, {246, 240}, {252, 246, PcsKind::colorChange, 1}, {258, 246}},
                        {{10, 0, false, false}, {10, 10, false, true}, {10, 0, false, false}},
                        21,
                        2},
                    Row{"FirstWithAPlaceStartsThere",
                        pcs,
                        {{300, 300, PcsKind::colorChange, 0}, {306, 300}},
                        {{10, 0, false, false}},
                        21},
                    Row{"WithALongWayIsAJumpToo",
                        pcs,
                        {firstColor, {240, 240, PcsKind::jump}, {315, 240, PcsKind::colorChange, 1}, {315, 246}},
                        {{0, 0, true, false}, {125, 0, true, true}, {0, 10, false, false}},
                        21,
                        2},
                    // Raw zero and the other zero, which is a number of its own.
                    Row{"AtTheOtherZeroHasAPlace",
                        pcs,
                        {firstColor, {240, 240, PcsKind::jump}, {0xFFFFFF, 6, PcsKind::colorChange, 1}, {0, 12}},
                        {{0, 0, true, false}, {-400, -390, true, true}, {0, 10, false, false}},
                        21,
                        2}),
    [](const auto& row) { return row.param.name; });
INSTANTIATE_TEST_SUITE_P(
    OlderTypes, PcsRecords,
    testing::Values(Row{"PcdStartsAtTheCorner", PcsType::pcd, {{300, 300}, {306, 297}}, {{10, -5, false, false}}},
                    Row{"PcdColourIsAStitch",
                        PcsType::pcd,
                        {firstColor, {6, 0}, {12, 0, PcsKind::colorChange, 1}, {0, 0, PcsKind::colorChange, 0}},
                        {{10, 0, false, false}, {10, 0, false, false}, {-20, 0, false, false}}},
                    Row{"PcqColourOfNoPaletteIsAStitch",
                        PcsType::pcq,
                        {{0, 0}, {6, 0, PcsKind::colorChange, 99}},
                        {{10, 0, false, false}}},
                    Row{"PcqJumpIsAStitch", PcsType::pcq, {{0, 0}, {6, 0, PcsKind::jump}}, {{10, 0, false, false}}},
                    Row{"PcdJumpAtTheSamePlaceMakesTheStitchBeforeAJump",
                        PcsType::pcd,
                        {{0, 0}, {6, 0}, {6, 0, PcsKind::jump}},
                        {{10, 0, true, false}, {0, 0, false, false}}},
                    Row{"PcdLongWayIsAJump", PcsType::pcd, {{0, 0}, {75, 0}}, {{125, 0, true, false}}}),
    [](const auto& row) { return row.param.name; });

TEST(PcsPlaces, AreInSinglePrecision) {
    VLMDesign design;
    ASSERT_TRUE(readPcx(design, pcsFile({.records = {{1, 2}, {3, 7}}}), nullptr));
    const float fromX = tenths(1) - 400;
    const float fromY = tenths(2) - 400;
    EXPECT_EQ(design.stitches(),
              (std::vector<VLMStitch>{{(tenths(3) - 400) - fromX, (tenths(7) - 400) - fromY, false, false}}));
}

struct SignRow {
    int raw;
    int value;
};
void PrintTo(const SignRow& row, std::ostream* out) {
    *out << row.raw;
}
class PcsSigns : public testing::TestWithParam<SignRow> {};
TEST_P(PcsSigns, AreOneMoreThanUsual) {
    VLMDesign design;
    ASSERT_TRUE(readPcx(design, pcsFile({.type = PcsType::pcd, .records = {{0, 0}, {GetParam().raw, 0}}}), nullptr));
    EXPECT_EQ(design.stitches()[0].deltaX(), tenths(GetParam().value));
    VLMDesign upward;
    ASSERT_TRUE(readPcx(upward, pcsFile({.type = PcsType::pcd, .records = {{0, 0}, {0, GetParam().raw}}}), nullptr));
    EXPECT_EQ(upward.stitches()[0].deltaY(), tenths(GetParam().value));
}
INSTANTIATE_TEST_SUITE_P(Rows, PcsSigns,
                         testing::Values(SignRow{0, 0}, SignRow{0xFFFFFF, 0}, SignRow{0xFFFFFE, -1},
                                         SignRow{0xFFFF00, -255}, SignRow{0x800000, -8388607}, SignRow{300, 300}));

struct PlaceRow {
    const char* name;
    PcsType type;
    PcsRecord record;
    bool isPlace;
};
class PcsLimits : public testing::TestWithParam<PlaceRow> {};
TEST_P(PcsLimits, EndAtTheLargestHoop) {
    VLMDesign design;
    VLMError error;
    EXPECT_EQ(
        readPcx(design, pcsFile({.type = GetParam().type, .records = {{6, 6}, {12, 6}, GetParam().record, {6, 6}}}),
                &error),
        GetParam().isPlace);
    EXPECT_EQ(error.code, GetParam().isPlace ? 0 : 165);
    EXPECT_EQ(error.recoverySuggestion, GetParam().isPlace ? "" : "Unable to read PCx (invalid stitch position)");
    const auto isColor = GetParam().record.kind == PcsKind::colorChange && GetParam().type == pcs;
    EXPECT_EQ(design.stitches().size(), GetParam().isPlace ? 3U : 1U);
    EXPECT_EQ(design.threads().size(), !GetParam().isPlace ? 0U : 1U) << isColor;
}
INSTANTIATE_TEST_SUITE_P(
    Rows, PcsLimits,
    testing::Values(PlaceRow{"Corner", pcs, {720, 690}, true}, PlaceRow{"TooFarRight", pcs, {721, 0}, false},
                    PlaceRow{"TooHigh", pcs, {0, 691}, false}, PlaceRow{"FarthestUp", pcs, {0, 690}, true},
                    PlaceRow{"TooFarRightInPcd", PcsType::pcd, {721, 0}, false},
                    PlaceRow{"LeftHasNoLimit", pcs, {0x800000, 0x800000}, true},
                    PlaceRow{"FarthestNumber", pcs, {0x7FFFFF, 0}, false},
                    PlaceRow{"JumpTooFar", pcs, {721, 0, PcsKind::jump}, false},
                    PlaceRow{"ColourTooFar", pcs, {721, 0, PcsKind::colorChange, 0}, false},
                    PlaceRow{"PlaceIsLookedAtBeforeTheColour", pcs, {721, 0, PcsKind::colorChange, 99}, false}),
    [](const auto& row) { return row.param.name; });

TEST(PcsTypes, SetTheHoop) {
    struct TypeRow {
        PcsType type;
        const char* designType;
        std::int32_t hoopCode;
        std::int32_t hoopWidth;
        std::int32_t hoopHeight;
    };
    for (const TypeRow& row :
         {TypeRow{PcsType::pcd, "PCD", -1, 0, 0}, TypeRow{PcsType::pcq, "PCQ", -1, 0, 0},
          TypeRow{PcsType::pcsSmallHoop, "PCS", 2, 80, 80}, TypeRow{PcsType::pcsLargeHoop, "PCS", 3, 120, 115}}) {
        VLMDesign design;
        ASSERT_TRUE(readPcx(design, pcsFile({.type = row.type}), nullptr));
        EXPECT_EQ(design.designType(), row.designType);
        EXPECT_EQ(design.hoopCode(), row.hoopCode);
        EXPECT_EQ(design.hoopWidth(), row.hoopWidth);
        EXPECT_EQ(design.hoopHeight(), row.hoopHeight);
        EXPECT_EQ(design.hoopVendor(), row.hoopCode < 0 ? "" : "Pfaff");
        EXPECT_EQ(design.designVersion(), 20);
    }
}

TEST(PcsTypes, OlderOnesKeepTheHoopThatTheDesignHas) {
    VLMDesign design;
    ASSERT_TRUE(design.setHoopFromVendorwithCode("Pfaff", 2));
    ASSERT_TRUE(readPcx(design, pcsFile({.type = PcsType::pcd, .records = {{240, 240}, {240, 240}}}), nullptr));
    EXPECT_EQ(design.hoopCode(), 2);
    // The first place is the hoop's middle, so the origin.
    EXPECT_EQ(design.stitches(), (std::vector<VLMStitch>{{0, 0, false, false}}));
}

TEST(PcsBounds, CountFromTheFirstPlace) {
    VLMDesign design;
    ASSERT_TRUE(readPcx(design, pcsFile({.records = {firstColor, {252, 234}, {234, 246}}}), nullptr));
    EXPECT_EQ(design.xMin(), -10);
    EXPECT_EQ(design.xMax(), 20);
    EXPECT_EQ(design.yMin(), -10);
    EXPECT_EQ(design.yMax(), 10);
}

TEST(PcsBounds, OfOlderTypesReachToTheCorner) {
    for (const PcsType type : {PcsType::pcd, PcsType::pcq, pcs}) {
        VLMDesign right;
        ASSERT_TRUE(readPcx(right, pcsFile({.type = type, .records = {{6, 6}, {12, 12}}}), nullptr));
        EXPECT_EQ(right.xMin(), type == pcs ? 10.0F : 0.0F);
        EXPECT_EQ(right.yMin(), 10);
        EXPECT_EQ(right.xMax(), 10);
        VLMDesign left;
        ASSERT_TRUE(readPcx(left, pcsFile({.type = type, .records = {{12, 6}, {6, 12}}}), nullptr));
        EXPECT_EQ(left.xMin(), -10);
        EXPECT_EQ(left.xMax(), -10);
    }
}

TEST(PcsThreads, AreFreeColoursOfThePalette) {
    VLMDesign design;
    ASSERT_TRUE(readPcx(design, pcsFile(), nullptr));
    ASSERT_EQ(design.threads().size(), 2U);
    const VLMThread& thread = design.threads()[1];
    EXPECT_EQ(thread.color(), VLMColor::initWithRedgreenblue(0, 51 / 255.0, 102 / 255.0));
    EXPECT_NE(thread.color().green(), static_cast<double>(51 / 255.0F));
    EXPECT_EQ(thread.name(), "Individual color (0, 51, 102)");
    EXPECT_EQ(thread.key(), "");
    EXPECT_EQ(thread.palette(), "");
    EXPECT_EQ(thread.paletteName(), "Threadcolors");
    EXPECT_EQ(thread.length(), 0);
    EXPECT_EQ(thread.tension(), 13);
    EXPECT_TRUE(thread.isShown());
    EXPECT_EQ(design.threads()[0].color(), VLMColor::initWithRedgreenblue(1, 0, 0));
    EXPECT_EQ(design.threads()[0].name(), "Individual color (255, 0, 0)");
}

TEST(PcsThreads, OfTheSameColourAreSeveral) {
    VLMDesign design;
    ASSERT_TRUE(readPcx(design, pcsFile({.records = {firstColor, {246, 240}, firstColor, {252, 240}}}), nullptr));
    ASSERT_EQ(design.threads().size(), 2U);
    EXPECT_EQ(design.threads()[0], design.threads()[1]);
}

TEST(PcsThreads, WithoutColourRecordsAreUndefined) {
    for (const Bytes& file : {pcdFile(), pcqFile(), pcsFile({.records = {{6, 6}, {12, 12}}})}) {
        VLMDesign design;
        ASSERT_TRUE(readPcx(design, file, nullptr));
        ASSERT_EQ(design.threads().size(), 1U);
        EXPECT_EQ(design.threads()[0].key(), "1");
        EXPECT_EQ(design.threads()[0].palette(), "Undefined");
        EXPECT_EQ(design.threads()[0].color(), VLMColor());
    }
}

TEST(PcsCount, StopsAtTheNumberOfStitches) {
    const std::vector<PcsRecord> records{firstColor, {246, 240}, {252, 240}, firstColor, {258, 240}, firstColor};
    const auto sizes = [&](std::size_t count) {
        VLMDesign design;
        EXPECT_TRUE(readPcx(design, pcsFile({.records = records, .stitchCount = count}), nullptr));
        return std::pair(design.stitches().size(), design.threads().size());
    };
    EXPECT_EQ(sizes(0), std::pair(std::size_t{0}, std::size_t{1}));  // the placeholder
    EXPECT_EQ(sizes(1), std::pair(std::size_t{1}, std::size_t{1}));
    EXPECT_EQ(sizes(2), std::pair(std::size_t{2}, std::size_t{1}));
    // A colour record behind the last stitch is not read.
    EXPECT_EQ(sizes(3), std::pair(std::size_t{4}, std::size_t{2}));
    // The number may be too large by as much as there are colour records: the file's end ends the reading.
    EXPECT_EQ(sizes(4), std::pair(std::size_t{5}, std::size_t{3}));
    EXPECT_EQ(sizes(6), std::pair(std::size_t{5}, std::size_t{3}));
}

TEST(PcsCount, CountsColourRecordsOfOlderTypes) {
    VLMDesign design;
    ASSERT_TRUE(readPcx(
        design, pcsFile({.type = PcsType::pcd, .records = {firstColor, {6, 0}, {12, 0}}, .stitchCount = 2}), nullptr));
    EXPECT_EQ(design.stitches().size(), 1U);
}

TEST(PcsCount, RecordIsReadWhenItsKindIsThere) {
    // The two bytes behind the records, and seven more, make another record.
    const PcsFile file{.records = {firstColor, {246, 240}}, .stitchCount = 2, .end = bytes(0, 252, 0, 0, 0, 240, 0, 0)};
    VLMDesign cut;
    ASSERT_TRUE(readPcx(cut, pcsFile(file), nullptr));
    EXPECT_EQ(cut.stitches().size(), 1U);
    VLMDesign whole;
    ASSERT_TRUE(readPcx(whole, bytes(pcsFile(file), 4), nullptr));
    EXPECT_EQ(whole.stitches(), (std::vector<VLMStitch>{{10, 0, false, false}, {10, 0, true, false}}));
}

TEST(PcsCount, OfNoneSetsBoundsAndThreadAllTheSame) {
    VLMDesign design;
    ASSERT_TRUE(readPcx(design, pcsFile({.records = {}}), nullptr));
    EXPECT_EQ(design.xMin(), largest);
    EXPECT_EQ(design.yMax(), -largest);
    EXPECT_EQ(design.threads().size(), 1U);
    ASSERT_TRUE(readPcx(design, pcsFile({.type = PcsType::pcd, .records = {}}), nullptr));
    EXPECT_EQ(design.xMin(), 0);
    EXPECT_EQ(design.yMin(), largest);
}

struct ErrorRow {
    const char* name;
    Bytes file;
    int code;
    const char* message;
    const char* designType;  // "": not set
    std::size_t stitches = 0;
    std::size_t threads = 0;
};
class PcsErrors : public testing::TestWithParam<ErrorRow> {};
TEST_P(PcsErrors, AreTold) {
    VLMDesign design;
    VLMError error;
    EXPECT_FALSE(readPcx(design, GetParam().file, &error));
    EXPECT_EQ(error.code, GetParam().code);
    EXPECT_EQ(error.recoverySuggestion, GetParam().message);
    EXPECT_EQ(error.failureReason, "");
    EXPECT_EQ(error.domain, "de.velamo.vlmdesign.ErrorDomain");
    EXPECT_EQ(design.designType().value_or(""), GetParam().designType);
    EXPECT_EQ(design.designVersion(), *GetParam().designType == '\0' ? 0 : 20);
    EXPECT_EQ(design.stitches().size(), GetParam().stitches);
    EXPECT_EQ(design.threads().size(), GetParam().threads);
    EXPECT_FALSE(readPcx(design, GetParam().file, nullptr));
}

Bytes shortened(Bytes file, std::size_t by) {
    file.resize(file.size() - by);
    return file;
}
const Bytes seventeenColors = repeated(std::size_t{17} * 4, 9);
const char* const tooShort = "Unable to read PCx (file too small)";
const char* const noMark = "Unable to read PCx (missing magic)";
const char* const invalidType = "Unable to read PCx (invalid type)";
const char* const tooManyColors = "Unable to read PCx (color palette > 16)";
const char* const invalidColor = "Unable to read PCS (invalid color index)";
INSTANTIATE_TEST_SUITE_P(
    Rows, PcsErrors,
    testing::Values(
        ErrorRow{"NoFile", {}, 160, tooShort, ""}, ErrorRow{"FiveBytes", bytes(0x32, 3, 0, 0, 0), 160, tooShort, ""},
        ErrorRow{"FiveBytesOfSomethingElse", bytes(0x33, 3, 0, 0, 0), 160, tooShort, ""},
        ErrorRow{"NoMark", bytes(0x33, 9, 0xFF, 0, 0, 0), 161, noMark, ""},
        ErrorRow{"Type4", bytes(0x32, 4, 0xFF, 0, 0, 0), 162, invalidType, ""},
        ErrorRow{"Type255", bytes(0x32, 255, 0, 0, 0, 0, 0, 0), 162, invalidType, ""},
        ErrorRow{"SeventeenColours", pcsFile({.palette = seventeenColors}), 163, tooManyColors, "PCS"},
        ErrorRow{"CountOfColoursHasTwoBytes", bytes(0x32, 0, 0, 1, repeated(2000, 0)), 163, tooManyColors, "PCD"},
        ErrorRow{"PaletteCut", bytes(0x32, 3, 1, 0, 1, 2, 3, 0, 0), 160, tooShort, "PCS"},
        ErrorRow{"NoEnd", bytes(0x32, 1, 0, 0, 0, 0), 160, tooShort, "PCQ"},
        ErrorRow{"EndCut", bytes(0x32, 1, 0, 0, 0, 0, 0), 160, tooShort, "PCQ"},
        ErrorRow{"RecordsCut", shortened(pcdFile(), 1), 160, tooShort, "PCD"},
        ErrorRow{"MoreRecordsThanBytes", pcsFile({.records = {{6, 6}}, .stitchCount = 65535}), 160, tooShort, "PCS"},
        ErrorRow{"ColourOutsideThePalette",
                 pcsFile({.records = {firstColor, {246, 240}, {0, 0, PcsKind::colorChange, 2}, {252, 240}}}), 164,
                 invalidColor, "PCS", 1, 1},
        ErrorRow{"ColourWithoutAPalette", pcsFile({.palette = {}, .records = {firstColor, {246, 240}}}), 164,
                 invalidColor, "PCS"},
        ErrorRow{"PlaceOutside", pcsFile({.records = {firstColor, {246, 240}, {721, 0}}}), 165,
                 "Unable to read PCx (invalid stitch position)", "PCS", 1, 1}),
    [](const auto& row) { return row.param.name; });

TEST(PcsErrors, LeaveTheHoopOfThePcsFile) {
    VLMDesign design;
    EXPECT_FALSE(readPcx(design, pcsFile({.palette = seventeenColors}), nullptr));
    EXPECT_EQ(design.hoopCode(), 2);
}

TEST(PcsErrors, LeaveTheBoundsAloneInTheHeader) {
    VLMDesign design;
    design.setXMin(7);
    EXPECT_FALSE(readPcx(design, shortened(pcdFile(), 1), nullptr));
    EXPECT_EQ(design.xMin(), 7);
}

TEST(PcsPalette, MayHave16Colours) {
    VLMDesign design;
    const Bytes palette = bytes(repeated(std::size_t{15} * 4, 9), 255, 255, 255, 9);
    ASSERT_TRUE(
        readPcx(design, pcsFile({.palette = palette, .records = {{0, 0, PcsKind::colorChange, 15}, {6, 6}}}), nullptr));
    EXPECT_EQ(design.threads()[0].color(), VLMColor::initWithRedgreenblue(1, 1, 1));
}

TEST(PcsImport, TypeIsThatOfTheFileNotOfItsName) {
    const test::TemporaryFolder folder;
    VLMDesign design;
    ASSERT_TRUE(importDesignFromURLerror(design, folder.write("rose.pcs", pcdFile()), nullptr));
    EXPECT_EQ(design.designType(), "PCD");
    ASSERT_TRUE(importDesignFromURLerror(design, folder.write("rose.pcq", pcsFile()), nullptr));
    EXPECT_EQ(design.designType(), "PCS");
    EXPECT_EQ(design.stitches(), (std::vector<VLMStitch>{{0, 0, false, false},
                                                         {10, 5, false, false},
                                                         {40, -5, true, false},
                                                         {0, 0, false, true},
                                                         {10, 0, false, false}}));
}

TEST(PcsImport, FailsWithoutAFile) {
    const test::TemporaryFolder folder;
    VLMDesign design;
    VLMError error;
    EXPECT_FALSE(importPcxDesignFromURLerror(design, folder.path() / "missing.pcs", &error));
    EXPECT_EQ(error.code, 160);
    EXPECT_EQ(design.designType(), std::nullopt);
}

TEST(PcsReading, SurvivesEveryPrefix) {
    const Bytes whole = pcsFile();
    for (std::size_t size = 0; size <= whole.size(); ++size) {
        VLMDesign design;
        VLMError error;
        // Colour records are not counted, so the file may lack as many records and still be long enough.
        const bool isRead = size >= whole.size() - 18;
        EXPECT_EQ(readPcx(design, std::span(whole).first(size), &error), isRead) << size;
        EXPECT_EQ(error.code, isRead ? 0 : 160) << size;
    }
}

TEST(PcsReading, SurvivesChangedBytes) {
    const Bytes whole = pcsFile();
    std::mt19937 random(9);
    for (int i = 0; i < 10000; ++i) {
        Bytes file = whole;
        for (auto changes = random() % 4 + 1; changes > 0; --changes)
            file[random() % file.size()] = static_cast<std::uint8_t>(random());
        file.resize(file.size() - (random() % 8 == 0 ? random() % file.size() : 0));
        VLMDesign design;
        VLMError error;
        const bool isRead = readPcx(design, file, &error);
        EXPECT_TRUE(isRead ? error.code == 0 : error.code >= 160 && error.code <= 165) << error.code;
        EXPECT_LE(design.stitches().size(), file.size() / 9);
    }
}

}  // namespace
}  // namespace velamo
