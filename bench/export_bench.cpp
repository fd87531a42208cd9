#include <benchmark/benchmark.h>
#include <malloc.h>

#include <cmath>
#include <filesystem>
#include <random>
#include <string>

#include "bench/beside.h"
#include "tests/support/temporary_folder.h"
#include "velamo/editing/optimize.h"
#include "velamo/formats/export.h"
#include "velamo/formats/format.h"
#include "velamo/formats/pec.h"
#include "velamo/formats/pec_thumbnail.h"
#include "velamo/platform/system/files.h"

namespace velamo {
namespace {

constexpr std::size_t manyStitches = 1000000;

/// The most stitches that a file of the format takes, or that are worth measuring.
std::size_t mostStitchesOf(std::string_view extension) {
    if (extension == "pes") return 30000;
    if (extension == "pcs" || extension == "pec") return 14000;  // a larger one would be drawn for many seconds
    return manyStitches;
}

/// Short moves inside of a small hoop, a jump now and then and a colour change every ten thousand. The same every time.
VLMDesign generatedDesign(std::size_t stitches) {
    constexpr std::size_t stitchesOfJump = 50;
    constexpr std::size_t stitchesOfColor = 10000;
    constexpr float edge = 350;
    std::mt19937 random(1);
    const auto move = [&](float& place) {
        float delta = static_cast<float>(random() % 64) - 32;
        if (std::abs(place + delta) > edge) delta = -delta;
        place += delta;
        return delta;
    };
    VLMDesign design;
    design.threads().push_back(VLMThread::initWithKeyofPalette("800", "Brother"));
    float x = 0;
    float y = 0;
    for (std::size_t i = 1; i < stitches - stitches / stitchesOfColor; ++i) {
        const float deltaX = move(x);
        design.stitches().push_back({deltaX, move(y), i % stitchesOfJump == 0, false});
        if (i % stitchesOfColor != 0) continue;
        design.stitches().push_back({0, 0, false, true});
        design.threads().push_back(design.threads()[0]);
    }
    return design;
}

/// The drawing of the thumbnails, which is no business of the writers.
void draw(const VLMDesign& design, std::string_view extension) {
    if (extension == "pes") benchmark::DoNotOptimize(pecThumbnailsOfDesignAndThreads(design));
    if (extension == "pec") benchmark::DoNotOptimize(exportPecBitmapToDataForThread(design, -1));
}

/// Exports a design beside a plain atomic write of the same bytes and the drawing of the thumbnails.
void exportDesign(benchmark::State& state, const Format& format, std::size_t stitches) {
    const test::TemporaryFolder folder;
    const auto target = folder.path() / ("design." + std::string(format.extension));
    VLMDesign design = generatedDesign(stitches);
    VLMError error;
    if (!exportDesignToURLerror(design, target, &error)) return state.SkipWithError(error.message().c_str());
    const auto file = readWholeFile(target);
    const auto exportAgain = [&] { benchmark::DoNotOptimize(exportDesignToURLerror(design, target, nullptr)); };
    const auto writePlainly = [&] {
        draw(design, format.extension);
        benchmark::DoNotOptimize(replaceFile(folder.path() / "plain", file));
    };
    bench::measureBeside(state, exportAgain, writePlainly);
    state.counters["bytes"] = static_cast<double>(file.size());
}

/// Makes a PEC section, the part of PES and PEC files that is not drawn, beside an atomic write of the same bytes.
void exportSection(benchmark::State& state) {
    const test::TemporaryFolder folder;
    VLMDesign design = generatedDesign(static_cast<std::size_t>(state.range(0)));
    const auto section = exportPecSegmentToData(design);
    const auto exportAgain = [&] {
        benchmark::DoNotOptimize(optimizeJumpsFor(design, "PEC"));
        benchmark::DoNotOptimize(replaceFile(folder.path() / "section", exportPecSegmentToData(design)));
    };
    const auto writePlainly = [&] { benchmark::DoNotOptimize(replaceFile(folder.path() / "plain", section)); };
    bench::measureBeside(state, exportAgain, writePlainly);
}
BENCHMARK(exportSection)->Arg(14000)->Arg(manyStitches)->UseManualTime()->Unit(benchmark::kMillisecond);

/// Exports a design as PES beside the same as JEF, which has no thumbnails.
void exportPesBesideJef(benchmark::State& state) {
    const test::TemporaryFolder folder;
    const auto stitches = static_cast<std::size_t>(state.range(0));
    VLMDesign pes = generatedDesign(stitches);
    VLMDesign jef = generatedDesign(stitches);
    const auto exportTo = [&](VLMDesign& design, const char* name) {
        VLMError error;
        if (!exportDesignToURLerror(design, folder.path() / name, &error)) state.SkipWithError(error.message().c_str());
    };
    bench::measureBeside(
        state, [&] { exportTo(pes, "design.pes"); }, [&] { exportTo(jef, "design.jef"); });
}
BENCHMARK(exportPesBesideJef)->Arg(5000)->Arg(14000)->Arg(29000)->UseManualTime()->Unit(benchmark::kMillisecond);

void registerFormat(const Format& format) {
    if (format.writer == nullptr) return;
    constexpr std::size_t usualStitches = 14000;
    for (const std::size_t stitches : {usualStitches, mostStitchesOf(format.extension)}) {
        const std::string name = "export/" + std::string(format.extension) + "/" + std::to_string(stitches);
        benchmark::RegisterBenchmark(
            name.c_str(), [&format, stitches](benchmark::State& state) { exportDesign(state, format, stitches); })
            ->UseManualTime()
            ->Unit(benchmark::kMillisecond);
        if (mostStitchesOf(format.extension) == usualStitches) return;
    }
}

}  // namespace
}  // namespace velamo

int main(int argc, char** argv) {
    // Memory once had stays with the process: asking the system for pages again each turn is not what is measured.
    mallopt(M_MMAP_THRESHOLD, 1 << 25);
    mallopt(M_TRIM_THRESHOLD, 1 << 25);
    for (const velamo::Format& format : velamo::allFormats()) velamo::registerFormat(format);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
