#pragma once

#include <cstdint>

#include "velamo/api.h"
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
VELAMO_API void drawDesignInRectofContextshow3DshowJumpsshowStructureshowThread(const VLMDesign& design,
                                                                                const VLMRect& rect,
                                                                                GraphicsContext& context, bool show3D,
                                                                                bool showJumps, bool showStructure,
                                                                                std::int32_t showThread) noexcept;

/// The same with all threads.
VELAMO_API void drawDesignInRectofContextshow3DshowJumpsshowStructure(const VLMDesign& design, const VLMRect& rect,
                                                                      GraphicsContext& context, bool show3D,
                                                                      bool showJumps, bool showStructure) noexcept;

/// The widest line of the drawing: nothing is drawn farther than half of it from a stitch.
inline constexpr double widestStitch = 3.5;

}  // namespace velamo
