#include "velamo/platform/graphics/cairo_context.h"

#include <algorithm>
#include <cmath>

#include "velamo/platform/graphics/visible_line.h"

namespace velamo {
namespace {

/// cairo holds coordinates of the device in 24 bits and 8 more for fractions, and what does not fit wraps round.
constexpr double farthestOnDevice = 1 << 20;

/// How exactly curves are followed; a bitmap's pixel has cairo's own tolerance then.
constexpr double toleranceOfHairline = 0.1;

bool isFinite(GraphicsPoint point) noexcept {
    return std::isfinite(point.x) && std::isfinite(point.y);
}

/// cairo clamps components itself, but not those that are no numbers.
double component(double value) noexcept {
    return std::isnan(value) ? 0 : value;
}

}  // namespace

CairoContext::CairoContext(cairo_surface_t* surface, double height, double hairline)
    : cairo_(cairo_create(surface)), hairline_(hairline) {
    cairo_translate(cairo_.get(), 0, height);
    cairo_scale(cairo_.get(), 1, -1);
    cairo_set_tolerance(cairo_.get(), hairline * toleranceOfHairline);
}

void CairoContext::saveState() {
    savedStates_.push_back(state_);
    cairo_save(cairo_.get());
}

void CairoContext::restoreState() {
    if (savedStates_.empty()) return;
    state_ = savedStates_.back();
    savedStates_.pop_back();
    cairo_restore(cairo_.get());
}

void CairoContext::translate(double x, double y) {
    cairo_translate(cairo_.get(), x, y);
}

void CairoContext::scale(double x, double y) {
    cairo_scale(cairo_.get(), x, y);
}

void CairoContext::setRoundLineCap() {
    cairo_set_line_cap(cairo_.get(), CAIRO_LINE_CAP_ROUND);
}

bool CairoContext::canHold(GraphicsPoint point) const noexcept {
    cairo_user_to_device(cairo_.get(), &point.x, &point.y);
    return std::abs(point.x) <= farthestOnDevice && std::abs(point.y) <= farthestOnDevice;
}

void CairoContext::moveTo(GraphicsPoint point) {
    pathKind_ = pathKind_ == PathKind::empty ? PathKind::point : PathKind::other;
    line_ = {point, point};
    if (canHold(point))
        cairo_move_to(cairo_.get(), point.x, point.y);
    else
        isPathLost_ = true;
}

void CairoContext::addLineTo(GraphicsPoint point) {
    pathKind_ = pathKind_ == PathKind::point ? PathKind::line : PathKind::other;
    line_.end = point;
    if (canHold(point))
        cairo_line_to(cairo_.get(), point.x, point.y);
    else
        isPathLost_ = true;
}

void CairoContext::addArc(GraphicsPoint center, double radius, double startAngle, double endAngle, bool isClockwise) {
    pathKind_ = PathKind::other;
    const bool isDrawable = canHold({center.x - radius, center.y - radius}) &&
                            canHold({center.x + radius, center.y + radius}) && isFinite({startAngle, endAngle});
    const auto add = isClockwise ? cairo_arc_negative : cairo_arc;
    if (isDrawable)
        add(cairo_.get(), center.x, center.y, radius, startAngle, endAngle);
    else
        isPathLost_ = true;
}

void CairoContext::addRectangle(const GraphicsRectangle& rectangle) {
    pathKind_ = PathKind::other;
    if (canHold({rectangle.x, rectangle.y}) && canHold({rectangle.x + rectangle.width, rectangle.y + rectangle.height}))
        cairo_rectangle(cairo_.get(), rectangle.x, rectangle.y, rectangle.width, rectangle.height);
    else
        isPathLost_ = true;
}

void CairoContext::forgetPath() noexcept {
    cairo_new_path(cairo_.get());
    pathKind_ = PathKind::empty;
    isPathLost_ = false;
    dashStart_ = 0;
}

double CairoContext::widthInUse() const noexcept {
    if (state_.lineWidth > 0) return state_.lineWidth;
    cairo_matrix_t matrix;
    cairo_get_matrix(cairo_.get(), &matrix);
    return hairline_ / std::sqrt(std::abs(matrix.xx * matrix.yy - matrix.xy * matrix.yx));
}

GraphicsRectangle CairoContext::visibleArea(double margin) const noexcept {
    double left = 0;
    double bottom = 0;
    double right = 0;
    double top = 0;
    cairo_clip_extents(cairo_.get(), &left, &bottom, &right, &top);
    return {left - margin, bottom - margin, right - left + 2 * margin, top - bottom + 2 * margin};
}

/// False when nothing of the line can be seen.
bool CairoContext::replaceByVisiblePart() {
    const auto visible = visibleLine(line_.start, line_.end, visibleArea(widthInUse()));
    if (!visible) return false;
    forgetPath();
    dashStart_ = visible->skipped;
    moveTo(visible->start);
    addLineTo(visible->end);
    return !isPathLost_;
}

/// A dashed line is cut to what can be seen of it, however long it is: each dash costs time.
bool CairoContext::isPathDrawable() noexcept {
    if (pathKind_ == PathKind::line && (isPathLost_ || state_.dash)) return replaceByVisiblePart();
    return !isPathLost_;
}

void CairoContext::setSource(const GraphicsColor& color) noexcept {
    cairo_set_source_rgba(cairo_.get(), component(color.red), component(color.green), component(color.blue),
                          component(color.alpha));
}

void CairoContext::setDash() noexcept {
    if (!state_.dash) return cairo_set_dash(cairo_.get(), nullptr, 0, 0);
    const auto [phase, on, off] = *state_.dash;
    const double lengths[] = {on, off};
    cairo_set_dash(cairo_.get(), lengths, 2, std::fmod(phase + dashStart_, on + off));
}

void CairoContext::strokePath() {
    if (isPathDrawable()) {
        setSource(state_.strokeColor);
        setDash();
        cairo_set_line_width(cairo_.get(), widthInUse());
        cairo_stroke(cairo_.get());
    }
    forgetPath();
}

void CairoContext::fillPath() {
    if (!isPathLost_) {
        setSource(state_.fillColor);
        cairo_fill(cairo_.get());
    }
    forgetPath();
}

void CairoContext::clipToPath() {
    if (isPathLost_) cairo_new_path(cairo_.get());  // nothing lies in an empty path
    cairo_clip(cairo_.get());
    forgetPath();
}

void CairoContext::takeGradient(std::span<const GradientStop> stops) {
    if (gradient_ && std::equal(stops.begin(), stops.end(), gradientStops_.begin(), gradientStops_.end())) return;
    gradientStops_.assign(stops.begin(), stops.end());
    gradient_.reset(cairo_pattern_create_linear(0, 0, 1, 0));
    for (const auto& [location, color] : stops)
        cairo_pattern_add_color_stop_rgba(gradient_.get(), location, component(color.red), component(color.green),
                                          component(color.blue), component(color.alpha));
    cairo_pattern_set_extend(gradient_.get(), CAIRO_EXTEND_NONE);
}

void CairoContext::drawLinearGradient(std::span<const GradientStop> stops, GraphicsPoint start, GraphicsPoint end) {
    // The pattern's matrix takes the plane to where the gradient goes from (0, 0) to (1, 0).
    const double x = end.x - start.x;
    const double y = end.y - start.y;
    cairo_matrix_t matrix;
    cairo_matrix_init(&matrix, x, y, -y, x, start.x, start.y);
    if (!canHold(start) || !canHold(end) || cairo_matrix_invert(&matrix) != CAIRO_STATUS_SUCCESS) return;
    takeGradient(stops);
    cairo_pattern_set_matrix(gradient_.get(), &matrix);
    cairo_set_source(cairo_.get(), gradient_.get());
    cairo_paint(cairo_.get());
}

}  // namespace velamo
