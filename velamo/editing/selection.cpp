#include "velamo/editing/selection.h"

#include <algorithm>
#include <utility>

#include "velamo/editing/edited_stitches.h"

namespace velamo {
namespace {

constexpr std::int32_t noStitch = -1;

/// A box around nothing that lies beyond every design on its inner side.
struct Box {
    double minX = 65536;
    double minY = 65536;
    double maxX = -65536;
    double maxY = -65536;
    void widen(DesignPoint point) noexcept {
        minX = std::min(minX, point.x);
        minY = std::min(minY, point.y);
        maxX = std::max(maxX, point.x);
        maxY = std::max(maxY, point.y);
    }
    [[nodiscard]] DesignRect rect() const noexcept { return {minX, minY, maxX - minX, maxY - minY}; }
};

DesignRect boundsOf(const VLMDesign& design) noexcept {
    const double x = static_cast<double>(design.xMin());
    const double y = static_cast<double>(design.yMin());
    return {x, y, static_cast<double>(design.xMax()) - x, static_cast<double>(design.yMax()) - y};
}

double squareOf(double number) noexcept {
    return number * number;
}

/// The point from which the distance to a stitch is measured. Beyond an end it is the other end: the pick radius that
/// callers choose counts on such clicks to miss.
DesignPoint referencePoint(DesignPoint point, DesignPoint start, DesignPoint end, float squaredLength) noexcept {
    const DesignPoint way{end.x - start.x, end.y - start.y};
    const double product = (point.x - start.x) * way.x + (point.y - start.y) * way.y;
    const auto part = static_cast<float>(product / static_cast<double>(squaredLength));
    if (part < 0.0F) return end;
    if (part > 1.0F) return start;
    return {start.x + static_cast<double>(part) * way.x, start.y + static_cast<double>(part) * way.y};
}

bool isHit(DesignPoint point, DesignPoint start, DesignPoint end, float tolerance) noexcept {
    const auto squaredLength = static_cast<float>(squareOf(end.x - start.x) + squareOf(end.y - start.y));
    if (squaredLength == 0.0F) return false;
    const DesignPoint nearest = referencePoint(point, start, end, squaredLength);
    return tolerance > static_cast<float>(squareOf(point.x - nearest.x) + squareOf(point.y - nearest.y));
}

bool isInBlock(const VLMStitch& stitch) noexcept {
    return !stitch.isJumpStitch() && !stitch.isColorChange();
}

void selectAround(std::vector<VLMStitch>& stitches, std::size_t index, bool isSelected) noexcept {
    for (std::size_t i = index + 1; i-- > 0 && isInBlock(stitches[i]);) stitches[i].setIsSelected(isSelected);
    for (std::size_t i = index + 1; i < stitches.size() && isInBlock(stitches[i]); ++i)
        stitches[i].setIsSelected(isSelected);
}

void findSelectionActive(VLMDesign& design) noexcept {
    const auto& stitches = std::as_const(design).stitches();
    design.setSelectionActive(
        std::any_of(stitches.begin(), stitches.end(), [](const VLMStitch& stitch) { return stitch.isSelected(); }));
}

void setAllSelected(VLMDesign& design, bool isSelected) noexcept {
    for (std::size_t i = 0; i < design.stitches().size(); ++i) design.stitches()[i].setIsSelected(isSelected);
    design.setSelectionActive(isSelected);
}

}  // namespace

DesignRect selectionRect(const VLMDesign& design) noexcept {
    if (!design.selectionActive()) return boundsOf(design);
    Box box;
    DesignPoint start;
    for (const VLMStitch& stitch : design.stitches()) {
        const DesignPoint end = endOf(start, stitch);
        if (stitch.isSelected()) {
            box.widen(start);
            box.widen(end);
        }
        start = end;
    }
    return box.rect();
}

void selectAll(VLMDesign& design) noexcept {
    setAllSelected(design, true);
}

void deselectAll(VLMDesign& design) noexcept {
    setAllSelected(design, false);
}

void invertAll(VLMDesign& design) noexcept {
    design.setSelectionActive(false);
    for (std::size_t i = 0; i < design.stitches().size(); ++i) {
        VLMStitch& stitch = design.stitches()[i];
        stitch.setIsSelected(!stitch.isSelected());
        if (stitch.isSelected()) design.setSelectionActive(true);
    }
}

void selectInRectunselectMode(VLMDesign& design, const DesignRect& rect, bool unselectMode) noexcept {
    design.setSelectionActive(false);
    DesignPoint start;
    for (std::size_t i = 0; i < design.stitches().size(); ++i) {
        VLMStitch& stitch = design.stitches()[i];
        const DesignPoint end = endOf(start, stitch);
        if (rect.contains(start) && rect.contains(end)) stitch.setIsSelected(!unselectMode);
        if (stitch.isSelected()) design.setSelectionActive(true);
        start = end;
    }
}

std::int32_t indexOfStitchAtwithTolerance(const VLMDesign& design, DesignPoint point, float tolerance) noexcept {
    std::int32_t hit = noStitch;
    std::int32_t index = 0;
    DesignPoint start;
    for (const VLMStitch& stitch : design.stitches()) {
        const DesignPoint end = endOf(start, stitch);
        if (isHit(point, start, end, tolerance)) hit = index;
        start = end;
        ++index;
    }
    return hit;
}

bool isSelectedAtwithTolerance(const VLMDesign& design, DesignPoint point, float tolerance) noexcept {
    const std::int32_t hit = indexOfStitchAtwithTolerance(design, point, tolerance);
    return hit != noStitch && design.stitches()[static_cast<std::size_t>(hit)].isSelected();
}

std::int32_t indexOfThreadAtwithTolerance(const VLMDesign& design, DesignPoint point, float tolerance) noexcept {
    const std::int32_t hit = indexOfStitchAtwithTolerance(design, point, tolerance);
    if (hit == noStitch) return noStitch;
    const auto first = design.stitches().begin();
    return static_cast<std::int32_t>(
        std::count_if(first, first + hit + 1, [](const VLMStitch& stitch) { return stitch.isColorChange(); }));
}

void selectStitchAtwithToleranceunselectMode(VLMDesign& design, DesignPoint point, float tolerance,
                                             bool unselectMode) noexcept {
    const std::int32_t hit = indexOfStitchAtwithTolerance(design, point, tolerance);
    if (hit != noStitch) design.stitches()[static_cast<std::size_t>(hit)].setIsSelected(!unselectMode);
    findSelectionActive(design);
}

void selectBlockAtwithToleranceunselectMode(VLMDesign& design, DesignPoint point, float tolerance,
                                            bool unselectMode) noexcept {
    const std::int32_t hit = indexOfStitchAtwithTolerance(design, point, tolerance);
    if (hit != noStitch) selectAround(design.stitches().all(), static_cast<std::size_t>(hit), !unselectMode);
    findSelectionActive(design);
}

}  // namespace velamo
