#include "velamo/editing/basting.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "velamo/editing/edited_stitches.h"
#include "velamo/editing/fail_edit.h"
#include "velamo/model/failure.h"

namespace velamo {
namespace {

constexpr float tenthsPerMillimetre = 10;
constexpr int lockingStitches = 3;
constexpr float mostStitchesOfAnEdge = 1U << 20U;

/// Everything is computed in single precision, but for the quotient that gives the number of stitches.
struct Edge {
    int stitches = 0;
    float step = 0;

    [[nodiscard]] static Edge of(float size, float stitchLength) noexcept {
        const float count =
            std::ceil(static_cast<float>(static_cast<double>(size) / static_cast<double>(stitchLength)));
        if (!(count >= 1 && count <= mostStitchesOfAnEdge)) return {};
        return {static_cast<int>(count), size / static_cast<float>(static_cast<int>(count))};
    }
};

struct Frame {
    float left;
    float top;
    Edge horizontal;
    Edge vertical;
};

Frame frameAround(const VLMDesign& design, float length, float distance) noexcept {
    const float margin = tenthsPerMillimetre * distance;
    const float margins = 2 * tenthsPerMillimetre * distance;
    const float stitchLength = tenthsPerMillimetre * length;
    return {design.xMin() - margin, design.yMax() + margin,
            Edge::of(static_cast<float>(design.designWidth()) + margins, stitchLength),
            Edge::of(static_cast<float>(design.designHeight()) + margins, stitchLength)};
}

template <class Edited>
void appendSteps(Edited& stitches, int count, float deltaX, float deltaY) {
    for (; count > 0; --count) stitches.append(VLMStitch(deltaX, deltaY, false, false));
}

/// From the origin and back to it. The first stitches of the top edge are sewn twice, which locks the thread.
template <class Edited>
void appendFrame(Edited& stitches, const Frame& frame) {
    const auto& [left, top, horizontal, vertical] = frame;
    const int locking = std::min(horizontal.stitches, lockingStitches);
    stitches.append(VLMStitch(left, top, true, false));
    stitches.append(VLMStitch(0, 0, false, false));
    appendSteps(stitches, horizontal.stitches, horizontal.step, 0);
    appendSteps(stitches, vertical.stitches, 0, -vertical.step);
    appendSteps(stitches, horizontal.stitches, -horizontal.step, 0);
    appendSteps(stitches, vertical.stitches, 0, vertical.step);
    appendSteps(stitches, locking, horizontal.step, 0);
    const float endX = left + static_cast<float>(locking) * horizontal.step;
    stitches.append(VLMStitch(-endX, -top, true, false));
    stitches.append(VLMStitch(0, 0, false, true));
}

VLMThread bastingThread(const VLMDesign& design) {
    VLMThread thread = design.threads()[0];
    thread.changeToColorinPalette(VLMColor::initWithRedgreenblue(0, 0, 0), design.designPalette());
    return thread;
}

}  // namespace

bool addBastingWithLengthinDistanceerror(VLMDesign& design, float length, float distance, VLMError* error) noexcept {
    return operation(error, [&] {
        if (std::as_const(design).threads().empty()) return failEdit(EditFailure::tooFewThreads, error);
        if (!(length > 0)) return failEdit(EditFailure::invalidBasting, error);
        const Frame frame = frameAround(design, length, distance);
        if (frame.horizontal.stitches == 0 || frame.vertical.stitches == 0)
            return failEdit(EditFailure::invalidBasting, error);
        std::vector<VLMThread> threads{bastingThread(design)};
        threads.insert(threads.end(), std::as_const(design).threads().begin(), std::as_const(design).threads().end());
        const auto append = [&](auto& edited) {
            const auto& stitches = std::as_const(design).stitches();
            appendFrame(edited, frame);
            edited.append(stitches.begin(), stitches.end());
        };
        if (!replaceStitches(design, append, error)) return false;
        design.threads().all().swap(threads);
        return true;
    });
}

}  // namespace velamo
