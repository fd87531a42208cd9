#include "velamo/render/thumbnail.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <ctime>
#include <limits>
#include <random>
#include <utility>
#include <vector>

#include "tests/support/stitches.h"

namespace velamo {
namespace {

using test::change;
using test::jump;
using test::stitch;

struct Bounds {
    float xMin = 0;
    float yMin = 0;
    float xMax = 0;
    float yMax = 0;
};

VLMThread threadOf(double red, double green, double blue) {
    return VLMThread::initWithColorandNameforKeyofPalettewithName(VLMColor::initWithRedgreenblue(red, green, blue), "",
                                                                  "", "", "");
}

/// The stitches in red, and behind a colour change in blue.
VLMDesign designOf(std::vector<VLMStitch> stitches, const Bounds& bounds) {
    VLMDesign design;
    design.setStitches(std::move(stitches));
    design.setThreads({threadOf(0.9, 0.1, 0.1), threadOf(0.1, 0.1, 0.9)});
    design.setXMin(bounds.xMin);
    design.setYMin(bounds.yMin);
    design.setXMax(bounds.xMax);
    design.setYMax(bounds.yMax);
    return design;
}

/// A line from the lower left corner to the upper right one.
VLMDesign diagonalOf(float width, float height) {
    return designOf({jump(5, 7), stitch(0, 0), stitch(width, height)}, {5, 7, 5 + width, 7 + height});
}

/// A square filled with rows of stitches as far apart as rows of a filling are.
VLMDesign filledSquare(float side) {
    constexpr float row = 4;
    std::vector<VLMStitch> stitches{stitch(0, 0)};
    float direction = 1;
    const int rows = static_cast<int>(std::ceil(side / row));
    for (int i = 0; i < rows; ++i, direction = -direction) {
        stitches.push_back(stitch(direction * side, 0));
        stitches.push_back(stitch(0, row));
    }
    return designOf(std::move(stitches), {0, 0, side, side});
}

/// Components from 0 to 255, premultiplied.
struct Pixel {
    int red = 0;
    int green = 0;
    int blue = 0;
    int alpha = 0;
    [[nodiscard]] int lightness() const noexcept { return red + green + blue; }
};

/// Rows count from the top.
Pixel pixelAt(const Bitmap& bitmap, int column, int row) {
    const auto bytes = bitmap.rgba();
    const auto* const pixel = bytes.data() + static_cast<std::ptrdiff_t>(row * bitmap.width() + column) * 4;
    return {pixel[0], pixel[1], pixel[2], pixel[3]};
}

// ---- size

struct SizeRow {
    const char* name;
    float width;
    float height;
    std::int32_t pixels;
    int pixelWidth;  // 0: no picture
    int pixelHeight;
};
class ThumbnailSize : public testing::TestWithParam<SizeRow> {};
TEST_P(ThumbnailSize, IsThatOfTheRow) {
    const auto& row = GetParam();
    const auto bitmap = thumbnailOf(diagonalOf(row.width, row.height), row.pixels);
    EXPECT_EQ(bitmap ? bitmap->width() : 0, row.pixelWidth);
    EXPECT_EQ(bitmap ? bitmap->height() : 0, row.pixelHeight);
}
constexpr float largest = std::numeric_limits<float>::max();
constexpr float infinity = std::numeric_limits<float>::infinity();
INSTANTIATE_TEST_SUITE_P(
    Rows, ThumbnailSize,
    testing::Values(SizeRow{"Square", 500, 500, 128, 128, 128}, SizeRow{"Wide", 1000, 500, 256, 256, 129},
                    SizeRow{"High", 500, 1000, 512, 257, 512}, SizeRow{"Tiny", 4, 4, 128, 128, 128},
                    SizeRow{"LongAndThin", 1, 1000, 128, 1, 128}, SizeRow{"LongAndFlat", 1000, 1, 128, 128, 1},
                    SizeRow{"ALine", 0, 1000, 1024, 4, 1024}, SizeRow{"LongerThanAnyMachine", 1e9F, 3, 128, 128, 1},
                    SizeRow{"OnePixel", 300, 200, 1, 1, 1}, SizeRow{"TwoPixels", 300, 10, 2, 2, 1},
                    SizeRow{"NoPixels", 300, 200, 0, 0, 0}, SizeRow{"LessThanNoPixels", 300, 200, -128, 0, 0},
                    SizeRow{"MorePixelsThanAreDrawn", 300, 150, 100000, 1024, 519},
                    SizeRow{"MostPixels", 300, 0, std::numeric_limits<std::int32_t>::max(), 1024, 13},
                    SizeRow{"NoSize", 0, 0, 128, 0, 0}, SizeRow{"Negative", -30, 10, 128, 0, 0},
                    SizeRow{"Sentinel", -largest, -largest, 128, 0, 0}, SizeRow{"Infinite", infinity, 10, 128, 0, 0},
                    SizeRow{"NoNumber", std::numeric_limits<float>::quiet_NaN(), 10, 128, 0, 0}),
    [](const auto& row) { return row.param.name; });

// ---- what is shown

TEST(Thumbnail, HasTheThreadsColorsAndATransparentGround) {
    // Thick horizontal threads: a red one below, a blue one above.
    const auto design = designOf(
        {stitch(0, 0), stitch(40, 0), jump(-40, 20), change(0, 0), stitch(0, 0), stitch(40, 0)}, {0, 0, 40, 20});
    const auto bitmap = thumbnailOf(design, 88);  // two pixels for each tenth
    ASSERT_TRUE(bitmap);
    ASSERT_EQ(bitmap->width(), 88);
    ASSERT_EQ(bitmap->height(), 48);
    const auto red = pixelAt(*bitmap, 44, 44);
    EXPECT_GT(red.red, 3 * red.blue);
    EXPECT_EQ(red.alpha, 255);
    const auto blue = pixelAt(*bitmap, 44, 4);
    EXPECT_GT(blue.blue, 3 * blue.red);
    EXPECT_EQ(blue.alpha, 255);
    EXPECT_EQ(pixelAt(*bitmap, 44, 24).alpha, 0);
    EXPECT_EQ(pixelAt(*bitmap, 0, 0).alpha, 0);  // the thread's end is round
}

TEST(Thumbnail, IsLitFromAbove) {
    const auto bitmap = thumbnailOf(designOf({stitch(0, 0), stitch(40, 0)}, {0, 0, 40, 0}), 440);
    ASSERT_TRUE(bitmap);
    ASSERT_EQ(bitmap->height(), 40);
    const int upper = pixelAt(*bitmap, 220, 12).lightness();
    const int lower = pixelAt(*bitmap, 220, 38).lightness();
    EXPECT_GT(upper, 3 * lower / 2);
    EXPECT_GT(upper, pixelAt(*bitmap, 30, 12).lightness());  // the end dives into the cloth
}

/// Light and dark sides of threads that cannot be told apart would darken what is drawn last.
TEST(Thumbnail, KeepsTheColorOfFillingsThatAreShownSmall) {
    for (const std::int32_t pixels : {32, 64, 128}) {
        const auto bitmap = thumbnailOf(filledSquare(2000), pixels);
        ASSERT_TRUE(bitmap);
        const auto middle = pixelAt(*bitmap, pixels / 2, pixels / 2);
        EXPECT_NEAR(middle.red, 230, 26) << pixels;
        EXPECT_LT(middle.blue, 60) << pixels;
    }
}

TEST(Thumbnail, ShowsNoSeamInAFilling) {
    for (const std::int32_t pixels : {64, 100, 128, 129, 200, 256, 333, 512, 1024}) {
        const auto bitmap = thumbnailOf(filledSquare(600), pixels);
        ASSERT_TRUE(bitmap);
        const auto bytes = bitmap->rgba();
        const int margin = pixels / 20;
        int seams = 0;
        for (int row = margin; row < pixels - margin; ++row)
            for (int column = margin; column < pixels - margin; ++column)
                seams += bytes[static_cast<std::size_t>(row * pixels + column) * 4 + 3] < 255 ? 1 : 0;
        EXPECT_EQ(seams, 0) << pixels;
    }
}

/// What is opaque in each row, in pixels.
std::vector<double> coverOfRows(const Bitmap& bitmap) {
    const auto bytes = bitmap.rgba();
    std::vector<double> covers;
    for (int row = 0; row < bitmap.height(); ++row) {
        double cover = 0;
        for (int column = 0; column < bitmap.width(); ++column)
            cover += bytes[static_cast<std::size_t>(row * bitmap.width() + column) * 4 + 3] / 255.0;
        covers.push_back(cover);
    }
    return covers;
}

TEST(Thumbnail, ShowsThinLinesOfLargeDesignsAPixelWide) {
    for (const float width : {2000.0F, 150.0F, 1.0F, 0.0F}) {
        const auto bitmap = thumbnailOf(diagonalOf(width, 4000), 128);
        ASSERT_TRUE(bitmap);
        const auto covers = coverOfRows(*bitmap);
        for (std::size_t row = 2; row + 2 < covers.size(); ++row) EXPECT_NEAR(covers[row], 1.1, 0.25) << width;
    }
}

TEST(Thumbnail, LeavesOutJumpsAndTheFirstStitchBehindEach) {
    const auto design =
        designOf({stitch(0, 0), stitch(10, 0), jump(10, 0), stitch(10, 0), stitch(10, 0)}, {0, 0, 40, 0});
    const auto bitmap = thumbnailOf(design, 44);  // a pixel for each tenth
    ASSERT_TRUE(bitmap);
    EXPECT_EQ(pixelAt(*bitmap, 7, 2).alpha, 255);
    EXPECT_EQ(pixelAt(*bitmap, 17, 2).alpha, 0);
    EXPECT_EQ(pixelAt(*bitmap, 26, 2).alpha, 0);
    EXPECT_EQ(pixelAt(*bitmap, 37, 2).alpha, 255);
}

/// A file without colours has blocks all the same.
TEST(Thumbnail, TellsThreadsOfUnknownColorsApartByTheirGreys) {
    auto design =
        designOf({stitch(0, 0), stitch(10, 0), jump(20, 0), change(0, 0), stitch(0, 0), stitch(10, 0)}, {0, 0, 40, 0});
    for (const bool isUnknown : {true, false}) {
        const auto thread = VLMThread::initWithKeyofPalette("1", isUnknown ? "Undefined" : "Another");
        design.setThreads({thread, thread});
        const auto bitmap = thumbnailOf(design, 44);
        ASSERT_TRUE(bitmap);
        const auto first = pixelAt(*bitmap, 7, 1);
        const auto second = pixelAt(*bitmap, 37, 1);
        EXPECT_EQ(first.red, first.blue);
        EXPECT_EQ(second.red, second.blue);
        EXPECT_EQ(first.red > second.red + 20, isUnknown);
    }
}

TEST(Thumbnail, EndsWhereNoThreadIsLeft) {
    auto design = designOf({stitch(0, 0), stitch(10, 0), change(20, 0), stitch(0, 0), stitch(10, 0)}, {0, 0, 40, 0});
    design.setThreads({threadOf(0, 1, 0)});
    const auto bitmap = thumbnailOf(design, 44);
    ASSERT_TRUE(bitmap);
    EXPECT_EQ(pixelAt(*bitmap, 7, 2).alpha, 255);
    EXPECT_EQ(pixelAt(*bitmap, 37, 2).alpha, 0);
}

/// Stitches that lie on each other by the thousand are drawn less finely, and all the same.
TEST(Thumbnail, ShowsWhatIsSewnOverAndOver) {
    std::vector<VLMStitch> stitches{stitch(0, 0)};
    for (int i = 0; i < 30000; ++i) stitches.push_back(stitch(i % 2 == 0 ? 60.0F : -60.0F, 0));
    const auto bitmap = thumbnailOf(designOf(std::move(stitches), {0, 0, 60, 0}), 1024);
    ASSERT_TRUE(bitmap);
    EXPECT_EQ(pixelAt(*bitmap, 512, bitmap->height() / 2).alpha, 255);
    EXPECT_EQ(pixelAt(*bitmap, 0, 0).alpha, 0);
}

/// Seconds of the processor that the picture of a million stitches takes, from place to place within a design.
template <class PlaceOf>
double secondsOfMillion(float side, const PlaceOf& placeOf) {
    constexpr std::size_t count = 1000000;
    std::vector<VLMStitch> stitches;
    stitches.reserve(count);
    DesignPoint needle;
    for (std::size_t i = 0; i < count; ++i) {
        const DesignPoint next = placeOf(i);
        stitches.push_back(stitch(static_cast<float>(next.x - needle.x), static_cast<float>(next.y - needle.y)));
        needle = {needle.x + stitches.back().deltaX(), needle.y + stitches.back().deltaY()};
    }
    const auto design = designOf(std::move(stitches), {0, 0, side, side});
    const std::clock_t start = std::clock();
    EXPECT_TRUE(thumbnailOf(design, 1024));
    return static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
}

/// A file manager waits for each of them; stitches that all cost what the first one costs would take minutes.
TEST(ThumbnailOfAMillionStitches, TakesSecondsWhateverTheyCross) {
    constexpr double most = 10;  // it is well below one, but for sanitizers
    std::mt19937 random(1);
    const auto any = [&random](double side) { return static_cast<double>(random()) / 4294967296.0 * side; };
    const auto anywhere = [&](float side) {
        return secondsOfMillion(side, [&](auto) { return DesignPoint{any(side), any(side)}; });
    };
    EXPECT_LT(secondsOfMillion(1, [](std::size_t i) { return DesignPoint{i % 2 == 0 ? 0.0 : 1.0, 0}; }), most);
    for (const float side : {1.0F, 30.0F, 300.0F, 2000.0F, 30000.0F, 1e9F}) EXPECT_LT(anywhere(side), most) << side;
    EXPECT_LT(secondsOfMillion(1000,  // chords, which leave the middle bare
                               [&](std::size_t i) {
                                   const double angle = static_cast<double>(i) * 0.3;
                                   return DesignPoint{500 + 500 * std::cos(angle), 500 + 500 * std::sin(angle)};
                               }),
              most);
    EXPECT_LT(secondsOfMillion(1000,  // along the lower edge of squares that they never close
                               [&](std::size_t i) {
                                   return DesignPoint{i % 2 == 0 ? 0.0 : 1000.0, any(4)};
                               }),
              most);
}

struct EmptyRow {
    const char* name;
    std::vector<VLMStitch> stitches;
    Bounds bounds;
    std::size_t threads;
};
class NoThumbnail : public testing::TestWithParam<EmptyRow> {};
TEST_P(NoThumbnail, IsMade) {
    auto design = designOf(GetParam().stitches, GetParam().bounds);
    design.threads().all().resize(GetParam().threads);
    EXPECT_FALSE(thumbnailOf(design, 128));
}
INSTANTIATE_TEST_SUITE_P(Rows, NoThumbnail,
                         testing::Values(EmptyRow{"WithoutStitches", {}, {0, 0, 40, 20}, 1},
                                         EmptyRow{"WithoutThreads", {stitch(0, 0), stitch(40, 20)}, {0, 0, 40, 20}, 0},
                                         EmptyRow{"OfJumps", {jump(10, 0), jump(10, 10)}, {0, 0, 20, 10}, 1},
                                         EmptyRow{"OfNullStitches", {stitch(0, 0), stitch(0, 0)}, {0, 0, 40, 20}, 1},
                                         EmptyRow{
                                             "OutsideItsBounds", {stitch(0, 900), stitch(40, 0)}, {0, 0, 40, 20}, 1},
                                         EmptyRow{"OfPlacesThatAreNoNumbers",
                                                  {stitch(0, 0), stitch(infinity, 0), stitch(-infinity, 5)},
                                                  {0, 0, 40, 20},
                                                  1}),
                         [](const auto& row) { return row.param.name; });

}  // namespace
}  // namespace velamo
