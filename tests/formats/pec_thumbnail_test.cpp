#include "velamo/formats/pec_thumbnail.h"

#include <gtest/gtest.h>

#include <cmath>
#include <ctime>
#include <optional>
#include <random>
#include <string>

#include "tests/support/stitches.h"
#include "velamo/platform/graphics/bitmap.h"
#include "velamo/render/design_blocks.h"
#include "velamo/render/draw_design.h"

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
    DesignPoint end;
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

// ---- drawn quickly, and plainly

/// The pixels of the small picture that are made of a part of the design; how the library mixes the large picture's
/// pixels depends a little on which of the small one's it is asked for.
GraphicsRectangle smallPartOf(const DesignRect& part, const DesignRect& seen, const GraphicsRectangle& place) {
    constexpr double reach = 2.75;
    constexpr double mixed = 4;
    const double scale = place.width / seen.width;
    const double x = place.x + (part.x - seen.x - reach) * scale - mixed;
    const double y = place.y + (part.y - seen.y - reach) * scale - mixed;
    const double right = x + (part.width + 2 * reach) * scale + 2 * mixed;
    const double top = y + (part.height + 2 * reach) * scale + 2 * mixed;
    return {std::floor(x), std::floor(y), std::ceil(right) - std::floor(x), std::ceil(top) - std::floor(y)};
}

/// The thumbnail as it comes about without anything that saves time: with a bitmap of its own, every line of which is
/// drawn anew, for what is clipped is. Where the design has a part alone that shows, it is given.
Bytes plainThumbnail(const VLMDesign& design, std::int32_t thread, std::optional<DesignRect> part = std::nullopt) {
    const DesignRect seen{design.xMin() - 10.0, design.yMin() - 10.0, design.designWidth() + 20.0,
                          design.designHeight() + 20.0};
    auto large = Bitmap::make(static_cast<std::int64_t>(seen.width), static_cast<std::int64_t>(seen.height));
    auto small = Bitmap::make(columns, rows);
    if (!large || !small) return {};
    const bool isPainted = large->paint([&](GraphicsContext& context) {
        context.addRectangle({0, 0, static_cast<double>(large->width()), static_cast<double>(large->height())});
        context.clipToPath();
        context.translate(-seen.x, -seen.y);
        drawDesignInRectofContextshow3DshowJumpsshowStructureshowThread(design, seen, context, false, false, false,
                                                                        thread);
    });
    const auto scale = static_cast<float>(42.0 / large->width());
    float width = scale * static_cast<float>(large->width());
    float height = scale * static_cast<float>(large->height());
    if (height > 32) {
        const float factor = 32 / height;
        width *= factor;
        height *= factor;
    }
    const GraphicsRectangle place{(columns - width) * 0.5, (rows - height) * 0.5, width, height};
    const GraphicsRectangle all{0, 0, columns, rows};
    if (!isPainted || !small->drawBitmap(*large, place, part ? smallPartOf(*part, seen, place) : all)) return {};
    const auto thumbnail = pecThumbnailOf(std::span<const std::uint8_t, pecThumbnailPixels * 4>(small->rgba()));
    return {thumbnail.begin(), thumbnail.end()};
}

struct PlainRow {
    const char* name;
    int stitches;
    int reach;  // of a move, in steps
    int steps;  // of a tenth of a millimetre
    int edge;   // of the design, in tenths
    int stitchesOfThread;
    float turned = 0;  // by which the needle is moved on with each stitch
};

VLMDesign designOf(const PlainRow& row, unsigned seed) {
    std::mt19937 random(seed);
    std::vector<VLMStitch> stitches;
    std::vector<VLMThread> threads{dark};
    DesignPoint needle;
    const auto move = [&](double place) {
        const int step = static_cast<int>(random() % static_cast<unsigned>(2 * row.reach + 1)) - row.reach;
        const double delta = static_cast<double>(step) / row.steps;
        return static_cast<float>(std::abs(place + delta) > row.edge ? -delta : delta) + row.turned;
    };
    for (int i = 1; i <= row.stitches; ++i) {
        const bool isChange = i % row.stitchesOfThread == 0;
        VLMStitch next(move(needle.x), move(needle.y), random() % 40 == 0, isChange);
        next.setIsSelected(random() % 10 == 0);
        if (isChange)
            threads.push_back(random() % 2 == 0 ? light : threadOf(0.1 * static_cast<double>(random() % 10), 0.7, 0));
        if (isChange && random() % 4 == 0) threads.back().setIsShown(false);
        stitches.push_back(next);
        needle = {needle.x + next.deltaX(), needle.y + next.deltaY()};
    }
    auto design = designOf(std::move(stitches), threads);
    if (seed % 4 == 1) design.setXMin(design.xMin() + 40);  // bounds that are not true
    if (seed % 4 == 2) design.setSelectionActive(true);
    if (seed % 4 == 3) design.setDisplayRange({100, 500});
    return design;
}

class PecThumbnailsOf : public testing::TestWithParam<PlainRow> {};

TEST_P(PecThumbnailsOf, AreThosePlainlyDrawn) {
    for (unsigned seed = 0; seed < 4; ++seed) {
        const auto design = designOf(GetParam(), seed);
        Bytes plain = plainThumbnail(design, -1);
        EXPECT_EQ(exportPecBitmapToDataForThread(design, -1), plain) << seed;
        const DesignBlocks blocks(design);
        for (std::size_t block = 0; block < blocks.size(); ++block) {
            const auto next = plainThumbnail(design, static_cast<std::int32_t>(block), blocks.boundsOf(block));
            plain.insert(plain.end(), next.begin(), next.end());
        }
        for (std::size_t thread = blocks.size(); thread < design.threads().size(); ++thread)
            plain.insert(plain.end(), frameBytes.begin(), frameBytes.end());
        EXPECT_EQ(pecThumbnailsOfDesignAndThreads(design), plain) << seed;
    }
}

INSTANTIATE_TEST_SUITE_P(
    Rows, PecThumbnailsOf,
    testing::Values(PlainRow{"ShortStitches", 2000, 20, 1, 300, 500}, PlainRow{"LongStitches", 1000, 62, 1, 400, 1000},
                    PlainRow{"FractionsOfTenths", 1000, 3000, 100, 200, 300}, PlainRow{"OneSpot", 2000, 1, 1, 1, 5000},
                    PlainRow{"OneSpotInFractions", 1000, 50, 100, 1, 400}, PlainRow{"ManyThreads", 600, 30, 1, 100, 20},
                    PlainRow{"AThreadForEachStitch", 60, 30, 1, 60, 1}, PlainRow{"LongLines", 200, 700, 1, 700, 60},
                    PlainRow{"WanderingOff", 1000, 10, 1, 100, 250, 0.3F}),
    [](const auto& row) { return row.param.name; });

/// Nothing bounds the stitches of a PEC file. What a first one takes would make minutes of a million.
TEST(PecThumbnailOfAMillionStitches, TakesSeconds) {
    std::vector<VLMStitch> stitches;
    stitches.reserve(1000000);
    for (int i = 0; i < 1000000; ++i) stitches.push_back(stitch(i % 2 == 0 ? 1.0F : -1.0F, i % 4 < 2 ? 1.0F : -1.0F));
    const auto design = designOf(std::move(stitches), {dark});
    const std::clock_t start = std::clock();
    EXPECT_FALSE(isEmpty(exportPecBitmapToDataForThread(design, -1)));
    EXPECT_LT(static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC, 5);
}

}  // namespace
}  // namespace velamo
