#pragma once

#include <cstdint>
#include <vector>

#include "velamo/model/design.h"
#include "velamo/platform/graphics/graphics_context.h"

namespace velamo {

/// Draws the stitches as thick lines in their threads' colours, in tenths of a millimetre: the context's transform maps
/// these to the view. `rect` is what can be seen; stitches far from it are left out. With `show3D` threads look round;
/// `showJumps` dashes jumps, which are else left out, as is the first stitch behind each; `showStructure` draws thin
/// lines with a needle point at the end of each. Only the block of the thread `showThread` is drawn, or all with -1. Of
/// the design's display range, the stitch before it and the one behind it belong to it. Threads that are not shown are
/// dimmed, and so is everything when the selection is active, where a red veil shows what is selected. Nothing is drawn
/// without stitches or threads, and nothing from the first colour change on that has no thread left. The context is
/// left in the state in which it was.
void drawDesignInRectofContextshow3DshowJumpsshowStructureshowThread(const VLMDesign& design, const VLMRect& rect,
                                                                     GraphicsContext& context, bool show3D,
                                                                     bool showJumps, bool showStructure,
                                                                     std::int32_t showThread) noexcept;

/// The same with all threads.
void drawDesignInRectofContextshow3DshowJumpsshowStructure(const VLMDesign& design, const VLMRect& rect,
                                                           GraphicsContext& context, bool show3D, bool showJumps,
                                                           bool showStructure) noexcept;

/// The widest line of the drawing: nothing is drawn farther than half of it from a stitch.
inline constexpr double widestStitch = 3.5;

/// Where the colour blocks of a design start, so that one of them is drawn without a walk through those before it.
/// Looks at the design, which has to stay as it is meanwhile.
class DesignBlocks {
public:
    /// May throw std::bad_alloc.
    explicit DesignBlocks(const VLMDesign& design);

    /// Blocks that have a thread.
    [[nodiscard]] std::size_t size() const noexcept { return blocks_.size(); }
    /// The smallest rectangle round all ends of the block's stitches; ends that are not finite stay outside.
    [[nodiscard]] VLMRect boundsOf(std::size_t block) const;
    /// Draws, flat, without jumps and structure, what the drawing of the design with the thread `block` alone draws.
    void drawBlockInRectofContext(std::size_t block, const VLMRect& rect, GraphicsContext& context) const noexcept;

private:
    struct Block {
        std::size_t firstStitch = 0;
        VLMPoint start;
        bool isAfterStitch = false;  // the stitch before the block was sewn
        VLMPoint least;
        VLMPoint most;
        void include(VLMPoint point) noexcept;
    };
    const VLMDesign& design_;
    std::vector<Block> blocks_;
    std::size_t endStitch_ = 0;  // of the last block
};

}  // namespace velamo
