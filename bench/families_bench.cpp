// Knowing designs again: path and fingerprint of a design and the walk along two paths, beside a plain pass over the
// same stitches that adds up their length; looking for designs that look alike, beside a pass over the fingerprints.
#include <cmath>
#include <numeric>
#include <string>
#include <vector>

#include "bench/beside.h"
#include "samples/generated_design.h"
#include "velamo/analysis/same_path.h"

namespace velamo::bench {
namespace {

/// Designs of so many stitches together, each of a size as most have.
std::vector<VLMDesign> designsOf(std::size_t stitches) {
    std::vector<VLMDesign> designs;
    std::size_t count = 0;
    for (std::uint64_t seed = 1; count < stitches; ++seed) {
        VLMDesign design = generatedDesign(seed);
        if (design.stitches().size() < stitches / 100) continue;
        count += design.stitches().size();
        designs.push_back(std::move(design));
    }
    return designs;
}

double lengthOf(const std::vector<VLMDesign>& designs) {
    double length = 0;
    for (const VLMDesign& design : designs)
        for (const VLMStitch& stitch : design.stitches()) {
            const double x = stitch.deltaX();
            const double y = stitch.deltaY();
            length += std::sqrt(x * x + y * y);
        }
    return length;
}

constexpr std::size_t stitches = 300'000;

void measureFingerprints(benchmark::State& state) {
    const std::vector<VLMDesign> designs = designsOf(stitches);
    measureBeside(
        state,
        [&] {
            for (const VLMDesign& design : designs) benchmark::DoNotOptimize(fingerprintsOf(needlePathOf(design)));
        },
        [&] { benchmark::DoNotOptimize(lengthOf(designs)); });
}

void measureWalk(benchmark::State& state) {
    const std::vector<VLMDesign> designs = designsOf(stitches);
    std::vector<NeedlePath> paths;
    paths.reserve(designs.size());
    for (const VLMDesign& design : designs) paths.push_back(needlePathOf(design));
    measureBeside(
        state,
        [&] {
            for (const NeedlePath& path : paths) benchmark::DoNotOptimize(samePathOf(path, path, 1));
        },
        [&] { benchmark::DoNotOptimize(lengthOf(designs)); });
}

std::vector<Fingerprint> fingerprintsOf(std::size_t count) {
    std::vector<Fingerprint> fingerprints;
    for (std::uint64_t seed = 1; fingerprints.size() < 1000; ++seed)
        if (const auto some = velamo::fingerprintsOf(needlePathOf(generatedDesign(seed))))
            fingerprints.push_back(some->whole);
    while (fingerprints.size() < count) fingerprints.push_back(fingerprints[fingerprints.size() - 1000]);
    return fingerprints;
}

std::int64_t sumOf(const std::vector<Fingerprint>& fingerprints) {
    std::int64_t sum = 0;
    for (const Fingerprint& fingerprint : fingerprints) {
        sum += std::accumulate(fingerprint.x.begin(), fingerprint.x.end(), 0);
        sum += std::accumulate(fingerprint.y.begin(), fingerprint.y.end(), 0);
    }
    return sum;
}

void measureKeys(benchmark::State& state) {
    const std::vector<Fingerprint> fingerprints = fingerprintsOf(1000);
    measureBeside(
        state,
        [&] {
            for (const Fingerprint& fingerprint : fingerprints) benchmark::DoNotOptimize(keysNear(fingerprint));
        },
        [&] { benchmark::DoNotOptimize(sumOf(fingerprints)); });
}

void measureLikeness(benchmark::State& state) {
    const std::vector<Fingerprint> fingerprints = fingerprintsOf(100'000);
    measureBeside(
        state,
        [&] {
            int alike = 0;
            for (const Fingerprint& fingerprint : fingerprints)
                alike += likenessOf(fingerprints[0], fingerprint).distance <= likeDistance;
            benchmark::DoNotOptimize(alike);
        },
        [&] { benchmark::DoNotOptimize(sumOf(fingerprints)); });
}

void registerAll() {
    const std::pair<const char*, void (*)(benchmark::State&)> rows[] = {{"families/fingerprints", measureFingerprints},
                                                                        {"families/walk", measureWalk},
                                                                        {"families/keys", measureKeys},
                                                                        {"families/likeness", measureLikeness}};
    for (const auto& [name, measure] : rows)
        benchmark::RegisterBenchmark(name, measure)->UseManualTime()->Unit(benchmark::kMicrosecond);
}

}  // namespace
}  // namespace velamo::bench

int main(int argumentCount, char** arguments) {
    velamo::bench::registerAll();
    benchmark::Initialize(&argumentCount, arguments);
    benchmark::RunSpecifiedBenchmarks();
}
