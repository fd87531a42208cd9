#pragma once

#include <cstddef>
#include <vector>

#include "velamo/model/design.h"
#include "velamo/model/needle_walk.h"
#include "velamo/platform/graphics/graphics_context.h"

namespace velamo {

/// Where the colour blocks of a design start, so that one of them is drawn without a walk through those before it.
/// Looks at the design, which must live and not change as long as this object is used.
class DesignBlocks {
public:
    /// May throw std::bad_alloc.
    explicit DesignBlocks(const VLMDesign& design);

    /// Blocks that have a thread.
    [[nodiscard]] std::size_t size() const noexcept { return blocks_.size(); }
    /// The smallest rectangle round all ends of the block's stitches; ends that are not finite stay outside.
    [[nodiscard]] DesignRect boundsOf(std::size_t block) const;
    /// Draws, flat, without jumps and structure, what the drawing of the design with the thread `block` alone draws.
    void drawBlockInRectofContext(std::size_t block, const DesignRect& rect, GraphicsContext& context) const noexcept;

private:
    struct Block {
        NeedleWalk start;
        DesignPoint least;
        DesignPoint most;
        void include(DesignPoint point) noexcept;
    };
    const VLMDesign& design_;
    std::vector<Block> blocks_;
    std::size_t endStitch_ = 0;  // of the last block
};

}  // namespace velamo
