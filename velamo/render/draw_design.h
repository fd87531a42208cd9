#pragma once

#include <cstdint>

#include "velamo/api.h"
#include "velamo/model/design.h"
#include "velamo/platform/graphics/graphics_context.h"

namespace velamo {

/// Draws the stitches as thick lines in the colours of their threads. Lengths are in tenths of a millimetre; the
/// context's transform maps them to the view. Parameters:
///
/// - `rect` is what can be seen; stitches far from it are left out.
/// - `show3D` makes threads look round.
/// - `showJumps` draws dashed lines for jumps and for the first stitch after each jump or colour change; otherwise
///   these are left out.
/// - `showStructure` draws thin lines with a needle point at the end of each.
/// - `showThread` is the index of the thread whose block alone is drawn, or -1 for all.
///
/// Only the stitches in the design's display range are drawn, with the one before and the one after it. Hidden threads
/// are dimmed. While the selection is active everything is dimmed, and a red veil shows what is selected. Drawing ends
/// at the first colour change for which there is no thread. The context is left in the state in which it was. If the
/// context throws, drawing ends and nothing is reported: the context has to remember it.
VELAMO_API void drawDesignInRectofContextshow3DshowJumpsshowStructureshowThread(const VLMDesign& design,
                                                                                const DesignRect& rect,
                                                                                GraphicsContext& context, bool show3D,
                                                                                bool showJumps, bool showStructure,
                                                                                std::int32_t showThread) noexcept;

/// The same with all threads.
VELAMO_API void drawDesignInRectofContextshow3DshowJumpsshowStructure(const VLMDesign& design, const DesignRect& rect,
                                                                      GraphicsContext& context, bool show3D,
                                                                      bool showJumps, bool showStructure) noexcept;

/// The width of the widest line, in tenths of a millimetre: nothing is drawn farther than half of it from a stitch.
inline constexpr double widestStitch = 3.5;

}  // namespace velamo
