#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <random>
#include <string_view>
#include <vector>

#include "tests/support/stitches.h"
#include "velamo/editing/optimize.h"

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

/// The new index of the stitch that was at `index`.
inline std::size_t insertJumpStepByStep(Stitches& stitches, DesignPoint vector, std::size_t index) {
    if (index >= stitches.size()) return index;
    const VLMStitch previous = index > 0 ? stitches[index - 1] : VLMStitch();
    const VLMStitch target = stitches[index];
    stitches.insert(placeAt(stitches, index), jump(static_cast<float>(vector.x), static_cast<float>(vector.y)));
    if (previous.isJumpStitch() || target.isJumpStitch() || target.isNullStitch()) return index + 1;
    stitches.insert(placeAt(stitches, index + 1), VLMStitch(0, 0, false, false, target.isSelected()));
    return index + 2;
}

inline DesignPoint sumOf(DesignPoint place, const VLMStitch& stitch) {
    return {place.x + double{stitch.deltaX()}, place.y + double{stitch.deltaY()}};
}

template <class Transform, class Inverse>
void transformStepByStep(VLMDesign& design, Transform transform, Inverse inverse) {
    auto& stitches = design.stitches().all();
    DesignPoint oldPlace;
    DesignPoint newPlace;
    bool wasSelected = false;
    for (std::size_t i = 0; i < stitches.size(); ++i) {
        const DesignPoint end = sumOf(oldPlace, stitches[i]);
        if (stitches[i].isSelected()) {
            if (!wasSelected) {
                const DesignPoint start = transform(oldPlace);
                const DesignPoint way{start.x - newPlace.x, start.y - newPlace.y};
                i = insertJumpStepByStep(stitches, way, i);
                newPlace = {newPlace.x + way.x, newPlace.y + way.y};
            }
            const DesignPoint newEnd = transform(end);
            stitches[i].setDeltaX(static_cast<float>(newEnd.x - newPlace.x));
            stitches[i].setDeltaY(static_cast<float>(newEnd.y - newPlace.y));
            newPlace = newEnd;
        } else {
            if (wasSelected && i > 0) {
                const DesignPoint back = inverse(newPlace);
                i = insertJumpStepByStep(stitches, {back.x - newPlace.x, back.y - newPlace.y}, i);
            }
            newPlace = end;
        }
        wasSelected = stitches[i].isSelected();
        oldPlace = end;
    }
    optimizeStepByStep(design, *design.designType());
}

inline void moveStepByStep(VLMDesign& design, DesignPoint vector) {
    auto& stitches = design.stitches().all();
    bool wasSelected = false;
    for (std::size_t i = 0; i < stitches.size(); ++i) {
        const bool isSelected = stitches[i].isSelected();
        if (isSelected && !wasSelected) i = insertJumpStepByStep(stitches, vector, i);
        if (!isSelected && wasSelected && i > 0) i = insertJumpStepByStep(stitches, {-vector.x, -vector.y}, i);
        wasSelected = isSelected;
    }
    optimizeStepByStep(design, *design.designType());
}

inline void centerStepByStep(VLMDesign& design) {
    for (int i = 0; i < 10; ++i) {
        const DesignPoint center = design.centerOfDesign();
        if (center == DesignPoint{0, 0}) return;
        insertJumpStepByStep(design.stitches().all(), {-center.x, -center.y}, 0);
        optimizeStepByStep(design, *design.designType());
    }
}

inline void removeSelectedStepByStep(Stitches& stitches) {
    DesignPoint place;
    DesignPoint gap;
    bool isInRun = false;
    for (std::size_t i = 0; i < stitches.size();) {
        const DesignPoint end = sumOf(place, stitches[i]);
        if (stitches[i].isSelected()) {
            if (!isInRun) gap = place;
            isInRun = true;
            if (stitches[i].isColorChange()) {
                stitches[i].setDeltaX(0);
                stitches[i].setDeltaY(0);
                ++i;
            } else {
                stitches.erase(placeAt(stitches, i));
            }
        } else {
            if (isInRun) i = insertJumpStepByStep(stitches, {place.x - gap.x, place.y - gap.y}, i);
            isInRun = false;
            ++i;
        }
        place = end;
    }
}

inline void removeThread(VLMDesign& design, std::size_t index) {
    auto& threads = design.threads().all();
    if (index < threads.size()) threads.erase(threads.begin() + static_cast<std::ptrdiff_t>(index));
}

/// Whether the change was removed from the list.
inline bool dropChange(Stitches& stitches, std::size_t index) {
    if (stitches[index].isNullStitch()) {
        stitches.erase(placeAt(stitches, index));
        return true;
    }
    stitches[index].setIsColorChange(false);
    return false;
}

inline void dropEmptyInnerBlocksStepByStep(VLMDesign& design) {
    auto& stitches = design.stitches().all();
    std::size_t thread = 0;
    for (std::size_t i = 0; i < stitches.size(); ++i) {
        if (!stitches[i].isColorChange()) continue;
        bool isEmpty = true;
        for (std::size_t k = i + 1; k < stitches.size() && !stitches[k].isColorChange(); ++k)
            if (!stitches[k].isJumpStitch() && !stitches[k].isNullStitch()) isEmpty = false;
        if (!isEmpty) {
            ++thread;
            continue;
        }
        if (dropChange(stitches, i)) --i;
        removeThread(design, thread + 1);
    }
}

