#pragma once

#include <cstddef>

#include "velamo/api.h"
#include "velamo/model/design.h"

namespace velamo {

/// What a stitch does to the needle.
struct VELAMO_API NeedleMove {
    std::size_t stitch = 0;  // its index in the design
    std::size_t thread = 0;  // the index of its block's thread, which a design may lack
    DesignPoint start;       // tenths of a millimetre, y upward, from where the design starts
    DesignPoint end;
    bool startsBlock = false;  // a colour change, or the first stitch of all
    /// Whether the move may leave thread on the cloth: it is not a jump, and the stitch before it was neither a jump
    /// nor a colour change (after those the needle only goes down). If the move has a length, it is then a line of
    /// thread.
    bool isSewn = false;
};

/// Walks along a design's stitches from the first one on and tells what each of them does to the needle. A copy
/// continues from the stitch at which it was made.
class VELAMO_API NeedleWalk {
public:
    /// Takes the design's next stitch and returns its move. The caller passes the stitches in order: the design's first
    /// stitch first, then each time the one with the index stitch().
    NeedleMove take(const VLMStitch& stitch) noexcept {
        const bool startsBlock = stitch_ == 0 || stitch.isColorChange();
        if (startsBlock) ++blocks_;
        const DesignPoint end{position_.x + stitch.deltaX(), position_.y + stitch.deltaY()};
        const NeedleMove move{stitch_, blocks_ - 1, position_,
                              end,     startsBlock, isAfterStitch_ && !stitch.isJumpStitch()};
        isAfterStitch_ = !stitch.isJumpStitch() && !stitch.isColorChange();
        position_ = end;
        ++stitch_;
        return move;
    }

    /// The index of the stitch to be taken next.
    [[nodiscard]] std::size_t stitch() const noexcept { return stitch_; }

private:
    std::size_t stitch_ = 0;
    std::size_t blocks_ = 0;  // begun so far
    DesignPoint position_;
    bool isAfterStitch_ = false;
};

}  // namespace velamo
