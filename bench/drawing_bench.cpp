#include <benchmark/benchmark.h>
#include <cairo.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <random>

#include "bench/beside.h"
#include "velamo/formats/pec_thumbnail.h"
#include "velamo/render/design_picture.h"
#include "velamo/render/draw_design.h"
#include "velamo/render/thumbnail.h"

namespace velamo {
namespace {

constexpr float widthOfDesign = 1280;  // what a PES file can hold
constexpr float heightOfDesign = 1780;

/// Rows of stitches over the whole field, to and fro, in blocks of the same length.
VLMDesign designOf(std::size_t stitches, std::size_t threads) {
    VLMDesign design;
    std::mt19937 random(1);
    auto& list = design.stitches().all();
    list.reserve(stitches);
    float x = 0;
    const auto rows = static_cast<float>(stitches) * 25 / widthOfDesign;
    float direction = 1;
    for (std::size_t i = 0; i < stitches; ++i) {
        const float length = 20 + static_cast<float>(random() % 11);
        const bool isTurned = x + direction * length < 0 || x + direction * length > widthOfDesign;
        if (isTurned) direction = -direction;
        const float deltaX = isTurned ? 0 : direction * length;
        x += deltaX;
        list.emplace_back(deltaX, isTurned ? heightOfDesign / rows : 0, false, i % (stitches / threads) == 1 && i > 1);
    }
    design.threads().all().assign(threads, VLMThread::initWithKeyofPalette("001", "Brother"));
    design.setXMax(widthOfDesign);
    design.setYMax(heightOfDesign);
    design.setDisplayRange({0, stitches});
    return design;
}

/// The strokes of the design's picture, given to cairo as they are.
class PlainStrokes {
public:
    PlainStrokes(const VLMDesign& design, double scale) : scale_(scale) {
        const auto size = pictureSizeOf(design, scale);
        width_ = static_cast<int>(size.width);
        height_ = static_cast<int>(size.height);
        color_ = design.threads()[0].color();
        DesignPoint start{10, heightOfDesign + 10};
        for (const VLMStitch& stitch : design.stitches()) {
            const DesignPoint end{start.x + stitch.deltaX(), start.y - stitch.deltaY()};
            lines_.push_back({start, end});
            start = end;
        }
    }
    void draw() const {
        cairo_surface_t* const surface = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, width_, height_);
        cairo_t* const cairo = cairo_create(surface);
        cairo_scale(cairo, scale_, scale_);
        cairo_set_line_cap(cairo, CAIRO_LINE_CAP_ROUND);
        for (const auto& line : lines_) {
            stroke(cairo, line, widestStitch, 0.2);
            stroke(cairo, line, widestStitch * 0.7, 0);
        }
        benchmark::DoNotOptimize(cairo_image_surface_get_data(surface));
        cairo_destroy(cairo);
        cairo_surface_destroy(surface);
    }

private:
    struct Line {
        DesignPoint start;
        DesignPoint end;
    };
    void stroke(cairo_t* cairo, const Line& line, double width, double darker) const {
        cairo_set_source_rgba(cairo, color_.red() - darker, color_.green() - darker, color_.blue() - darker, 1);
        cairo_set_line_width(cairo, width);
        cairo_move_to(cairo, line.start.x, line.start.y);
        cairo_line_to(cairo, line.end.x, line.end.y);
        cairo_stroke(cairo);
    }
    double scale_;
    int width_ = 0;
    int height_ = 0;
    VLMColor color_;
    std::vector<Line> lines_;
};

/// A flat picture of 30,000 stitches, the longer side of so many pixels, beside the same strokes given to cairo.
void drawFlat(benchmark::State& state) {
    const VLMDesign design = designOf(30000, 1);
    const double scale = scaleForLongerSide(design, static_cast<std::int32_t>(state.range(0)));
    const PlainStrokes strokes(design, scale);
    const auto draw = [&] { benchmark::DoNotOptimize(bitmapOf(design, scale, {})); };
    bench::measureBeside(state, draw, [&] { strokes.draw(); });
}
BENCHMARK(drawFlat)->Arg(256)->Arg(1800)->UseManualTime()->Unit(benchmark::kMillisecond);

/// The thumbnail of 30,000 stitches with so many pixels, every thread in relief, beside flat strokes given to cairo.
void drawThumbnail(benchmark::State& state) {
    const VLMDesign design = designOf(30000, 1);
    const auto pixels = static_cast<std::int32_t>(state.range(0));
    const PlainStrokes strokes(design, scaleForLongerSide(design, pixels));
    const auto draw = [&] { benchmark::DoNotOptimize(thumbnailOf(design, pixels)); };
    bench::measureBeside(state, draw, [&] { strokes.draw(); });
}
BENCHMARK(drawThumbnail)->Arg(128)->Arg(256)->Arg(512)->UseManualTime()->Unit(benchmark::kMillisecond);

/// The thumbnail of so many stitches to and fro on one spot, beside the clearing of a bitmap of its size.
void drawThumbnailOfSpot(benchmark::State& state) {
    constexpr std::int32_t pixels = 1024;
    VLMDesign design;
    for (std::int64_t i = 0; i < state.range(0); ++i)
        design.stitches().push_back({i % 2 == 0 ? 1.0F : -1.0F, 0, false, false});
    design.threads().push_back(VLMThread::initWithKeyofPalette("001", "Brother"));
    design.setXMax(1);
    const auto draw = [&] { benchmark::DoNotOptimize(thumbnailOf(design, pixels)); };
    std::vector<std::uint32_t> cleared(std::size_t{pixels} * pixels);
    const auto clear = [&] {
        std::fill(cleared.begin(), cleared.end(), 0U);
        benchmark::DoNotOptimize(cleared.data());
        benchmark::ClobberMemory();
    };
    bench::measureBeside(state, draw, clear);
}
BENCHMARK(drawThumbnailOfSpot)->Arg(100000)->UseManualTime()->Unit(benchmark::kMillisecond);

/// All thumbnails of a PES file with so many threads, beside three drawings of the whole design and a bitmap's clearing
/// for each thread.
void drawThumbnails(benchmark::State& state) {
    const auto threads = static_cast<std::size_t>(state.range(0));
    const VLMDesign design = designOf(30000, threads);
    const auto size = pictureSizeOf(design, 1);
    std::vector<std::uint32_t> pixels(static_cast<std::size_t>(size.width * size.height));
    const auto drawAndClear = [&] {
        for (int drawing = 0; drawing < 3; ++drawing) benchmark::DoNotOptimize(bitmapOf(design, 1, {}));
        for (std::size_t thread = 0; thread < threads; ++thread) {
            std::memset(pixels.data(), 0, pixels.size() * sizeof pixels[0]);
            benchmark::ClobberMemory();
        }
    };
    const auto work = [&] { benchmark::DoNotOptimize(pecThumbnailsOfDesignAndThreads(design)); };
    bench::measureBeside(state, work, drawAndClear);
}
BENCHMARK(drawThumbnails)->Arg(1)->Arg(8)->Arg(64)->UseManualTime()->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace velamo

BENCHMARK_MAIN();
