#include "velamo/render/cloth.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "tests/render/plain_cloth.h"

namespace velamo {
namespace {

/// Where the ends of stitches lie: so many pixels from the middle at most, in so many steps for each pixel; not every
/// stitch starts where the one before it ended.
struct Row {
    const char* name;
    int width;
    int height;
    int grain;
    double threadWidth;
    int stitches;
    int reach;
    int steps;
};

DesignPoint placeIn(const Row& row, std::mt19937& random) {
    const int range = 2 * row.reach * row.steps + 1;
    const auto step = [&] {
        return static_cast<double>(random() % static_cast<unsigned>(range)) / row.steps - row.reach;
    };
    const double x = step();
    return {row.width / 2.0 + x, row.height / 2.0 + step()};
}

template <class AnyCloth>
Bitmap sewn(const Row& row, unsigned seed, double relief) {
    std::mt19937 random(seed);
    AnyCloth cloth(row.width, row.height, row.grain, relief);
    DesignPoint start = placeIn(row, random);
    for (int i = 0; i < row.stitches; ++i) {
        if (i % 50 == 0)
            cloth.takeThread(VLMColor::initWithRedgreenblue(static_cast<double>(random() % 256) / 255, 0.5,
                                                            static_cast<double>(random() % 256) / 255));
        if (random() % 10 == 0) start = placeIn(row, random);
        const DesignPoint end = placeIn(row, random);
        cloth.sewBelow(start, end, row.threadWidth);
        start = end;
    }
    auto bitmap = *Bitmap::make(row.width, row.height);
    cloth.show(bitmap);
    return bitmap;
}

class SewnCloth : public testing::TestWithParam<Row> {};

TEST_P(SewnCloth, IsThatOfAPlainOne) {
    for (unsigned seed = 0; seed < 4; ++seed) {
        const double relief = 0.1 + 0.3 * seed;
        const Bitmap quick = sewn<Cloth>(GetParam(), seed, relief);
        const Bitmap plain = sewn<test::PlainCloth>(GetParam(), seed, relief);
        EXPECT_TRUE(std::equal(quick.pixels().begin(), quick.pixels().end(), plain.pixels().begin())) << seed;
    }
}

INSTANTIATE_TEST_SUITE_P(
    Rows, SewnCloth,
    testing::Values(Row{"ShortStitches", 128, 96, 4, 1.5, 2000, 60, 4}, Row{"ThinThread", 100, 100, 4, 1, 500, 60, 1},
                    Row{"WideThread", 90, 128, 2, 20, 200, 50, 8},
                    Row{"WiderThanThePicture", 64, 64, 2, 150, 200, 60, 3},
                    Row{"OnOneSpot", 200, 200, 2, 90, 3000, 1, 1}, Row{"OnASmallSpot", 200, 160, 1, 60, 3000, 3, 64},
                    Row{"FarOutside", 64, 64, 4, 3, 1000, 5000, 2}, Row{"HugePlaces", 64, 64, 1, 3, 300, 1000000000, 1},
                    Row{"LevelAndUpright", 70, 70, 4, 6, 300, 1, 1}, Row{"OnePixel", 1, 1, 4, 1, 30, 2, 4},
                    Row{"OneRow", 100, 1, 4, 1, 200, 50, 4}, Row{"BesideWholeTiles", 33, 65, 1, 9, 300, 40, 16},
                    Row{"LongStitches", 256, 256, 1, 2, 2000, 128, 1}, Row{"Hairlines", 128, 128, 4, 0.01, 500, 60, 8}),
    [](const auto& row) { return row.param.name; });

/// Thousands of stitches in one square of pixels, most of which stays bare, make an end of what shows in this square.
TEST(ClothWithoutPatience, LosesNothingButWhatLiesDeepBelow) {
    constexpr int side = 1024;
    constexpr int patience = 1 << 12;  // of each tile of so large a picture
    Cloth cloth(side, side, 1, 1);
    const auto sew = [&](double x, double y) { cloth.sewBelow({x, y}, {x + 4, y}, 4); };
    cloth.takeThread(VLMColor::initWithRedgreenblue(1, 0, 0));
    for (int i = 0; i < patience - 1; ++i) sew(104 + i * 1e-4, 104);
    cloth.takeThread(VLMColor::initWithRedgreenblue(0, 0, 1));
    sew(104, 112);  // the last one that shows there
    sew(104, 120);
    sew(204, 120);
    auto bitmap = *Bitmap::make(side, side);
    cloth.show(bitmap);
    const auto isCovered = [&](std::size_t x, std::size_t y) { return bitmap.pixels()[y * side + x] != 0; };
    EXPECT_TRUE(isCovered(106, 104));
    EXPECT_TRUE(isCovered(106, 112));
    EXPECT_FALSE(isCovered(106, 120));
    EXPECT_TRUE(isCovered(206, 120));
}

TEST(ClosedCloth, IsKnown) {
    Cloth cloth(100, 50, 1, 1);
    cloth.takeThread(VLMColor());
    cloth.sewBelow({0, 25}, {10, 25}, 60);
    EXPECT_FALSE(cloth.isClosed());
    cloth.sewBelow({0, 25}, {100, 25}, 60);
    EXPECT_TRUE(cloth.isClosed());
}

}  // namespace
}  // namespace velamo
