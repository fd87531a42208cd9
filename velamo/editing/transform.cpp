#include "velamo/editing/transform.h"

#include <cmath>
#include <utility>

#include "velamo/editing/edited_stitches.h"
#include "velamo/editing/fail_edit.h"
#include "velamo/editing/selection.h"
#include "velamo/model/failure.h"

namespace velamo {
namespace {

constexpr double radiansOfDegree = 0.017453292519943295;
constexpr int mostCenterings = 10;

DesignPoint middleOfSelection(const VLMDesign& design) noexcept {
    const DesignRect rect = selectionRect(design);
    return {rect.x + rect.width * 0.5, rect.y + rect.height * 0.5};
}

/// Carries each selected stitch by `transform`, and back to its place what follows by `inverse`. Places stay in
/// doubles; only moves are rounded.
template <class Edited, class Transform, class Inverse>
void appendTransformed(Edited& edited, const StitchList& stitches, Transform transform, Inverse inverse) {
    DesignPoint place;   // before the stitch, in the old design
    DesignPoint needle;  // where it stands in the new one
    bool isBehindSelected = false;
    for (const VLMStitch& stitch : stitches) {
        const DesignPoint end = endOf(place, stitch);
        if (stitch.isSelected()) {
            if (!isBehindSelected) {
                const DesignPoint way = transform(place) - needle;
                edited.appendJumpBefore(stitch, way);
                needle = {needle.x + way.x, needle.y + way.y};
            }
            const DesignPoint newEnd = transform(end);
            const DesignPoint move = newEnd - needle;
            edited.append({static_cast<float>(move.x), static_cast<float>(move.y), stitch.isJumpStitch(),
                           stitch.isColorChange(), true});
            needle = newEnd;
        } else {
            if (isBehindSelected) edited.appendJumpBefore(stitch, inverse(needle) - needle);
            edited.append(stitch);
            needle = end;
        }
        isBehindSelected = stitch.isSelected();
        place = end;
    }
}

template <class Transform, class Inverse>
bool transformSelection(VLMDesign& design, Transform transform, Inverse inverse, VLMError* error) {
    return replaceStitches(
        design, [&](auto& edited) { appendTransformed(edited, std::as_const(design).stitches(), transform, inverse); },
        error);
}

template <class Edited>
void appendMoved(Edited& edited, const StitchList& stitches, DesignPoint vector) {
    bool isBehindSelected = false;
    for (const VLMStitch& stitch : stitches) {
        if (stitch.isSelected() && !isBehindSelected) edited.appendJumpBefore(stitch, vector);
        if (!stitch.isSelected() && isBehindSelected) edited.appendJumpBefore(stitch, {-vector.x, -vector.y});
        edited.append(stitch);
        isBehindSelected = stitch.isSelected();
    }
}

/// A turn about a point; its sine and cosine are kept in single precision.
class Turn {
public:
    Turn(double radians, DesignPoint middle) noexcept
        : cosine_(static_cast<double>(static_cast<float>(std::cos(radians)))),
          sine_(static_cast<double>(static_cast<float>(std::sin(radians)))),
          middle_(middle) {}
    DesignPoint operator()(DesignPoint point) const noexcept {
        const DesignPoint way = point - middle_;
        return {cosine_ * way.x - sine_ * way.y + middle_.x, way.y * cosine_ + way.x * sine_ + middle_.y};
    }

private:
    double cosine_;
    double sine_;
    DesignPoint middle_;
};

bool moveDesign(VLMDesign& design, DesignPoint vector, VLMError* error) {
    const auto& stitches = std::as_const(design).stitches();
    return replaceStitches(
        design,
        [&](auto& edited) {
            if (!stitches.empty()) edited.appendJumpBefore(stitches[0], vector);
            edited.append(stitches.begin(), stitches.end());
        },
        error);
}

}  // namespace

bool centerDesign(VLMDesign& design, VLMError* error) noexcept {
    return operation(error, [&] {
        for (int i = 0; i < mostCenterings; ++i) {
            const DesignPoint center = design.centerOfDesign();
            if (center == DesignPoint{}) return true;
            if (!moveDesign(design, {-center.x, -center.y}, error)) return false;
        }
        return true;
    });
}

bool moveSelectionByVectorerror(VLMDesign& design, DesignPoint vector, VLMError* error) noexcept {
    return operation(error, [&] {
        const auto& stitches = std::as_const(design).stitches();
        return replaceStitches(
            design, [&](auto& edited) { appendMoved(edited, stitches, vector); }, error);
    });
}

bool rotateSelectionByDegreeserror(VLMDesign& design, std::int32_t degrees, VLMError* error) noexcept {
    return operation(error, [&] {
        const DesignPoint middle = middleOfSelection(design);
        const double radians = static_cast<double>(degrees) * radiansOfDegree;
        return transformSelection(design, Turn(radians, middle), Turn(-radians, middle), error);
    });
}

bool resizeSelectionByPercenterror(VLMDesign& design, float percent, VLMError* error) noexcept {
    return operation(error, [&] {
        const DesignPoint middle = middleOfSelection(design);
        const auto factor = static_cast<double>(percent);
        const auto resized = [&](DesignPoint point) -> DesignPoint {
            return {(point.x - middle.x) * factor + middle.x, (point.y - middle.y) * factor + middle.y};
        };
        const auto original = [&](DesignPoint point) -> DesignPoint {
            return {(point.x - middle.x) / factor + middle.x, (point.y - middle.y) / factor + middle.y};
        };
        return transformSelection(design, resized, original, error);
    });
}

bool flipSelectionerror(VLMDesign& design, std::string_view orientation, VLMError* error) noexcept {
    return operation(error, [&] {
        const DesignPoint middle = middleOfSelection(design);
        const auto flipX = [&](DesignPoint point) -> DesignPoint { return {2 * middle.x - point.x, point.y}; };
        const auto flipY = [&](DesignPoint point) -> DesignPoint { return {point.x, 2 * middle.y - point.y}; };
        if (orientation == "V") return transformSelection(design, flipX, flipX, error);
        if (orientation == "H") return transformSelection(design, flipY, flipY, error);
        return failEdit(EditFailure::invalidOrientation, error);
    });
}

}  // namespace velamo
