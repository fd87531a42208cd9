#include "velamo/platform/graphics/bitmap_context.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <random>
#include <vector>

#include "velamo/platform/graphics/bitmap.h"

namespace velamo {
namespace {

using Random = std::mt19937;

double between(Random& random, double low, double high) {
    return low + (high - low) * static_cast<double>(random()) / 4294967295.0;
}

/// What cairo itself makes of the drawing.
std::vector<std::uint32_t> drawnPlainly(int width, int height, const Painter& painter) {
    std::vector<std::uint32_t> pixels(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    const CairoSurface surface(cairo_image_surface_create_for_data(reinterpret_cast<unsigned char*>(pixels.data()),
                                                                   CAIRO_FORMAT_ARGB32, width, height, width * 4));
    CairoContext context(surface.get(), height, 1);
    painter(context);
    cairo_surface_flush(surface.get());
    return pixels;
}

bool areEqual(const Bitmap& bitmap, const std::vector<std::uint32_t>& pixels) {
    return std::equal(bitmap.pixels().begin(), bitmap.pixels().end(), pixels.begin(), pixels.end());
}

void drawLine(GraphicsContext& context, GraphicsPoint start, GraphicsPoint end) {
    context.moveTo(start);
    context.addLineTo(end);
    context.strokePath();
}

struct Row {
    const char* name;
    std::function<void(GraphicsContext&, Random&)> draw;  // a line, among hundreds
};

GraphicsColor anyColor(Random& random) {
    return {between(random, -0.2, 1.2), between(random, -0.2, 1.2), between(random, -0.2, 1.2), 1};
}

/// Lines from and to places that are so many steps of a unit apart.
void drawInSteps(GraphicsContext& context, Random& random, int steps, double reach) {
    const auto place = [&] { return 60 + std::round(between(random, -reach, reach) * steps) / steps; };
    const GraphicsPoint start{place(), place()};
    drawLine(context, start, {place(), place()});
}

class BitmapDrawing : public testing::TestWithParam<Row> {};

/// On bitmaps of several scales, after one another, so that lines return.
TEST_P(BitmapDrawing, IsCairosToTheBit) {
    constexpr int side = 120;
    DrawnLines lines;
    for (unsigned seed = 0; seed < 12; ++seed) {
        const Painter painter = [&](GraphicsContext& context) {
            Random random(seed / 2);
            const double scale = seed % 4 < 2 ? 1 : between(random, 0.3, 2);
            context.scale(scale, scale);
            context.translate(seed % 3 * 0.25, -3);
            context.setRoundLineCap();
            for (int i = 0; i < 400; ++i) {
                if (i % 7 == 0) context.setStrokeColor(anyColor(random));
                context.setLineWidth(i % 2 == 0 ? 3.5 : 3.5 * 0.7);
                GetParam().draw(context, random);
            }
        };
        const auto plain = drawnPlainly(side, side, painter);
        auto bitmap = *Bitmap::make(side, side);
        ASSERT_TRUE(bitmap.paint(painter));
        EXPECT_TRUE(areEqual(bitmap, plain)) << seed;
        auto again = *Bitmap::make(side, side);
        ASSERT_TRUE(again.paint(painter, lines));
        EXPECT_TRUE(areEqual(again, plain)) << seed;
    }
}

INSTANTIATE_TEST_SUITE_P(
    Rows, BitmapDrawing,
    testing::Values(Row{"WholeSteps", [](auto& context, auto& random) { drawInSteps(context, random, 1, 40); }},
                    Row{"ShortWholeSteps", [](auto& context, auto& random) { drawInSteps(context, random, 1, 2); }},
                    Row{"Quarters", [](auto& context, auto& random) { drawInSteps(context, random, 4, 3); }},
                    Row{"TinySteps", [](auto& context, auto& random) { drawInSteps(context, random, 4096, 0.01); }},
                    Row{"AnyPlaces", [](auto& context, auto& random) { drawInSteps(context, random, 1 << 20, 50); }},
                    Row{"OverTheRim", [](auto& context, auto& random) { drawInSteps(context, random, 1, 90); }},
                    Row{"FarAway", [](auto& context, auto& random) { drawInSteps(context, random, 1, 1e7); }},
                    Row{"OnePoint",
                        [](auto& context, auto&) {
                            drawLine(context, {50, 50}, {50, 50});
                        }},
                    Row{"AlongTheRim",
                        [](auto& context, auto& random) {
                            const double rim = std::round(between(random, 0, 5));
                            drawLine(context, {rim, 10}, {rim, 90});
                        }},
                    Row{"SomeVeiled",
                        [](auto& context, auto& random) {
                            if (random() % 3 == 0) context.setStrokeColor({0.8, 0, 0, 0.6});
                            drawInSteps(context, random, 1, 5);
                        }},
                    Row{"SomeDashed",
                        [](auto& context, auto& random) {
                            if (random() % 2 == 0)
                                context.setLineDash(1, 2, 3);
                            else
                                context.clearLineDash();
                            drawInSteps(context, random, 1, 5);
                        }},
                    Row{"SomeHairlines",
                        [](auto& context, auto& random) {
                            if (random() % 2 == 0) context.setLineWidth(0);
                            drawInSteps(context, random, 1, 5);
                        }},
                    Row{"SomeWide",
                        [](auto& context, auto& random) {
                            if (random() % 2 == 0) context.setLineWidth(std::round(between(random, 1, 60)));
                            drawInSteps(context, random, 1, 5);
                        }},
                    Row{"Clipped",
                        [](auto& context, auto& random) {
                            context.saveState();
                            context.addRectangle({45.5, 50, 30, 20});
                            context.clipToPath();
                            drawInSteps(context, random, 1, 20);
                            context.restoreState();
                            drawInSteps(context, random, 1, 5);
                        }},
                    Row{"LongerPaths",
                        [](auto& context, auto& random) {
                            context.moveTo({40, 40});
                            context.addLineTo({50, 60});
                            if (random() % 2 == 0) context.addLineTo({70, 40});
                            if (random() % 2 == 0) context.moveTo({60, 80});
                            if (random() % 2 == 0) context.addArc({60, 60}, 10, 0, 2, true);
                            context.strokePath();
                            drawInSteps(context, random, 1, 5);
                        }},
                    Row{"AmongOtherShapes",
                        [](auto& context, auto& random) {
                            const std::vector<GradientStop> stops{{0, anyColor(random)}, {1, anyColor(random)}};
                            context.saveState();
                            context.addRectangle({between(random, 40, 60), 50, 10, 9});
                            context.clipToPath();
                            context.drawLinearGradient(stops, {40, 50}, {70, 52});
                            context.restoreState();
                            drawInSteps(context, random, 1, 8);
                            context.setFillColor(anyColor(random));
                            context.addRectangle({between(random, 40, 60), 50, 1, 1});
                            context.fillPath();
                            drawInSteps(context, random, 1, 8);
                        }}),
    [](const auto& row) { return row.param.name; });

/// Without round ends a line is another one.
TEST(BitmapDrawingOfLines, KeepsPlainEnds) {
    const Painter painter = [](GraphicsContext& context) {
        for (int turn = 0; turn < 3; ++turn) {
            context.setLineWidth(6);
            drawLine(context, {10, 10}, {20, 10});
            context.saveState();
            context.setRoundLineCap();
            drawLine(context, {10, 30}, {20, 30});
            context.restoreState();
            drawLine(context, {30, 30}, {30, 10});
        }
    };
    auto bitmap = *Bitmap::make(40, 40);
    ASSERT_TRUE(bitmap.paint(painter));
    EXPECT_TRUE(areEqual(bitmap, drawnPlainly(40, 40, painter)));
}

}  // namespace
}  // namespace velamo
