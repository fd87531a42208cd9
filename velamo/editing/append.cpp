#include "velamo/editing/append.h"

#include <algorithm>
#include <utility>

#include "velamo/editing/edited_stitches.h"
#include "velamo/model/failure.h"

namespace velamo {
namespace {

constexpr float offset = 10;

struct Place {
    float x = 0;
    float y = 0;
};

/// Where the needle stands at last, in single precision.
Place endOfStitches(const StitchList& stitches) noexcept {
    Place place;
    for (const VLMStitch& stitch : stitches) place = {place.x + stitch.deltaX(), place.y + stitch.deltaY()};
    return place;
}

template <class Edited>
void appendJoined(Edited& edited, const StitchList& stitches, const StitchList& others) {
    edited.append(stitches.begin(), stitches.end());
    if (!stitches.empty()) edited.append(VLMStitch(0, 0, false, true));
    const Place end = endOfStitches(stitches);
    edited.append(VLMStitch(offset - end.x, -offset - end.y, true, false));
    edited.append(others.begin(), others.end());
}

/// The threads as they look in the palette of the design that they join. A thread that keeps another palette, because
/// there is none of that name, leaves the design without a common one.
std::vector<VLMThread> recolored(std::vector<VLMThread> threads, std::string palette) {
    for (VLMThread& thread : threads) {
        thread.changeToColorinPalette(VLMColor(thread.color()), palette);
        if (thread.palette() != palette) palette.clear();
    }
    return threads;
}

}  // namespace

bool appendDesignerror(VLMDesign& design, VLMDesign& other, VLMError* error) noexcept {
    return operation(error, [&] {
        const auto& others = std::as_const(other).stitches();
        const bool isSelected =
            std::any_of(others.begin(), others.end(), [](const VLMStitch& stitch) { return stitch.isSelected(); });
        std::vector<VLMThread> added = recolored(std::as_const(other).threads().all(), design.designPalette());
        auto& threads = design.threads().all();
        threads.reserve(threads.size() + added.size());
        auto& othersThreads = other.threads().all();
        const auto append = [&](auto& edited) { appendJoined(edited, std::as_const(design).stitches(), others); };
        if (!replaceStitches(design, append, error)) return false;
        std::copy(added.begin(), added.end(), othersThreads.begin());
        threads.insert(threads.end(), added.begin(), added.end());
        if (isSelected) design.setSelectionActive(true);
        return true;
    });
}

}  // namespace velamo