inline void dropEmptyFirstBlockStepByStep(VLMDesign& design) {
    auto& stitches = design.stitches().all();
    std::size_t first = 0;
    while (first < stitches.size() && !stitches[first].isColorChange()) {
        if (!stitches[first].isJumpStitch() && !stitches[first].isNullStitch()) return;
        ++first;
    }
    if (first == stitches.size()) return;
    dropChange(stitches, first);
    removeThread(design, 0);
}

inline void deleteSelectionStepByStep(VLMDesign& design) {
    removeSelectedStepByStep(design.stitches().all());
    dropEmptyInnerBlocksStepByStep(design);
    dropEmptyFirstBlockStepByStep(design);
    optimizeStepByStep(design, *design.designType());
    if (!design.stitches().empty()) return;
    design.threads().clear();
    design.setXMin(-100);
    design.setXMax(100);
    design.setYMin(-100);
    design.setYMax(100);
}

inline void switchToJumpsStepByStep(VLMDesign& design, bool toJumps) {
    for (std::size_t i = 0; i < design.stitches().size(); ++i)
        if (design.stitches()[i].isSelected()) design.stitches()[i].setIsJumpStitch(toJumps);
    optimizeStepByStep(design, *design.designType());
}

inline void insertThreadStepByStep(VLMDesign& design) {
    if (!design.selectionActive()) return;
    std::size_t changes = 0;
    for (std::size_t i = 0; i < design.stitches().size(); ++i) {
        VLMStitch& stitch = design.stitches()[i];
        if (stitch.isColorChange()) ++changes;
        if (!stitch.isSelected()) continue;
        stitch.setIsColorChange(true);
        auto& threads = design.threads().all();
        threads.insert(threads.begin() + static_cast<std::ptrdiff_t>(changes), VLMThread(threads[changes]));
        break;
    }
    optimizeStepByStep(design, *design.designType());
}

inline void deleteThreadStepByStep(VLMDesign& design, int index) {
    if (index < 0 || index >= design.numberOfThreads()) return;
    int changes = 0;
    for (std::size_t i = 0; i < design.stitches().size(); ++i) {
        VLMStitch& stitch = design.stitches()[i];
        if (stitch.isColorChange()) ++changes;
        if (changes != index) continue;
        stitch.setIsColorChange(false);
        removeThread(design, static_cast<std::size_t>(index));
        break;
    }
    optimizeStepByStep(design, *design.designType());
}

inline VLMStitch jumpBetween(DesignPoint from, DesignPoint to) {
    return jump(static_cast<float>(to.x - from.x), static_cast<float>(to.y - from.y));
}

inline void moveThreadStepByStep(VLMDesign& design, int from, int to) {
    if (from < 0 || to < 0 || from >= design.numberOfThreads() || to >= design.numberOfThreads() || from == to) return;
    auto& stitches = design.stitches().all();
    Stitches moved;
    DesignPoint place;
    DesignPoint start;
    DesignPoint end;
    int changes = 0;
    std::size_t behind = 0;
    for (std::size_t i = 0; i < stitches.size();) {
        if (stitches[i].isColorChange()) ++changes;
        if (changes != from) {
            place = sumOf(place, stitches[i++]);
            continue;
        }
        if (moved.empty()) start = place;
        place = sumOf(place, stitches[i]);
        end = place;
        behind = i;
        moved.push_back(stitches[i]);
        moved.back().setIsColorChange(false);
        stitches.erase(placeAt(stitches, i));
    }
    if (moved.empty()) return;
    if (behind < stitches.size()) {
        VLMStitch bridge = jumpBetween(start, end);
        bridge.setIsColorChange(stitches[behind].isColorChange());
        stitches[behind].setIsColorChange(false);
        stitches.insert(placeAt(stitches, behind), bridge);
    }
    if (!stitches.empty()) stitches[0].setIsColorChange(true);
    int block = -1;
    std::size_t target = 0;
    DesignPoint before;
    for (; target < stitches.size(); ++target) {
        if (stitches[target].isColorChange()) ++block;
        if (block == to) break;
        before = sumOf(before, stitches[target]);
    }
    if (!stitches.empty() && to != 0) stitches[0].setIsColorChange(false);
    moved[0].setIsColorChange(to != 0);
    moved.insert(moved.begin(), jumpBetween(before, start));
    moved.push_back(jumpBetween(end, before));
    stitches.insert(placeAt(stitches, target), moved.begin(), moved.end());
    auto& threads = design.threads().all();
    const VLMThread thread = threads[static_cast<std::size_t>(from)];
    removeThread(design, static_cast<std::size_t>(from));
    threads.insert(threads.begin() + to, thread);
    optimizeStepByStep(design, *design.designType());
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
    design.setDesignType(std::array{"DST", "PES", "VP3"}[std::uniform_int_distribution<std::size_t>(0, 2)(random)]);
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
