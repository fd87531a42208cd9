#include <gtest/gtest.h>

#include <limits>
#include <ostream>

#include "velamo/model/design.h"

namespace velamo {
namespace {

VLMThread threadOf(const Text& palette, const Text& paletteName, const VLMColor& color = VLMColor()) {
    return VLMThread::initWithColorandNameforKeyofPalettewithName(color, "n", "k", palette, paletteName);
}

VLMDesign designOf(std::vector<VLMStitch> stitches, std::size_t threads = 1) {
    VLMDesign design;
    design.setStitches(std::move(stitches));
    for (std::size_t i = 0; i < threads; ++i) design.threads().push_back(threadOf("Undefined", ""));
    return design;
}

struct SizeRow {
    const char* name;
    float minimum, maximum;
    std::int32_t size;
    double center;
};
class Sizes : public testing::TestWithParam<SizeRow> {};
TEST_P(Sizes, AreTruncatedBounds) {
    const auto& [name, minimum, maximum, size, center] = GetParam();
    VLMDesign design;
    design.setXMin(minimum);
    design.setXMax(maximum);
    EXPECT_EQ(design.designWidth(), size);
    EXPECT_EQ(design.designHeight(), 0);
    EXPECT_EQ(design.centerOfDesign(), (DesignPoint{center, 0}));
    VLMDesign turned;
    turned.setYMin(minimum);
    turned.setYMax(maximum);
    EXPECT_EQ(turned.designHeight(), size);
    EXPECT_EQ(turned.centerOfDesign(), (DesignPoint{0, center}));
}
constexpr float largest = std::numeric_limits<float>::max();
INSTANTIATE_TEST_SUITE_P(
    Rows, Sizes,
    testing::Values(SizeRow{"Truncated", -0.5F, 99.9F, 100, double{(-0.5F + 99.9F) * 0.5F}},
                    SizeRow{"BothNegative", -300, -100, 200, -200},
                    SizeRow{"SinglePrecision", -0.25F, 16777216, 16777216, 8388608},
                    SizeRow{"NoStitches", largest, -largest, std::numeric_limits<std::int32_t>::min(), 0},
                    SizeRow{"BeyondAnySize", -3e9F, 3e9F, std::numeric_limits<std::int32_t>::max(), 0}),
    [](const auto& row) { return row.param.name; });

TEST(Counts, StitchesAreTheListWithoutOneRecordForEachFurtherThread) {
    EXPECT_EQ(designOf({{1, 0, false, false}, {1, 0, false, true}, {1, 0, true, false}}, 2).numberOfStitches(), 2);
    EXPECT_EQ(designOf({{1, 0, false, false}}, 0).numberOfStitches(), 2);  // not by the flags, on purpose
    EXPECT_EQ(designOf({}, 3).numberOfStitches(), -2);
    VLMDesign withoutLists;
    withoutLists.setStitches(StitchList::none());
    withoutLists.setThreads(ThreadList::none());
    EXPECT_EQ(withoutLists.numberOfStitches(), 0);
    EXPECT_EQ(withoutLists.numberOfThreads(), 0);
}

TEST(Counts, JumpsThatChangeTheColourAreNoJumps) {
    EXPECT_EQ(
        designOf({{1, 0, true, false}, {1, 0, true, true}, {1, 0, false, true}, {0, 0, true, false}}).numberOfJumps(),
        2);
}

TEST(Counts, ColoursDifferByTheirComponentsAlone) {
    const auto red = VLMColor::initWithRedgreenblue(1, 0, 0);
    const auto nearlyRed = VLMColor::initWithRedgreenblue(1, 1e-300, 0);
    VLMDesign design;
    EXPECT_EQ(design.numberOfDifferentColors(), 0);
    design.setThreads({threadOf("A", "a", red), threadOf("B", "b", red)});
    EXPECT_EQ(design.numberOfThreads(), 2);
    EXPECT_EQ(design.numberOfDifferentColors(), 1);
    design.threads().push_back(threadOf("A", "a", nearlyRed));
    EXPECT_EQ(design.numberOfDifferentColors(), 2);
}

TEST(Points, FirstStitchIsWhereSewingBegins) {
    EXPECT_EQ(designOf({{5, 6, false, false}}).firstStitch(), (DesignPoint{0, 0}));
    EXPECT_EQ(designOf({}).firstStitch(), (DesignPoint{0, 0}));
    EXPECT_EQ(
        designOf({{5, 6, true, false}, {1, 1, true, true}, {9, 9, false, false}, {1, 1, true, false}}).firstStitch(),
        (DesignPoint{6, 7}));
}

TEST(Points, LastStitchIsTheSumOfAllMovesInDoublePrecision) {
    EXPECT_EQ(designOf({}).lastStitch(), (DesignPoint{0, 0}));
    EXPECT_EQ(designOf({{16777216, 0.1F, true, false}, {1, 0, false, true}}).lastStitch(),
              (DesignPoint{16777217, double{0.1F}}));
}

struct PaletteRow {
    const char* name;
    std::vector<VLMThread> threads;
    std::string palette;
    std::string paletteName;
};
class CommonPalettes : public testing::TestWithParam<PaletteRow> {};
TEST_P(CommonPalettes, AreThoseOfAllThreads) {
    VLMDesign design;
    design.setThreads(GetParam().threads);
    EXPECT_EQ(design.designPalette(), GetParam().palette);
    EXPECT_EQ(design.designPaletteName(), GetParam().paletteName);
}
INSTANTIATE_TEST_SUITE_P(
    Rows, CommonPalettes,
    testing::Values(
        PaletteRow{"NoThreads", {}, "", "Threadcolors"},
        PaletteRow{"OneForAll", {threadOf("A", "a"), threadOf("A", "a")}, "A", "a"},
        PaletteRow{"Mixed", {threadOf("A", "a"), threadOf("B", "b"), threadOf("A", "a")}, "", "Threadcolors"},
        PaletteRow{"MixedAndThenFree", {threadOf("A", "a"), threadOf("", ""), threadOf("", "")}, "", "Threadcolors"},
        PaletteRow{"AbsentTexts", {threadOf({}, {}), threadOf({}, {})}, "", "Threadcolors"}),
    [](const auto& row) { return row.param.name; });

struct WritableRow {
    Text type;
    std::int32_t version;
    bool isWritable;
};
void PrintTo(const WritableRow& row, std::ostream* out) {
    *out << row.type.value_or("none") << ' ' << row.version;
}
class Writability : public testing::TestWithParam<WritableRow> {};
TEST_P(Writability, GoesByTypeAndVersion) {
    VLMDesign design;
    design.setDesignType(GetParam().type);
    design.setDesignVersion(GetParam().version);
    EXPECT_EQ(design.isWritable(), GetParam().isWritable);
}
INSTANTIATE_TEST_SUITE_P(Rows, Writability,
                         testing::Values(WritableRow{"JEF", 0, true}, WritableRow{"PES", 10, true},
                                         WritableRow{"PES", 60, false}, WritableRow{"PEC", 10, true},
                                         WritableRow{"DST", 10, true}, WritableRow{"EXP", 99, true},
                                         WritableRow{"PCS", 21, true}, WritableRow{"PCD", 20, false},
                                         WritableRow{"PCQ", 20, false}, WritableRow{"JPX", 10, false},
                                         WritableRow{"SEW", 10, false}, WritableRow{"VP3", 10, false},
                                         WritableRow{"KSM", 10, false}, WritableRow{"JEF+", 10, false},
                                         WritableRow{"dst", 10, false}, WritableRow{std::nullopt, 10, false}));

TEST(ThreadQueries, GoByIndex) {
    VLMDesign design;
    const auto blue = VLMColor::initWithRedgreenblue(0, 0, 1);
    design.setThreads({threadOf("A", "a"), threadOf("B", "b", blue)});
    design.threads()[1].setName("Blue");
    EXPECT_EQ(design.colorOfThread(1), blue);
    EXPECT_EQ(design.nameOfThread(1), "Blue");
    EXPECT_EQ(design.paletteOfThread(1), "B");
    EXPECT_TRUE(design.isShownOfThread(1));
    design.setIsShownofThread(false, 1);
    EXPECT_FALSE(design.isShownOfThread(1));
    EXPECT_THROW(static_cast<void>(design.colorOfThread(2)), std::out_of_range);
    EXPECT_THROW(static_cast<void>(design.nameOfThread(-1)), std::out_of_range);
}

TEST(ShownThreads, AreFoundFromTheFront) {
    VLMDesign design;
    EXPECT_TRUE(design.isShownOfAllThreads());
    EXPECT_EQ(design.indexOfShownThread(), 9223372036854775807);
    design.setThreads({threadOf("A", "a"), threadOf("A", "a"), threadOf("A", "a")});
    EXPECT_TRUE(design.isShownOfAllThreads());
    EXPECT_EQ(design.indexOfShownThread(), 0);
    design.setIsShownofThread(false, 0);
    EXPECT_FALSE(design.isShownOfAllThreads());
    EXPECT_EQ(design.indexOfShownThread(), 1);
    design.setIsShownofThread(false, 1);
    design.setIsShownofThread(false, 2);
    EXPECT_FALSE(design.isShownOfAllThreads());
    EXPECT_EQ(design.indexOfShownThread(), 9223372036854775807);
}

/// 3001 records of which five are jumps, two threads.
VLMDesign rose() {
    std::vector<VLMStitch> stitches(3001, VLMStitch(1, 0, false, false));
    for (std::size_t i = 0; i < 5; ++i) stitches[i * 100].setIsJumpStitch(true);
    stitches[1500].setIsColorChange(true);
    VLMDesign design;
    design.setStitches(std::move(stitches));
    design.setThreads(
        {VLMThread::initWithKeyofPalette("1", "Undefined"), VLMThread::initWithKeyofPalette("900", "Brother")});
    design.setDesignName("rose.dst");
    design.setDesignType("DST");
    design.setDesignVersion(10);
    design.setXMax(1234.9F);
    design.setYMin(-100);
    return design;
}

TEST(Descriptions, TellSizeCountsAndThreads) {
    EXPECT_EQ(rose().description(),
              "rose.dst (DST Version 1.0)\nsize: 123.4 mm x 10.0 mm\n3000 stitches including 5 jumps\n"
              "2 color changes with 2 different colors\n1. Individual color (204, 204, 204)\n2. Black, Brother");
}

TEST(Descriptions, NameTheHoop) {
    VLMDesign design = rose();
    design.setThreads({});
    design.setDesignHoop(
        std::make_shared<const VLMHoop>(VLMHoop::initWithHoopvendorcodewidthheightmultiHooproundHoopisWritable(
            "SQ23", "Janome", 28, 230, 230, false, false, true)));
    EXPECT_EQ(design.description(),
              "rose.dst (DST Version 1.0)\nsize: 123.4 mm x 10.0 mm, hoop Janome SQ23 (230.0 mm x 230.0 mm)\n"
              "3002 stitches including 5 jumps\n0 color changes with 0 different colors");
}

TEST(Descriptions, WriteAbsentTextsAsNull) {
    VLMDesign design;
    design.setThreads({VLMThread()});
    EXPECT_EQ(design.description(),
              "(null) ((null) Version 0.0)\nsize: 0.0 mm x 0.0 mm\n0 stitches including 0 jumps\n"
              "1 color changes with 1 different colors\n1. (null), (null)");
}

}  // namespace
}  // namespace velamo
