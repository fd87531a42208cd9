// Each edit of a million stitches with 100,000 separate selected runs beside a plain copy of the stitch list.
#include <malloc.h>

#include "bench/beside.h"
#include "velamo/editing/append.h"
#include "velamo/editing/basting.h"
#include "velamo/editing/optimize.h"
#include "velamo/editing/selection.h"
#include "velamo/editing/stitch_edits.h"
#include "velamo/editing/transform.h"

namespace velamo::bench {
namespace {

constexpr std::size_t blocks = 20;
constexpr std::size_t runLength = 10;

/// Every tenth stitch begins a run of five selected ones; every fiftieth is a jump; some colour changes.
std::vector<VLMStitch> stitchesOf(std::size_t count) {
    std::vector<VLMStitch> stitches;
    stitches.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        const bool isChange = i > 0 && i % (count / blocks) == 0;
        const auto deltaX = static_cast<float>(i % 17) - 8.0F;
        const auto deltaY = static_cast<float>(i * 5 % 17) - 8.0F;
        stitches.emplace_back(isChange ? 0.0F : deltaX, isChange ? 0.0F : deltaY, !isChange && i % 50 == 0, isChange,
                              i % runLength < runLength / 2);
    }
    return stitches;
}

VLMDesign designOf(const std::vector<VLMStitch>& stitches) {
    VLMDesign design;
    design.setDesignType("DST");
    design.setStitches(stitches);
    design.setSelectionActive(true);
    for (std::size_t i = 0; i < blocks; ++i) design.threads().push_back(VLMThread::initWithKeyofPalette("1", "Janome"));
    design.setXMin(-100);
    design.setXMax(300);
    return design;
}

/// A million jumps and colour changes, one after the other: they merge into one move.
std::vector<VLMStitch> jumpsAndChanges(std::size_t count) {
    std::vector<VLMStitch> stitches;
    stitches.reserve(count);
    for (std::size_t i = 0; i < count; ++i) stitches.emplace_back(1.0F, -1.0F, i % 2 == 0, i % 2 == 1);
    return stitches;
}

using Edit = bool (*)(VLMDesign&);

void measureEdit(benchmark::State& state, const std::vector<VLMStitch>& stitches, Edit edit) {
    VLMDesign design = designOf(stitches);
    std::vector<VLMStitch> copy;
    measureBeside(
        state, [&] { benchmark::DoNotOptimize(edit(design)); },
        [&] {
            // Each turn starts from the same list, in memory of its own; that is not measured as the limit.
            design = designOf(stitches);
            copy = std::vector<VLMStitch>();
        },
        [&] {
            copy = stitches;
            benchmark::DoNotOptimize(copy.data());
        });
}

VLMDesign& otherDesign() {
    static VLMDesign other = designOf({VLMStitch(1, 1, false, false)});
    return other;
}

struct Row {
    const char* name;
    Edit edit;
};
constexpr Row rows[] = {
    {"select_all",
     [](VLMDesign& design) {
         selectAll(design);
         return true;
     }},
    {"select_rect",
     [](VLMDesign& design) {
         selectInRectunselectMode(design, {0, 0, 100, 100}, false);
         return true;
     }},
    {"select_block",
     [](VLMDesign& design) {
         selectBlockAtwithToleranceunselectMode(design, {1, 1}, 4, false);
         return true;
     }},
    {"selection_rect", [](VLMDesign& design) { return selectionRect(design).width > 0; }},
    {"optimize", [](VLMDesign& design) { return optimizeJumpsFor(design, "DST"); }},
    {"optimize_short", [](VLMDesign& design) { return optimizeJumpsFor(design, "PES"); }},
    {"center", [](VLMDesign& design) { return centerDesign(design); }},
    {"move",
     [](VLMDesign& design) {
         return moveSelectionByVectorerror(design, {10, 10}, nullptr);
     }},
    {"rotate", [](VLMDesign& design) { return rotateSelectionByDegreeserror(design, 30, nullptr); }},
    {"resize", [](VLMDesign& design) { return resizeSelectionByPercenterror(design, 1.1F, nullptr); }},
    {"flip", [](VLMDesign& design) { return flipSelectionerror(design, "V", nullptr); }},
    {"delete", [](VLMDesign& design) { return deleteSelection(design); }},
    {"jumps_on", [](VLMDesign& design) { return switchSelectionToJumpserror(design, true, nullptr); }},
    {"split_thread", [](VLMDesign& design) { return insertThreadBeforeSelection(design); }},
    {"delete_thread", [](VLMDesign& design) { return deleteThreadAtIndexerror(design, 3, nullptr); }},
    {"move_thread", [](VLMDesign& design) { return moveThreadFromIndextoIndexerror(design, 3, 12, nullptr); }},
    {"baste", [](VLMDesign& design) { return addBastingWithLengthinDistanceerror(design, 5, 5, nullptr); }},
    {"append", [](VLMDesign& design) { return appendDesignerror(design, otherDesign(), nullptr); }},
};

void registerAll() {
    constexpr std::size_t million = 1'000'000;
    for (const std::size_t count : {million / 10, million}) {
        const auto label = "/" + std::to_string(count);
        for (const Row& row : rows)
            benchmark::RegisterBenchmark(
                (row.name + label).c_str(),
                [&row, count](benchmark::State& state) { measureEdit(state, stitchesOf(count), row.edit); })
                ->UseManualTime()
                ->Unit(benchmark::kMicrosecond);
        benchmark::RegisterBenchmark(("optimize_jumps_and_changes" + label).c_str(),
                                     [count](benchmark::State& state) {
                                         measureEdit(state, jumpsAndChanges(count),
                                                     [](VLMDesign& design) { return optimizeJumpsFor(design, "DST"); });
                                     })
            ->UseManualTime()
            ->Unit(benchmark::kMicrosecond);
    }
}

}  // namespace
}  // namespace velamo::bench

int main(int argumentCount, char** arguments) {
    // Every list gets fresh memory from the system, the edited one and the plain copy: as in a program that edits once.
    mallopt(M_MMAP_THRESHOLD, 1 << 16);
    velamo::bench::registerAll();
    benchmark::Initialize(&argumentCount, arguments);
    benchmark::RunSpecifiedBenchmarks();
}
