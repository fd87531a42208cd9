#include "reading/design_facts.h"

#include <algorithm>
#include <cmath>

#include "velamo/analysis/sewing_figures.h"
#include "velamo/formats/undefined_threads.h"

namespace velamo {
namespace {

constexpr double tenthsInMillimetre = 10;

Text keptText(const Text& text) {
    return text && text->size() <= longestThreadText ? text : Text();
}

ThreadFacts factsOf(const VLMThread& thread, const BlockFigures& block) {
    const bool isUnknown = hasNoColor(thread);
    return {.color = isUnknown ? std::nullopt : std::optional(colorNumber(thread.color())),
            .name = isUnknown ? Text() : keptText(thread.name()),
            .palette = isUnknown ? Text() : keptText(thread.palette()),
            .stitches = block.stitches,
            .length = block.sewnLength / tenthsInMillimetre};
}

std::size_t sizeOf(const ThreadFacts& thread) {
    return sizeof(ThreadFacts) + thread.name.value_or("").size() + thread.palette.value_or("").size();
}

std::vector<ThreadFacts> threadsOf(const VLMDesign& design, const SewingFigures& figures) {
    std::vector<ThreadFacts> threads;
    std::size_t bytes = 0;
    for (const BlockFigures& block : figures.blocks) {
        if (block.thread >= design.threads().size()) break;
        ThreadFacts thread = factsOf(design.threads()[block.thread], block);
        bytes += sizeOf(thread);
        if (bytes > mostBytesOfThreads) break;
        threads.push_back(std::move(thread));
    }
    return threads;
}

std::optional<HoopFacts> hoopOf(const VLMDesign& design) {
    const HoopHandle& hoop = design.designHoop();
    if (!hoop) return std::nullopt;
    return HoopFacts{keptText(hoop->vendor()), keptText(hoop->name()), hoop->width(), hoop->height()};
}

}  // namespace

std::uint32_t colorNumber(const VLMColor& color) {
    std::uint32_t number = 0;
    for (const double component : {color.red(), color.green(), color.blue()}) {
        const double share = component > 0 ? std::min(component, 1.0) : 0;  // files may hold what is no number
        number = number << 8U | static_cast<std::uint32_t>(std::lround(share * 255));
    }
    return number;
}

DesignFacts factsOfDesign(const VLMDesign& design) {
    const SewingFigures figures = sewingFiguresOf(design);
    return {.attributes = attributesOfDesign(design),
            .format = design.designType().value_or(""),
            .version = design.designVersion(),
            .jumps = figures.jumps,
            .trims = figures.trims,
            .blocks = static_cast<std::int64_t>(figures.blocks.size()),
            .length = figures.sewnLength / tenthsInMillimetre,
            .threads = threadsOf(design, figures),
            .hoop = hoopOf(design)};
}

}  // namespace velamo
