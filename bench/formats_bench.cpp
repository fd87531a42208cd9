#include <benchmark/benchmark.h>
#include <malloc.h>

#include <map>
#include <string>

#include "bench/beside.h"
#include "bench/design_files.h"
#include "velamo/formats/dst.h"
#include "velamo/formats/exp.h"
#include "velamo/formats/jef.h"
#include "velamo/formats/jpx.h"
#include "velamo/formats/ksm.h"
#include "velamo/formats/pcs.h"
#include "velamo/formats/pes.h"
#include "velamo/formats/sew.h"
#include "velamo/formats/vp3.h"

namespace velamo {
namespace {

constexpr std::size_t stitchesOfDesign = 1000000;

template <const char* Extension>
bool readJefFile(VLMDesign& design, std::span<const std::uint8_t> file, VLMError* error) {
    return readJef(design, file, Extension, error);
}
constexpr char jef[] = "jef";
constexpr char jefPlus[] = "jef+";

using Reader = bool (*)(VLMDesign& design, std::span<const std::uint8_t> file, VLMError* error);
const std::map<std::string_view, Reader> readers{
    {"dst", readDst}, {"exp", readExp}, {"jef", readJefFile<jef>}, {"jef+", readJefFile<jefPlus>},
    {"jpx", readJpx}, {"sew", readSew}, {"pes", readPes},          {"pec", readPec},
    {"vp3", readVp3}, {"ksm", readKsm}, {"pcs", readPcx},          {"pcd", readPcx},
    {"pcq", readPcx},
};

/// Decodes a million stitches in memory, in as many designs as that takes, beside a plain copy of the stitch lists that
/// result.
void decode(benchmark::State& state, const bench::DesignFile& format) {
    const Reader read = readers.at(format.extension);
    const auto file = format.make(stitchesOfDesign);
    VLMDesign reference;
    VLMError error;
    if (!read(reference, file, &error)) return state.SkipWithError(error.message().c_str());
    const std::size_t stitches = reference.stitches().size();
    const std::size_t designs = (stitchesOfDesign + stitches - 1) / stitches;
    const std::vector<std::vector<VLMStitch>> lists(designs, reference.stitches().all());
    const auto work = [&] {
        std::vector<VLMDesign> decoded(designs);
        for (VLMDesign& design : decoded) benchmark::DoNotOptimize(read(design, file, nullptr));
        benchmark::ClobberMemory();
    };
    const auto copy = [&] {
        auto copied = lists;
        benchmark::DoNotOptimize(copied.data());
        benchmark::ClobberMemory();
    };
    bench::measureBeside(state, work, copy);
    state.counters["stitches"] = static_cast<double>(stitches * designs);
}

void registerFile(const bench::DesignFile& format) {
    const std::string name = "decode/" + std::string(format.extension);
    benchmark::RegisterBenchmark(name.c_str(), [&format](benchmark::State& state) { decode(state, format); })
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
}

}  // namespace
}  // namespace velamo

int main(int argc, char** argv) {
    // Memory once had stays with the process: asking the system for pages again each turn is not what is measured.
    mallopt(M_MMAP_THRESHOLD, 1 << 25);
    mallopt(M_TRIM_THRESHOLD, 1 << 25);
    for (const auto& format : velamo::bench::designFiles) velamo::registerFile(format);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
