#pragma once

#include <string>
#include <utility>

#include "velamo/editing/edit_error.h"
#include "velamo/editing/fail_edit.h"
#include "velamo/editing/optimized_stitches.h"
#include "velamo/model/design.h"

namespace velamo {

/// Whether sewing would go straight into a stitch: then a jump before it lands on a stitch on the spot, which ties the
/// thread.
[[nodiscard]] constexpr bool needsTie(bool isBehindJump, const VLMStitch& next) noexcept {
    return !isBehindJump && !next.isJumpStitch() && !next.isNullStitch();
}

[[nodiscard]] constexpr VLMStitch tieBefore(const VLMStitch& next) noexcept {
    return {0, 0, false, false, next.isSelected()};
}

[[nodiscard]] constexpr VLMStitch jumpAlong(DesignPoint vector) noexcept {
    return {static_cast<float>(vector.x), static_cast<float>(vector.y), true, false};
}

/// A stitch list that is being made anew from front to back. What an edit inserts goes where the new list ends so far,
/// so that no edit shifts the rest of a long list. `Stitches` takes what comes by push_back.
template <class Stitches>
class EditedStitches {
public:
    explicit EditedStitches(Stitches& stitches) : stitches_(stitches) {}

    void append(const VLMStitch& stitch) {
        stitches_.push_back(stitch);
        isBehindJump_ = stitch.isJumpStitch();
    }
    template <class Iterator>
    void append(Iterator first, Iterator end) {
        for (; first != end; ++first) append(*first);
    }
    /// A jump in front of the stitch that is appended next, with its tie, which is selected as that stitch is.
    void appendJumpBefore(const VLMStitch& next, DesignPoint vector) {
        const bool isTied = needsTie(isBehindJump_, next);
        append(jumpAlong(vector));
        if (isTied) append(tieBefore(next));
    }

private:
    Stitches& stitches_;
    bool isBehindJump_ = false;
};

/// Where the needle stands when it has made the stitch.
[[nodiscard]] inline DesignPoint endOf(DesignPoint start, const VLMStitch& stitch) noexcept {
    return {start.x + static_cast<double>(stitch.deltaX()), start.y + static_cast<double>(stitch.deltaY())};
}

[[nodiscard]] inline DesignPoint operator-(DesignPoint one, DesignPoint other) noexcept {
    return {one.x - other.x, one.y - other.y};
}

/// Gives the design the list that `make(edited)` appends, optimised for its type, as every edit ends. Returns false,
/// with error 71, and leaves the design unchanged when it cannot be optimised.
template <class Make>
[[nodiscard]] bool replaceStitches(VLMDesign& design, Make make, VLMError* error) {
    const std::string designType = design.designType().value_or("");
    OptimizedStitches optimized(designType, std::as_const(design).stitches().size());
    EditedStitches edited(optimized);
    make(edited);
    return optimized.replaceStitchesOf(design) || failEdit(EditFailure::movesTooLarge, error);
}

}  // namespace velamo
