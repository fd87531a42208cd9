#pragma once

#include <span>
#include <utility>
#include <vector>

#include "model/design.h"

namespace velamo {

/// A stitch list that is being made anew from front to back. What an edit inserts goes where the new list ends so far,
/// so that no edit shifts the rest of a long list.
class EditedStitches {
public:
    /// Makes room for as many stitches as an edit usually comes to that starts from `count`.
    explicit EditedStitches(std::size_t count) { stitches_.reserve(count + count / 4 + 8); }

    void append(const VLMStitch& stitch) { stitches_.push_back(stitch); }
    void append(std::span<const VLMStitch> stitches) {
        stitches_.insert(stitches_.end(), stitches.begin(), stitches.end());
    }
    /// A jump and nothing else.
    void appendJump(VLMPoint vector) {
        append(VLMStitch(static_cast<float>(vector.x), static_cast<float>(vector.y), true, false));
    }
    /// A jump in front of the stitch that is appended next. Where sewing would go straight into it, the jump lands on a
    /// stitch on the spot, which ties the thread and is selected as the next stitch is.
    void appendJumpBefore(const VLMStitch& next, VLMPoint vector) {
        const bool isBehindJump = !stitches_.empty() && stitches_.back().isJumpStitch();
        appendJump(vector);
        if (!isBehindJump && !next.isJumpStitch() && !next.isNullStitch())
            append(VLMStitch(0, 0, false, false, next.isSelected()));
    }
    [[nodiscard]] const std::vector<VLMStitch>& all() const& noexcept { return stitches_; }
    [[nodiscard]] std::vector<VLMStitch> all() && noexcept { return std::move(stitches_); }

private:
    std::vector<VLMStitch> stitches_;
};

/// Where the needle stands when it has made the stitch.
[[nodiscard]] inline VLMPoint endOf(VLMPoint start, const VLMStitch& stitch) noexcept {
    return {start.x + static_cast<double>(stitch.deltaX()), start.y + static_cast<double>(stitch.deltaY())};
}

[[nodiscard]] inline VLMPoint operator-(VLMPoint one, VLMPoint other) noexcept {
    return {one.x - other.x, one.y - other.y};
}

}  // namespace velamo
