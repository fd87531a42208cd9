#include <benchmark/benchmark.h>
#include <malloc.h>

#include <array>
#include <random>
#include <string>

#include "bench/beside.h"
#include "bench/dst_file.h"
#include "formats/dst.h"
#include "formats/exp.h"
#include "formats/format.h"
#include "formats/jef.h"
#include "formats/jpx.h"
#include "formats/ksm.h"
#include "formats/pcs.h"
#include "formats/pes.h"
#include "formats/sew.h"
#include "formats/vp3.h"
#include "tests/support/brother_files.h"
#include "tests/support/janome_files.h"
#include "tests/support/pcs_file.h"
#include "tests/support/vp3_file.h"

namespace velamo {
namespace {

using test::Bytes;

constexpr std::size_t stitchesOfDesign = 1000000;
constexpr std::size_t stitchesOfJump = 50;
constexpr std::size_t stitchesOfColor = 10000;

/// What the next record of a generated design is.
enum class Kind { stitch, jump, colorChange };

/// Moves as designs have them: short ones in all directions, a jump now and then and a colour change every ten
/// thousand. The same every time. `add(kind, move)` appends a record; of `move` 32 bits are random.
template <class Add>
Bytes generated(std::size_t stitches, Add add) {
    Bytes records;
    records.reserve(stitches * 9);
    std::mt19937 random(1);
    for (std::size_t stitch = 1; stitch <= stitches; ++stitch) {
        const Kind kind = stitch % stitchesOfColor == 0  ? Kind::colorChange
                          : stitch % stitchesOfJump == 0 ? Kind::jump
                                                         : Kind::stitch;
        add(records, kind, static_cast<std::uint32_t>(random()));
    }
    return records;
}

void push(Bytes& records, std::initializer_list<std::uint32_t> bytes) {
    for (const std::uint32_t byte : bytes) records.push_back(static_cast<std::uint8_t>(byte));
}

/// Pairs of signed bytes that are no escapes, with escapes before jumps and colour changes.
Bytes escapedPairs(std::size_t stitches, std::uint32_t jumpMark, std::uint32_t changeMark) {
    return generated(stitches, [&](Bytes& records, Kind kind, std::uint32_t move) {
        if (kind == Kind::jump) push(records, {0x80, jumpMark});
        if (kind == Kind::colorChange) push(records, {0x80, changeMark});
        push(records, {(move & 0x3FU) - 0x20U, (move >> 8U & 0x3FU) - 0x20U});
    });
}

Bytes dstFile() {
    return bench::dstFileOfStitches(stitchesOfDesign);
}

Bytes expFile() {
    return escapedPairs(stitchesOfDesign, 0x04, 0x01);
}

test::JanomeFile janomeFile() {
    const std::vector<int> indices(stitchesOfDesign / stitchesOfColor + 1, 5);
    return {.indices = indices, .tensions = indices, .stream = escapedPairs(stitchesOfDesign, 0x02, 0x01)};
}
Bytes jefFile() {
    return test::jefFile(janomeFile());
}
Bytes jpxFile() {
    return test::jpxFile(janomeFile());
}
Bytes sewFile() {
    return test::sewFile({5}, escapedPairs(stitchesOfDesign, 0x02, 0x01));
}

Bytes ksmFile() {
    constexpr std::uint32_t jumpsEnd = 0x98;
    bool isJumping = true;
    const Bytes records = generated(stitchesOfDesign, [&isJumping](Bytes& to, Kind kind, std::uint32_t move) {
        const std::uint32_t plain = isJumping ? jumpsEnd : 0x80U | (move >> 16U & 0x60U);
        const std::uint32_t flags = kind == Kind::jump ? 0x87 : kind == Kind::colorChange ? 0x8B : plain;
        isJumping = kind != Kind::stitch;
        push(to, {move & 0x1FU, move >> 8U & 0x1FU, flags});
    });
    return test::bytes(test::repeated(512, 0), records, 0, 0, 0x88);
}

/// Nearly all moves are short ones, as the machine's own programs write them.
test::PecSection pecSection() {
    return {.moves = generated(stitchesOfDesign, [](Bytes& to, Kind kind, std::uint32_t move) {
                if (kind == Kind::colorChange)
                    push(to, {0xFE, 0xB0, 1});
                else if (kind == Kind::jump)
                    push(to, {0x90, move & 0xFFU, 0x90, move >> 8U & 0xFFU});
                else
                    push(to, {move & 0x7FU, move >> 8U & 0x7FU});
            })};
}
Bytes pecFile() {
    return test::pecFile(pecSection());
}
Bytes pesFile() {
    return test::pesFile(pecSection());
}

Bytes vp3File() {
    const Bytes stitches = generated(stitchesOfColor, [](Bytes& to, Kind kind, std::uint32_t move) {
        if (kind == Kind::jump)
            push(to, {0x80, 0x01, 0, move & 0xFFU, 0, move >> 8U & 0xFFU, 0x80, 0x02});
        else
            push(to, {(move & 0x3FU) - 0x20U, (move >> 8U & 0x3FU) - 0x20U});
    });
    const std::size_t sections = stitchesOfDesign / stitchesOfColor;
    return test::vp3File({.sections = std::vector(sections, test::Vp3Section{.stitches = stitches})});
}

/// The number of stitches has 16 bits in these files.
Bytes pcsFileOf(test::PcsType type) {
    constexpr std::size_t mostStitches = 65535;
    const Bytes records = generated(mostStitches, [](Bytes& to, Kind kind, std::uint32_t move) {
        const std::uint32_t mark = kind == Kind::jump ? 4 : kind == Kind::colorChange ? 3 : 0;
        push(to, {0, 60 + (move & 0x1FU), 1, 0, 0, 60 + (move >> 8U & 0x1FU), 1, 0, mark});
    });
    const Bytes head = test::pcsFile({.type = type, .records = {}, .stitchCount = mostStitches - 6, .end = {}});
    return test::bytes(head, records, 0, 0);
}
Bytes pcsFile() {
    return pcsFileOf(test::PcsType::pcsLargeHoop);
}
Bytes pcdFile() {
    return pcsFileOf(test::PcsType::pcd);
}
Bytes pcqFile() {
    return pcsFileOf(test::PcsType::pcq);
}

template <const char* Extension>
bool readJefFile(VLMDesign& design, std::span<const std::uint8_t> file, VLMError* error) {
    return readJef(design, file, Extension, error);
}
constexpr char jef[] = "jef";
constexpr char jefPlus[] = "jef+";

struct Measured {
    std::string_view extension;
    Bytes (*file)();
    bool (*read)(VLMDesign& design, std::span<const std::uint8_t> file, VLMError* error);
};
constexpr std::array<Measured, 13> measured{{
    {"dst", dstFile, readDst},
    {"exp", expFile, readExp},
    {"jef", jefFile, readJefFile<jef>},
    {"jef+", jefFile, readJefFile<jefPlus>},
    {"jpx", jpxFile, readJpx},
    {"sew", sewFile, readSew},
    {"pes", pesFile, readPes},
    {"pec", pecFile, readPec},
    {"vp3", vp3File, readVp3},
    {"ksm", ksmFile, readKsm},
    {"pcs", pcsFile, readPcx},
    {"pcd", pcdFile, readPcx},
    {"pcq", pcqFile, readPcx},
}};

/// Decodes a million stitches in memory, in as many designs as that takes, beside a plain copy of the stitch lists that
/// result.
void decode(benchmark::State& state, const Measured& format) {
    const Bytes file = format.file();
    VLMDesign reference;
    VLMError error;
    if (!format.read(reference, file, &error)) return state.SkipWithError(error.message().c_str());
    const std::size_t stitches = reference.stitches().size();
    const std::size_t designs = (stitchesOfDesign + stitches - 1) / stitches;
    const std::vector<std::vector<VLMStitch>> lists(designs, reference.stitches().all());
    const auto work = [&] {
        std::vector<VLMDesign> decoded(designs);
        for (VLMDesign& design : decoded) benchmark::DoNotOptimize(format.read(design, file, nullptr));
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

void registerFormat(const Format& format) {
    const std::string name = "decode/" + std::string(format.extension);
    for (const Measured& known : measured) {
        if (known.extension != format.extension) continue;
        benchmark::RegisterBenchmark(name.c_str(), [&known](benchmark::State& state) { decode(state, known); })
            ->UseManualTime()
            ->Unit(benchmark::kMillisecond);
        return;
    }
    benchmark::RegisterBenchmark(name.c_str(), [](benchmark::State& state) { state.SkipWithError("not measured"); });
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
