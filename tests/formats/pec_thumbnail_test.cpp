#include "formats/pec_thumbnail.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

#include "platform/bitmap.h"
#include "tests/support/stitches.h"

namespace velamo {
namespace {

using test::change;
using test::jump;
using test::stitch;
using Bytes = std::vector<std::uint8_t>;
using Rows = std::vector<std::string>;

constexpr int columns = 48;
constexpr int rows = 38;

Rows rowsOf(std::span<const std::uint8_t> thumbnail) {
    Rows text;
    for (std::size_t row = 0; row < thumbnail.size() / 6; ++row) {
        text.emplace_back();
        for (unsigned column = 0; column < columns; ++column)
            text.back() += (thumbnail[row * 6 + column / 8] >> column % 8 & 1U) != 0 ? '#' : '.';
    }
    return text;
}

/// What lies inside the frame: columns 3 to 44 of the rows 3 to 34.
Rows insideOf(std::span<const std::uint8_t> thumbnail) {
    Rows inside;
    const Rows all = rowsOf(thumbnail);
    for (std::size_t row = 3; row <= 34; ++row) inside.push_back(all.at(row).substr(3, 42));
    return inside;
}

bool isEmpty(std::span<const std::uint8_t> thumbnail) {
    return insideOf(thumbnail) == Rows(32, std::string(42, '.'));
}

VLMThread threadOf(double red, double green, double blue) {
    return VLMThread::initWithColorandNameforKeyofPalettewithName(VLMColor::initWithRedgreenblue(red, green, blue), "",
                                                                  "", "", "");
}

VLMDesign designOf(std::vector<VLMStitch> stitches, const std::vector<VLMThread>& threads) {
    VLMDesign design;
    design.resetBounds();
    VLMPoint end;
    for (const VLMStitch& stitch : stitches) {
        end = {end.x + stitch.deltaX(), end.y + stitch.deltaY()};
        design.setXMin(std::min(design.xMin(), static_cast<float>(end.x)));
        design.setXMax(std::max(design.xMax(), static_cast<float>(end.x)));
        design.setYMin(std::min(design.yMin(), static_cast<float>(end.y)));
        design.setYMax(std::max(design.yMax(), static_cast<float>(end.y)));
    }
    design.setStitches(std::move(stitches));
    design.setThreads(threads);
    design.setDisplayRange({0, design.stitches().size()});
    return design;
}

/// An area of the size filled with lines 2 apart, its lower left corner where the needle stands.
std::vector<VLMStitch> filledArea(float width, int lines) {
    std::vector<VLMStitch> stitches{stitch(0, 0)};
    for (int i = 0; i < lines; ++i) {
        stitches.push_back(stitch(i % 2 == 0 ? width : -width, 0));
        stitches.push_back(stitch(0, 2));
    }
    return stitches;
}

const VLMThread dark = threadOf(0.1, 0.1, 0.4);
const VLMThread light = threadOf(1.3, 1.3, 0.5);  // its rim is as bright as can be, too

/// The frame, written down.
const Bytes frameBytes = [] {
    Bytes bytes;
    const Bytes none(6, 0);
    const Bytes edge{0xF0, 0xFF, 0xFF, 0xFF, 0xFF, 0x0F};
    const Bytes corner{0x08, 0, 0, 0, 0, 0x10};
    const Bytes inner{0x04, 0, 0, 0, 0, 0x20};
    const Bytes side{0x02, 0, 0, 0, 0, 0x40};
    const auto add = [&bytes](const Bytes& row) { bytes.insert(bytes.end(), row.begin(), row.end()); };
    for (const Bytes& row : {none, edge, corner, inner}) add(row);
    for (int row = 4; row <= 33; ++row) add(side);
    for (const Bytes& row : {inner, corner, edge, none}) add(row);
    return bytes;
}();

TEST(PecThumbnailFrame, IsAllThatAnEmptyDesignGives) {
    ASSERT_EQ(frameBytes.size(), 228U);
    VLMDesign design;
    EXPECT_EQ(exportPecBitmapToDataForThread(design, -1), frameBytes);
    EXPECT_EQ(exportPecBitmapToDataForThread(design, 0), frameBytes);
    EXPECT_EQ(pecThumbnailsOfDesignAndThreads(design), frameBytes);
    design.resetBounds();  // as a reader leaves them that found no stitch
    EXPECT_EQ(exportPecBitmapToDataForThread(design, -1), frameBytes);
    design.setThreads({dark});
    EXPECT_EQ(exportPecBitmapToDataForThread(design, -1), frameBytes);
    EXPECT_EQ(pecThumbnailsOfDesignAndThreads(design).size(), 2 * frameBytes.size());
}

TEST(PecThumbnailFrame, IsThereWhateverTheDesign) {
    const auto design = designOf(filledArea(900, 400), {dark});
    const auto thumbnail = exportPecBitmapToDataForThread(design, -1);
    ASSERT_EQ(thumbnail.size(), frameBytes.size());
    for (std::size_t i = 0; i < frameBytes.size(); ++i) EXPECT_EQ(thumbnail[i] & frameBytes[i], frameBytes[i]) << i;
}

using PixelBytes = std::array<std::uint8_t, pecThumbnailPixels * 4>;

void setPixel(PixelBytes& pixels, int row, int column, std::array<std::uint8_t, 4> rgba) {
    std::copy(rgba.begin(), rgba.end(), pixels.begin() + static_cast<std::ptrdiff_t>(row * columns + column) * 4);
}

struct PixelRow {
    const char* name;
    std::array<std::uint8_t, 4> inner;  // a pixel whose eight neighbours are opaque and light
    bool isSet;
};
class PecThumbnailPixel : public testing::TestWithParam<PixelRow> {};
TEST_P(PecThumbnailPixel, IsAsInTheRow) {
    PixelBytes pixels{};
    for (int row = 9; row <= 11; ++row)
        for (int column = 19; column <= 21; ++column) setPixel(pixels, row, column, {255, 255, 255, 255});
    setPixel(pixels, 10, 20, GetParam().inner);
    const Rows thumbnail = rowsOf(pecThumbnailOf(pixels));
    EXPECT_EQ(thumbnail[9].substr(18, 5), ".###.");
    EXPECT_EQ(thumbnail[10].substr(18, 5), GetParam().isSet ? ".###." : ".#.#.");
    EXPECT_EQ(thumbnail[11].substr(18, 5), ".###.");
}
INSTANTIATE_TEST_SUITE_P(
    Rows, PecThumbnailPixel,
    testing::Values(PixelRow{"Dark", {179, 179, 179, 255}, true}, PixelRow{"RedIsLight", {180, 0, 0, 255}, false},
                    PixelRow{"GreenIsLight", {0, 180, 0, 255}, false}, PixelRow{"BlueIsLight", {0, 0, 180, 255}, false},
                    PixelRow{"White", {255, 255, 255, 255}, false}, PixelRow{"HardlyThere", {1, 1, 1, 1}, true},
                    PixelRow{"Transparent", {0, 0, 0, 0}, false}),
    [](const auto& row) { return row.param.name; });

TEST(PecThumbnailPixels, AreTakenWithinTheFrameOnly) {
    PixelBytes pixels{};
    for (int row = 0; row < rows; ++row)
        for (int column = 0; column < columns; ++column) setPixel(pixels, row, column, {0, 0, 0, 255});
    const auto thumbnail = pecThumbnailOf(pixels);
    EXPECT_EQ(insideOf(thumbnail), Rows(32, std::string(42, '#')));
    const Rows all = rowsOf(thumbnail);
    EXPECT_EQ(all[0], std::string(48, '.'));
    EXPECT_EQ(all[2], "...#" + std::string(40, '.') + "#...");
    EXPECT_EQ(all[3], ".." + std::string(44, '#') + "..");
    EXPECT_EQ(all[4], ".#." + std::string(42, '#') + ".#.");
    EXPECT_EQ(all[37], std::string(48, '.'));
}

TEST(PecThumbnail, FillsDarkAreasAndOutlinesLightOnes) {
    const auto darkRows = insideOf(exportPecBitmapToDataForThread(designOf(filledArea(400, 200), {dark}), -1));
    const auto lightRows = insideOf(exportPecBitmapToDataForThread(designOf(filledArea(400, 200), {light}), -1));
    // 420 by 424 is scaled to a height of 32, so the square lies in the middle.
    EXPECT_EQ(darkRows[16].substr(8, 26), std::string(26, '#'));
    EXPECT_EQ(lightRows[16].substr(8, 26).find_first_of('.'), lightRows[16].substr(8, 26).find("...................."));
    EXPECT_EQ(lightRows[16][21], '.');
}

TEST(PecThumbnail, FitsWideDesignsInTheWidthAndHighOnesInTheHeight) {
    const auto wide = insideOf(exportPecBitmapToDataForThread(designOf(filledArea(2080, 200), {dark}), -1));
    EXPECT_EQ(wide[15], std::string(42, '#'));
    EXPECT_EQ(wide[8], std::string(42, '.'));
    const auto high = insideOf(exportPecBitmapToDataForThread(designOf(filledArea(200, 1000), {dark}), -1));
    for (const std::string& row : high) EXPECT_EQ(row, "...................####...................");
}

TEST(PecThumbnail, StandsUpright) {  // a letter F
    auto stitches = filledArea(80, 300);
    for (const VLMStitch& next : {jump(80, -80), jump(0, 0)}) stitches.push_back(next);
    for (const VLMStitch& next : filledArea(300, 40)) stitches.push_back(next);
    for (const VLMStitch& next : {jump(0, -300), jump(0, 0)}) stitches.push_back(next);
    for (const VLMStitch& next : filledArea(180, 40)) stitches.push_back(next);
    const auto thumbnail = insideOf(exportPecBitmapToDataForThread(designOf(stitches, {dark}), -1));
    EXPECT_EQ(thumbnail[2], "...........####################...........");
    EXPECT_EQ(thumbnail[9], "...........#####..........................");
    EXPECT_EQ(thumbnail[15], "...........##############.................");
    EXPECT_EQ(thumbnail[28], "...........#####..........................");
}

TEST(PecThumbnail, OfAThreadHoldsItsBlockAlone) {
    auto stitches = filledArea(400, 50);  // below, in the first thread
    stitches.push_back(change(0, 0));
    stitches.push_back(jump(0, 200));
    for (const VLMStitch& next : filledArea(400, 50)) stitches.push_back(next);
    const auto design = designOf(stitches, {dark, dark, dark});
    const auto first = insideOf(exportPecBitmapToDataForThread(design, 0));
    const auto second = insideOf(exportPecBitmapToDataForThread(design, 1));
    EXPECT_EQ(first[5], std::string(42, '.'));
    EXPECT_NE(first[27], std::string(42, '.'));
    EXPECT_NE(second[5], std::string(42, '.'));
    EXPECT_EQ(second[27], std::string(42, '.'));
    for (const std::int32_t none : {2, 3, 100, -2})
        EXPECT_EQ(exportPecBitmapToDataForThread(design, none), frameBytes) << none;
}

struct SizeRow {
    const char* name;
    float width;
    float height;
    bool isMade;
};
class PecThumbnailSizes : public testing::TestWithParam<SizeRow> {};
TEST_P(PecThumbnailSizes, GiveTheRow) {
    auto design = designOf(filledArea(100, 3), {dark});
    design.setXMin(0);
    design.setYMin(0);
    design.setXMax(GetParam().width);
    design.setYMax(GetParam().height);
    const std::size_t size = GetParam().isMade ? 228 : 0;
    EXPECT_EQ(exportPecBitmapToDataForThread(design, -1).size(), size);
    EXPECT_EQ(pecThumbnailsOfDesignAndThreads(design).size(), 2 * size);
}
constexpr float largest = std::numeric_limits<float>::max();
constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();
INSTANTIATE_TEST_SUITE_P(Rows, PecThumbnailSizes,
                         testing::Values(SizeRow{"Point", 0, 0, true}, SizeRow{"Widest", 32747, 10, true},
                                         SizeRow{"TooWide", 32748, 10, false}, SizeRow{"TooHigh", 10, 32748, false},
                                         SizeRow{"Huge", 32000, 32000, false},
                                         SizeRow{"SlightlyNegative", -19, -19, true},
                                         SizeRow{"Negative", -20, 10, false},
                                         SizeRow{"Sentinel", -largest, -largest, false},
                                         SizeRow{"Largest", largest, largest, false}),
                         [](const auto& row) { return row.param.name; });

TEST(PecThumbnailSize, OfNoNumberIsNone) {
    auto design = designOf(filledArea(100, 3), {dark});
    design.setXMin(notANumber);
    EXPECT_TRUE(exportPecBitmapToDataForThread(design, -1).empty());
    EXPECT_TRUE(pecThumbnailsOfDesignAndThreads(design).empty());
}

/// Random blocks, some of them nowhere near the picture, drawn one by one on a bitmap of their own each.
TEST(PecThumbnails, OfAllThreadsAreThoseOfEach) {
    for (unsigned seed = 0; seed < 40; ++seed) {
        std::mt19937 random(seed);
        const auto number = [&random](int least, int most) {
            return static_cast<float>(least + static_cast<int>(random() % static_cast<unsigned>(most - least + 1)));
        };
        std::vector<VLMStitch> stitches;
        std::vector<VLMThread> threads{dark};
        const int reach = seed % 4 == 0 ? 8 : 60;
        for (int i = 0; i < 600; ++i) {
            VLMStitch next(number(-reach, reach), number(-reach, reach), random() % 20 == 0, random() % 60 == 0);
            next.setIsSelected(random() % 10 == 0);
            if (next.isColorChange()) threads.push_back(threadOf(number(0, 9) / 9.0, number(0, 9) / 9.0, 0.3));
            stitches.push_back(next);
        }
        auto design = designOf(stitches, threads);
        if (seed % 5 == 1) design.setXMax(design.xMax() - 100);
        if (seed % 5 == 2) design.setSelectionActive(true);
        if (seed % 5 == 3) design.setDisplayRange({100, 300});
        if (seed % 5 == 4 && threads.size() > 1) design.threads().all().pop_back();
        Bytes each = exportPecBitmapToDataForThread(design, -1);
        for (std::size_t thread = 0; thread < design.threads().size(); ++thread) {
            const auto next = exportPecBitmapToDataForThread(design, static_cast<std::int32_t>(thread));
            each.insert(each.end(), next.begin(), next.end());
        }
        EXPECT_FALSE(isEmpty(std::span(each).first(228))) << seed;
        EXPECT_EQ(pecThumbnailsOfDesignAndThreads(design), each) << seed;
    }
}

}  // namespace
}  // namespace velamo
