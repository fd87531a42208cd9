#pragma once

#include <cmath>
#include <random>
#include <string_view>
#include <vector>

#include "editing/optimize.h"
#include "tests/support/stitches.h"

// The operations as they are told, one insertion and removal after the other: slow, and plain enough to be believed.
// The library's own, which make a new list in one pass, are compared with these on many random designs.
namespace velamo::test {

using Stitches = std::vector<VLMStitch>;

inline auto placeAt(Stitches& stitches, std::size_t index) {
    return stitches.begin() + static_cast<std::ptrdiff_t>(index);
}

inline bool isJumpOrChange(const VLMStitch& stitch) {
    return stitch.isJumpStitch() || stitch.isColorChange();
}

inline void mergeStepByStep(Stitches& stitches) {
    for (std::size_t i = 0; i < stitches.size(); ++i) {
        if (!isJumpOrChange(stitches[i])) continue;
        const std::size_t head = i;
        std::size_t count = stitches[head].isColorChange() ? 1 : 0;
        stitches[head].setIsColorChange(false);
        while (head + 1 < stitches.size() && isJumpOrChange(stitches[head + 1])) {
            const VLMStitch next = stitches[head + 1];
            stitches[head].setDeltaX(stitches[head].deltaX() + next.deltaX());
            stitches[head].setDeltaY(stitches[head].deltaY() + next.deltaY());
            stitches[head].setIsJumpStitch(stitches[head].isJumpStitch() || next.isJumpStitch());
            if (next.isColorChange()) ++count;
            stitches.erase(placeAt(stitches, head + 1));
        }
        for (; count > 0; --count) stitches.insert(placeAt(stitches, ++i), change(0, 0));
        if (stitches[head].isNullStitch()) {
            stitches.erase(placeAt(stitches, head));
            --i;  // wraps at the list's start, and the loop's step brings it back
        }
    }
    if (!stitches.empty() && stitches.back().isJumpStitch()) stitches.pop_back();
}

inline void splitStepByStep(Stitches& stitches, float stitchLimit, float jumpLimit) {
    for (std::size_t i = 0; i < stitches.size(); ++i) {
        VLMStitch& stitch = stitches[i];
        const float limit = stitch.isJumpStitch() ? jumpLimit : stitchLimit;
        const float dx = stitch.deltaX();
        const float dy = stitch.deltaY();
        float px = dx;
        float py = dy;
        bool isSplit = false;
        if (std::abs(dx) > limit) {
            px = dx < 0 ? -limit : limit;
            py = (dy / dx) * px;
            isSplit = true;
        }
        if (std::abs(py) > limit) {
            py = py < 0 ? -limit : limit;
            px = (dx / dy) * py;
            isSplit = true;
        }
        if (stitch.isColorChange() && !stitch.isNullStitch()) {
            px = py = 0;
            isSplit = true;
        }
        if (!isSplit) continue;
        VLMStitch rest = stitch;
        rest.setDeltaX(dx - px);
        rest.setDeltaY(dy - py);
        rest.setIsColorChange(false);
        if (i > 0 && stitches[i - 1].isJumpStitch()) rest.setIsJumpStitch(true);
        stitch.setDeltaX(px);
        stitch.setDeltaY(py);
        stitches.insert(placeAt(stitches, i + 1), rest);
    }
}

/// The limits of the types that the random designs are optimised for.
inline void optimizeStepByStep(VLMDesign& design, std::string_view type) {
    auto& stitches = design.stitches().all();
    mergeStepByStep(stitches);
    const bool isPes = type == "PES";
    splitStepByStep(stitches,
                    isPes           ? 62.0F
                    : type == "DST" ? 120.0F
                                    : 999999.0F,
                    isPes           ? 2046.0F
                    : type == "DST" ? 120.0F
                                    : 999999.0F);
    design.resetBounds();
    float x = 0;
    float y = 0;
    for (const VLMStitch& stitch : stitches) {
        x += stitch.deltaX();
        y += stitch.deltaY();
        design.setXMin(std::min(design.xMin(), x));
        design.setXMax(std::max(design.xMax(), x));
        design.setYMin(std::min(design.yMin(), y));
        design.setYMax(std::max(design.yMax(), y));
    }
    trimSelectedJumps(design);
    design.setDisplayRange({0, stitches.size()});
}

/// A design made by chance, of few stitches or many, with runs of jumps, colour changes, null stitches and selected
/// stitches, and as many threads as blocks.
inline VLMDesign randomDesign(std::mt19937& random) {
    const auto chance = [&random](double probability) { return std::bernoulli_distribution(probability)(random); };
    const std::size_t size = std::uniform_int_distribution<std::size_t>(0, chance(0.2) ? 60 : 12)(random);
    const float reach = chance(0.5) ? 40.0F : 3000.0F;
    const bool isWhole = chance(0.5);
    std::uniform_real_distribution<float> delta(-reach, reach);
    const auto nextDelta = [&] {
        if (chance(0.2)) return 0.0F;
        const float value = delta(random);
        return isWhole ? std::round(value) : value;
    };
    VLMDesign design;
    VLMStitch stitch;
    std::size_t blocks = 1;
    for (std::size_t i = 0; i < size; ++i) {
        const bool isSelected = chance(0.3) != stitch.isSelected();  // in runs
        const bool isNull = chance(0.1);
        stitch =
            VLMStitch(isNull ? 0.0F : nextDelta(), isNull ? 0.0F : nextDelta(), chance(0.25), chance(0.15), isSelected);
        if (stitch.isColorChange()) ++blocks;
        if (isSelected) design.setSelectionActive(true);
        design.stitches().push_back(stitch);
    }
    for (std::size_t i = 0; i < blocks; ++i)
        design.threads().push_back(VLMThread::initWithKeyofPalette(std::to_string(i + 1), "Undefined"));
    return design;
}

/// Everything of a design that editing changes.
inline void expectSame(const VLMDesign& one, const VLMDesign& other) {
    EXPECT_EQ(one.stitches(), other.stitches());
    EXPECT_EQ(one.threads(), other.threads());
    EXPECT_EQ(boundsOf(one), boundsOf(other));
    EXPECT_EQ(one.displayRange(), other.displayRange());
    EXPECT_EQ(one.selectionActive(), other.selectionActive());
}

}  // namespace velamo::test
