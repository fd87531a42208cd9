#include <benchmark/benchmark.h>

#include "bench/beside.h"
#include "bench/dst_file.h"
#include "velamo/formats/dst.h"

namespace velamo {
namespace {

/// Decodes a DST file in memory, beside a plain copy of the stitch list that results.
void decodeDst(benchmark::State& state) {
    const auto file = bench::dstFileOfStitches(static_cast<std::size_t>(state.range(0)));
    VLMDesign reference;
    if (!readDst(reference, file, nullptr)) return state.SkipWithError("the file cannot be read");
    const auto decode = [&] {
        VLMDesign design;
        benchmark::DoNotOptimize(readDst(design, file, nullptr));
        benchmark::DoNotOptimize(design.stitches().all().data());
    };
    const auto copy = [&] {
        auto stitches = reference.stitches().all();
        benchmark::DoNotOptimize(stitches.data());
    };
    bench::measureBeside(state, decode, copy);
}
BENCHMARK(decodeDst)->Arg(10000)->Arg(200000)->Arg(1000000)->UseManualTime()->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace velamo

BENCHMARK_MAIN();
