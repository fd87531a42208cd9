#include "velamo/platform/graphics/bitmap.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>
#include <string>

namespace velamo {
namespace {

constexpr double pi = std::numbers::pi;
constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
constexpr GraphicsColor red{1, 0, 0};
constexpr GraphicsColor blue{0, 0, 1};
using Rows = std::vector<std::string>;

/// Rows from the top down: "." where nothing is, "#" where something covers more than half of a pixel.
Rows rowsOf(const Bitmap& bitmap) {
    const auto rgba = bitmap.rgba();
    Rows rows;
    const auto width = static_cast<std::size_t>(bitmap.width());
    for (std::size_t row = 0; row < static_cast<std::size_t>(bitmap.height()); ++row) {
        rows.emplace_back();
        for (std::size_t column = 0; column < width; ++column)
            rows.back() += rgba[(row * width + column) * 4 + 3] > 127 ? '#' : '.';
    }
    return rows;
}

/// Of a pixel red (0), green, blue or alpha (3).
int componentAt(const Bitmap& bitmap, std::size_t row, std::size_t column, std::size_t component) {
    return bitmap.rgba().at((row * static_cast<std::size_t>(bitmap.width()) + column) * 4 + component);
}

Bitmap painted(int width, int height, const Painter& painter) {
    auto bitmap = Bitmap::make(width, height);
    EXPECT_TRUE(bitmap->paint(painter));
    return std::move(*bitmap);
}

void fill(GraphicsContext& context, const GraphicsRectangle& area, const GraphicsColor& color = red) {
    context.setFillColor(color);
    context.addRectangle(area);
    context.fillPath();
}

void strokeLine(GraphicsContext& context, GraphicsPoint from, GraphicsPoint to) {
    context.moveTo(from);
    context.addLineTo(to);
    context.strokePath();
}

struct SizeRow {
    const char* name;
    std::int64_t width;
    std::int64_t height;
    bool isMade;
};
class BitmapSize : public testing::TestWithParam<SizeRow> {};
TEST_P(BitmapSize, GivesTheRow) {
    EXPECT_EQ(Bitmap::make(GetParam().width, GetParam().height).has_value(), GetParam().isMade);
}
INSTANTIATE_TEST_SUITE_P(Rows, BitmapSize,
                         testing::Values(SizeRow{"Smallest", 1, 1, true}, SizeRow{"Widest", 32767, 1, true},
                                         SizeRow{"Highest", 1, 32767, true}, SizeRow{"TooWide", 32768, 1, false},
                                         SizeRow{"TooHigh", 1, 32768, false}, SizeRow{"NoWidth", 0, 1, false},
                                         SizeRow{"NoHeight", 1, 0, false}, SizeRow{"Negative", -5, 10, false},
                                         SizeRow{"BothNegative", -5, -10, false},
                                         SizeRow{"TooManyPixels", 32767, 32767, false},
                                         SizeRow{"Overflowing", std::int64_t{1} << 62, std::int64_t{1} << 62, false},
                                         SizeRow{"SmallestNumber", std::numeric_limits<std::int64_t>::min(), 3, false}),
                         [](const auto& row) { return row.param.name; });

TEST(BitmapMemory, BeginsWithTheTopRowAndTheContextAtTheLowerLeft) {
    const auto bitmap = painted(5, 6, [](GraphicsContext& context) {  // a letter F
        fill(context, {1, 0, 1, 6});
        fill(context, {2, 5, 3, 1});
        fill(context, {2, 3, 2, 1});
    });
    EXPECT_EQ(rowsOf(bitmap), (Rows{".####", ".#...", ".###.", ".#...", ".#...", ".#..."}));
}

TEST(BitmapMemory, HoldsPremultipliedRgba) {
    const auto bitmap = painted(3, 1, [](GraphicsContext& context) {
        fill(context, {0, 0, 1, 1}, {1, 0.4, 0, 1});
        fill(context, {1, 0, 1, 1}, {1, 0.4, 0, 0.6});
    });
    EXPECT_THAT(bitmap.rgba(), testing::ElementsAre(255, 102, 0, 255, 153, 61, 0, 153, 0, 0, 0, 0));
}

TEST(BitmapMemory, ColorsAreClampedAndThoseThatAreNoNumbersAreDark) {
    const auto bitmap = painted(1, 1, [](GraphicsContext& context) {
        fill(context, {0, 0, 1, 1}, {7, -3, notANumber, 1});
    });
    EXPECT_THAT(bitmap.rgba(), testing::ElementsAre(255, 0, 0, 255));
}

TEST(BitmapClearing, MakesTouchedPixelsTransparent) {
    auto bitmap = painted(6, 4, [](GraphicsContext& context) { fill(context, {0, 0, 6, 4}); });
    bitmap.clear({0.5, 0.5, 2, 1});
    EXPECT_EQ(rowsOf(bitmap), (Rows{"######", "######", "...###", "...###"}));
    bitmap.clear({-5, 3, 100, 100});
    EXPECT_EQ(rowsOf(bitmap), (Rows{"......", "######", "...###", "...###"}));
    bitmap.clear({100, 100, 5, 5});
    bitmap.clear({3, 2, -5, -5});
    EXPECT_EQ(rowsOf(bitmap)[1], "######");
    bitmap.clear({-infinity, -1e300, infinity, 1e301});
    EXPECT_EQ(rowsOf(bitmap)[1], "######");  // no number says where that ends
    bitmap.clear({-1e300, -1e300, 1e301, 1e301});
    EXPECT_EQ(rowsOf(bitmap), Rows(4, "......"));
}

TEST(BitmapDrawing, ScalesAnotherUprightIntoItsRectangle) {
    const auto source = painted(40, 40, [](GraphicsContext& context) {
        fill(context, {0, 0, 40, 20}, blue);
        fill(context, {0, 20, 20, 20});
    });
    auto bitmap = Bitmap::make(8, 6);
    EXPECT_TRUE(bitmap->drawBitmap(source, {2, 1, 4, 4}));
    EXPECT_EQ(rowsOf(*bitmap), (Rows{"........", "..##....", "..##....", "..####..", "..####..", "........"}));
    EXPECT_GT(componentAt(*bitmap, 1, 2, 0), 250);  // red above
    EXPECT_GT(componentAt(*bitmap, 4, 5, 2), 250);  // blue below
}

TEST(BitmapDrawing, OfAPartGivesTheVeryBytesOfTheWhole) {
    const auto source = painted(313, 227, [](GraphicsContext& context) {
        context.setLineWidth(3.5);
        for (int i = 0; i < 60; ++i) {
            context.setStrokeColor({i / 60.0, 0.5, 1 - i / 60.0, 0.7});
            strokeLine(context, {i * 5.3, 10.0 + i % 7}, {310 - i * 2.1, 217 - i * 3.3});
        }
    });
    const GraphicsRectangle target{3.25, 4.5, 40.3, 29.7};
    auto whole = Bitmap::make(48, 38);
    EXPECT_TRUE(whole->drawBitmap(source, target));
    auto parts = Bitmap::make(48, 38);
    for (const GraphicsRectangle& part : {GraphicsRectangle{0, 0, 11, 38}, {11, 0, 37, 7}, {11, 7, 37, 31}})
        EXPECT_TRUE(parts->drawBitmap(source, target, part));
    EXPECT_EQ(parts->rgba(), whole->rgba());
}

TEST(BitmapPng, IsAPngFileOfItsSize) {
    const auto png = painted(300, 2, [](GraphicsContext& context) { fill(context, {0, 0, 1, 1}); }).png();
    ASSERT_TRUE(png);
    ASSERT_GT(png->size(), 24U);
    EXPECT_THAT(std::vector(png->begin(), png->begin() + 24),
                testing::ElementsAre(0x89, 'P', 'N', 'G', 13, 10, 26, 10, 0, 0, 0, 13, 'I', 'H', 'D', 'R', 0, 0, 1, 44,
                                     0, 0, 0, 2));
}

TEST(Context, StrokesWithWidthColorAndCaps) {
    const auto bitmap = painted(9, 5, [](GraphicsContext& context) {
        context.setStrokeColor(red);
        context.setFillColor(blue);
        context.setLineWidth(2);
        strokeLine(context, {2, 3}, {7, 3});  // cut off at the ends
    });
    EXPECT_EQ(rowsOf(bitmap), (Rows{".........", "..#####..", "..#####..", ".........", "........."}));
    EXPECT_EQ(componentAt(bitmap, 1, 4, 0), 255);
    const auto round = painted(13, 5, [](GraphicsContext& context) {
        context.setRoundLineCap();
        context.setLineWidth(4);
        strokeLine(context, {4, 2}, {9, 2});
    });
    EXPECT_EQ(rowsOf(round)[2], "..#########..");
}

TEST(Context, LineOfNoWidthIsAPixelWideAtAnyScale) {
    for (const double scale : {0.1, 1.0, 40.0}) {
        const auto bitmap = painted(7, 5, [&](GraphicsContext& context) {
            context.scale(scale, scale);
            context.setLineWidth(0);
            strokeLine(context, {1 / scale, 1.5 / scale}, {6 / scale, 1.5 / scale});
        });
        EXPECT_EQ(rowsOf(bitmap), (Rows{".......", ".......", ".......", ".#####.", "......."})) << scale;
    }
}

TEST(Context, DashesBeginAtThePhaseAndAreClearedAgain) {
    const auto bitmap = painted(14, 5, [](GraphicsContext& context) {
        context.setLineDash(0, 2, 3);
        strokeLine(context, {1, 4.5}, {13, 4.5});
        context.setLineDash(1, 2, 3);
        strokeLine(context, {1, 2.5}, {13, 2.5});
        context.clearLineDash();
        strokeLine(context, {1, 0.5}, {13, 0.5});
    });
    EXPECT_EQ(rowsOf(bitmap),
              (Rows{".##...##...##.", "..............", ".#...##...##..", "..............", ".############."}));
}

TEST(Context, DashesOfALineFromFarAwayAreWhereTheyBelong) {
    const auto bitmap = painted(14, 3, [](GraphicsContext& context) {
        context.setLineDash(0, 2, 3);
        strokeLine(context, {-2e9 + 1, 2.5}, {2e9, 2.5});
        strokeLine(context, {2e9 + 1, 0.5}, {-2e9, 0.5});
    });
    EXPECT_EQ(rowsOf(bitmap), (Rows{".##...##...##.", "..............", "#...##...##..."}));
}

TEST(Context, ArcsTurnCounterClockwiseUnlessClockwise) {
    const auto halfDisk = [](bool isClockwise) {
        return painted(6, 6, [=](GraphicsContext& context) {
            context.addArc({3, 3}, 3, 0, pi, isClockwise);
            context.fillPath();
        });
    };
    EXPECT_EQ(rowsOf(halfDisk(false)), (Rows{".####.", "######", "######", "......", "......", "......"}));
    EXPECT_EQ(rowsOf(halfDisk(true)), (Rows{"......", "......", "......", "######", "######", ".####."}));
    const auto quarter = painted(6, 6, [](GraphicsContext& context) {
        context.moveTo({3, 3});
        context.addArc({3, 3}, 3, pi / 2, pi, false);  // up to left
        context.fillPath();
    });
    EXPECT_EQ(rowsOf(quarter), (Rows{".##...", "###...", "###...", "......", "......", "......"}));
}

constexpr GradientStop redToBlue[] = {{0, red}, {0.4, red}, {1, blue}};

TEST(Context, GradientEndsAtItsEnds) {
    const auto bitmap = painted(3, 12, [](GraphicsContext& context) {
        context.drawLinearGradient(redToBlue, {1, 1}, {1, 11});
    });
    EXPECT_EQ(rowsOf(bitmap),
              (Rows{"...", "###", "###", "###", "###", "###", "###", "###", "###", "###", "###", "..."}));
    EXPECT_EQ(componentAt(bitmap, 10, 1, 0), 255);  // red below
    EXPECT_GT(componentAt(bitmap, 1, 1, 2), 220);   // blue above
    EXPECT_EQ(componentAt(bitmap, 7, 1, 0), 255);   // still red at the second stop
    EXPECT_NEAR(componentAt(bitmap, 3, 1, 2), 149, 3);
}

TEST(Context, GradientOfOtherColorsOrWithoutLengthIsItsOwn) {
    constexpr GradientStop allBlue[] = {{0, blue}, {1, blue}};
    const auto bitmap = painted(4, 1, [&](GraphicsContext& context) {
        context.drawLinearGradient(redToBlue, {0, 0}, {1, 0});
        context.drawLinearGradient(allBlue, {1, 0}, {2, 0});
        context.drawLinearGradient(redToBlue, {2, 0}, {3, 0});
        context.drawLinearGradient(redToBlue, {3, 0}, {3, 0});
        context.drawLinearGradient(redToBlue, {notANumber, 0}, {3, 0});
        context.drawLinearGradient(redToBlue, {0, 0}, {infinity, 0});
    });
    EXPECT_EQ(rowsOf(bitmap), (Rows{"###."}));
    const auto rgba = bitmap.rgba();
    EXPECT_GT(rgba[0], 150);
    EXPECT_EQ(rgba[4], 0);
    EXPECT_GT(rgba[8], 150);
}

TEST(Context, ClipHoldsUntilTheStateIsRestored) {
    const auto bitmap = painted(4, 2, [](GraphicsContext& context) {
        context.setFillColor(blue);
        context.saveState();
        context.addRectangle({0, 0, 2, 2});
        context.clipToPath();
        fill(context, {0, 1, 4, 1});
        context.restoreState();
        context.addRectangle({3, 0, 1, 1});
        context.fillPath();
    });
    EXPECT_EQ(rowsOf(bitmap), (Rows{"##..", "...#"}));
    EXPECT_EQ(bitmap.rgba()[7 * 4 + 2], 255);  // and the colour is the earlier one
}

TEST(Context, RestoresWidthDashAndTransform) {
    const auto bitmap = painted(6, 3, [](GraphicsContext& context) {
        context.setLineWidth(1);
        context.saveState();
        context.translate(2, 2);
        context.setLineWidth(9);
        context.setLineDash(0, 1, 1);
        context.restoreState();
        strokeLine(context, {0, 0.5}, {6, 0.5});
        context.restoreState();  // there is nothing left to restore
    });
    EXPECT_EQ(rowsOf(bitmap), (Rows{"......", "......", "######"}));
}

/// What cannot be drawn is left out, and what follows is drawn.
TEST(Context, LeavesOutWhatTheSurfaceCannotFollow) {
    const auto bitmap = painted(6, 3, [](GraphicsContext& context) {
        for (const double wild : {notANumber, infinity, -infinity, 1e300, -1e9}) {
            context.moveTo({wild, 1});
            context.addLineTo({wild, 2});
            context.addLineTo({3, 2});
            context.strokePath();
            context.addArc({wild, 1}, 3, 0, 1, false);
            context.fillPath();
            context.addArc({1, 1}, wild, 0, 1, false);
            context.fillPath();
            context.addRectangle({1, 1, 1, wild});
            context.fillPath();
            context.saveState();
            context.addRectangle({wild, 0, 1, 1});
            context.clipToPath();
            fill(context, {0, 0, 6, 3});
            context.restoreState();
        }
        context.addArc({1, 1}, 1, notANumber, infinity, false);
        context.fillPath();
        strokeLine(context, {notANumber, 1}, {3, 1});
        strokeLine(context, {3, -infinity}, {3, 1});
        fill(context, {0, 0, 6, 1});
    });
    EXPECT_EQ(rowsOf(bitmap), (Rows{"......", "......", "######"}));
}

TEST(Context, DrawsTheVisiblePartOfALineFromFarAway) {
    const auto bitmap = painted(5, 5, [](GraphicsContext& context) {
        strokeLine(context, {2.5, -1e12}, {2.5, 1e12});
        strokeLine(context, {1e12, 1e12 + 100}, {-1e12, -1e12 + 100});
    });
    EXPECT_EQ(rowsOf(bitmap), Rows(5, "..#.."));
}

}  // namespace
}  // namespace velamo
