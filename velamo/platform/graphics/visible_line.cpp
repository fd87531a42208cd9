#include "velamo/platform/graphics/visible_line.h"

#include <algorithm>
#include <cmath>

namespace velamo {
namespace {

/// The ends, as fractions of the way from 0 to `delta`, between which `from + fraction * delta` lies within the limits.
struct Fractions {
    double first = 0;
    double last = 1;
    void narrow(double from, double delta, double low, double high) noexcept {
        if (delta == 0) {
            if (from < low || from > high) last = -1;
            return;
        }
        const double atLow = (low - from) / delta;
        const double atHigh = (high - from) / delta;
        first = std::max(first, std::min(atLow, atHigh));
        last = std::min(last, std::max(atLow, atHigh));
    }
    [[nodiscard]] bool isEmpty() const noexcept { return !(first <= last); }
};

bool isFinite(GraphicsPoint point) noexcept {
    return std::isfinite(point.x) && std::isfinite(point.y);
}

/// Inside the rectangle also where the way was so long that the fraction is inexact.
GraphicsPoint pointAt(double fraction, GraphicsPoint start, GraphicsPoint end, const GraphicsRectangle& area) noexcept {
    const double x = start.x + fraction * (end.x - start.x);
    const double y = start.y + fraction * (end.y - start.y);
    return {std::clamp(x, area.x, area.x + area.width), std::clamp(y, area.y, area.y + area.height)};
}

}  // namespace

std::optional<VisibleLine> visibleLine(GraphicsPoint start, GraphicsPoint end, const GraphicsRectangle& area) noexcept {
    if (!isFinite(start) || !isFinite(end)) return std::nullopt;
    Fractions visible;
    visible.narrow(start.x, end.x - start.x, area.x, area.x + area.width);
    visible.narrow(start.y, end.y - start.y, area.y, area.y + area.height);
    if (visible.isEmpty()) return std::nullopt;
    return VisibleLine{visible.first > 0 ? pointAt(visible.first, start, end, area) : start,
                       visible.last < 1 ? pointAt(visible.last, start, end, area) : end,
                       visible.first * std::hypot(end.x - start.x, end.y - start.y)};
}

}  // namespace velamo
