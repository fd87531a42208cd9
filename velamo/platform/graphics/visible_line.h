#pragma once

#include <optional>

#include "velamo/platform/graphics/graphics_context.h"

namespace velamo {

/// A part of a line, and how far behind the line's start it starts.
struct VisibleLine {
    GraphicsPoint start;
    GraphicsPoint end;
    double skipped = 0;
};

/// What lies within the area of the line from `start` to `end`, however long that is. Returns nullopt when none of it
/// does, or when an end is not finite. Ends within the area stay exactly as they are.
[[nodiscard]] std::optional<VisibleLine> visibleLine(GraphicsPoint start, GraphicsPoint end,
                                                     const GraphicsRectangle& area) noexcept;

}  // namespace velamo
