#include "velamo/platform/graphics/shape_context.h"

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <numbers>
#include <utility>

#include "velamo/platform/graphics/visible_line.h"

namespace velamo {
namespace {

using Step = ShapePath::Step;

/// Programs that show vectors count in single precision; nothing that can be seen lies farther away.
constexpr double farthestInMillimetres = 1 << 20;
constexpr double millimetresOfInch = 25.4;
constexpr double hairlinesOfInch = 600;  // a pixel of a common printer, and finer than a stitch's own line
/// Gradients of a thread differ by what single precision makes of their directions: they have one ink nevertheless.
constexpr double exactLength = 1e-5;
constexpr double quarterTurn = std::numbers::pi / 2;

bool canHold(GraphicsPoint point) noexcept {
    return std::abs(point.x) <= farthestInMillimetres && std::abs(point.y) <= farthestInMillimetres;
}

double component(double value) noexcept {
    return std::isnan(value) ? 0 : std::clamp(value, 0.0, 1.0);
}

GraphicsColor shownColor(const GraphicsColor& color) noexcept {
    return {component(color.red), component(color.green), component(color.blue), component(color.alpha)};
}

/// Nothing lies in an empty path.
bool isNothingIn(const std::shared_ptr<const ShapeClip>& clip) noexcept {
    for (const ShapeClip* one = clip.get(); one != nullptr; one = one->outer.get())
        if (one->path.steps.empty()) return true;
    return false;
}

/// How far an arc goes, in radians, counter-clockwise being positive; ends that lie behind each other in its direction
/// are turned on by whole turns.
double sweepOf(double startAngle, double endAngle, bool isClockwise) noexcept {
    constexpr double fullTurn = 2 * std::numbers::pi;
    const double sweep = isClockwise ? startAngle - endAngle : endAngle - startAngle;
    const double forward = sweep < 0 ? sweep + fullTurn * std::ceil(-sweep / fullTurn) : sweep;
    const double once = std::min(forward, fullTurn);
    return isClockwise ? -once : once;
}

}  // namespace

ShapeContext::ShapeContext(double widthInMillimetres, double heightInMillimetres, YAxis shapesHave, ShapeTaker& taker)
    : page_{0, 0, widthInMillimetres, heightInMillimetres}, taker_(taker) {
    if (shapesHave == YAxis::up) return;
    state_.scale.y = -1;
    state_.origin.y = heightInMillimetres;
}

/// Whoever draws may keep the exception to itself.
template <class Body>
void ShapeContext::attempt(Body&& body) {
    try {
        std::forward<Body>(body)();
    } catch (...) {
        isSound_ = false;
        throw;
    }
}

void ShapeContext::saveState() {
    attempt([&] { savedStates_.push_back(state_); });
}

void ShapeContext::restoreState() {
    if (savedStates_.empty()) return;
    state_ = std::move(savedStates_.back());
    savedStates_.pop_back();
}

void ShapeContext::translate(double x, double y) {
    state_.origin = onPage({x, y});
}

void ShapeContext::scale(double x, double y) {
    state_.scale = {state_.scale.x * x, state_.scale.y * y};
}

GraphicsPoint ShapeContext::onPage(GraphicsPoint point) const noexcept {
    return {state_.origin.x + point.x * state_.scale.x, state_.origin.y + point.y * state_.scale.y};
}

double ShapeContext::meanScale() const noexcept {
    return std::sqrt(std::abs(state_.scale.x * state_.scale.y));
}

double ShapeContext::widthInUse() const noexcept {
    return state_.lineWidth > 0 ? state_.lineWidth * meanScale() : millimetresOfInch / hairlinesOfInch;
}

void ShapeContext::addStep(Step step, std::initializer_list<GraphicsPoint> points) {
    attempt([&] {
        shape_.path.steps.push_back(step);
        shape_.path.points.insert(shape_.path.points.end(), points);
        isPathLost_ = isPathLost_ || !std::all_of(points.begin(), points.end(), canHold);
    });
}

void ShapeContext::moveTo(GraphicsPoint point) {
    pathKind_ = pathKind_ == PathKind::empty ? PathKind::point : PathKind::other;
    addStep(Step::move, {onPage(point)});
}

void ShapeContext::addLineTo(GraphicsPoint point) {
    pathKind_ = pathKind_ == PathKind::point ? PathKind::line : PathKind::other;
    addStep(shape_.path.steps.empty() ? Step::move : Step::line, {onPage(point)});
}

/// A curve follows a quarter of a circle to the 4,000th part of its radius. What is a hair more counts as one, too.
void ShapeContext::addCurves(GraphicsPoint center, double radius, double startAngle, double sweep) {
    constexpr double hair = 0.01;
    const auto count = static_cast<int>(std::max(1.0, std::ceil(std::abs(sweep) / quarterTurn - hair)));
    const double part = sweep / count;
    const double handle = 4.0 / 3 * std::tan(part / 4) * radius;
    GraphicsPoint along{std::cos(startAngle), std::sin(startAngle)};
    for (int i = 1; i <= count; ++i) {
        const GraphicsPoint next{std::cos(startAngle + i * part), std::sin(startAngle + i * part)};
        addStep(
            Step::curve,
            {onPage({center.x + radius * along.x - handle * along.y, center.y + radius * along.y + handle * along.x}),
             onPage({center.x + radius * next.x + handle * next.y, center.y + radius * next.y - handle * next.x}),
             onPage({center.x + radius * next.x, center.y + radius * next.y})});
        along = next;
    }
}

void ShapeContext::addArc(GraphicsPoint center, double radius, double startAngle, double endAngle, bool isClockwise) {
    if (!std::isfinite(startAngle) || !std::isfinite(endAngle)) {
        isPathLost_ = true;
        return;
    }
    addLineTo({center.x + radius * std::cos(startAngle), center.y + radius * std::sin(startAngle)});
    addCurves(center, radius, startAngle, sweepOf(startAngle, endAngle, isClockwise));
    pathKind_ = PathKind::other;
}

void ShapeContext::addRectangle(const GraphicsRectangle& rectangle) {
    const auto [x, y, width, height] = rectangle;
    addStep(Step::move, {onPage({x, y})});
    addStep(Step::line, {onPage({x + width, y})});
    addStep(Step::line, {onPage({x + width, y + height})});
    addStep(Step::line, {onPage({x, y + height})});
    addStep(Step::close, {});
    pathKind_ = PathKind::other;
}

void ShapeContext::forgetPath() noexcept {
    shape_.path.clear();
    pathKind_ = PathKind::empty;
    isPathLost_ = false;
    dashStart_ = 0;
}

/// A dashed line is cut to what can be seen of it, however long it is: each dash costs time where it is shown.
bool ShapeContext::isPathDrawable() {
    if (pathKind_ != PathKind::line || !(isPathLost_ || state_.dash)) return !isPathLost_;
    const double margin = widthInUse();
    const GraphicsRectangle area{page_.x - margin, page_.y - margin, page_.width + 2 * margin,
                                 page_.height + 2 * margin};
    auto& points = shape_.path.points;
    const auto visible = visibleLine(points[0], points[1], area);
    if (!visible) return false;
    points[0] = visible->start;
    points[1] = visible->end;
    dashStart_ = visible->skipped;
    return true;
}

void ShapeContext::passOn(ShapeInk::Kind kind, const GraphicsColor& color) {
    if (shape_.path.steps.empty() || isNothingIn(state_.clip)) return;
    shape_.ink = {};
    shape_.ink.kind = kind;
    shape_.ink.color = shownColor(color);
    shape_.clip = state_.clip;
    shape_.dashPhase = 0;
    if (kind == ShapeInk::Kind::stroke) {
        shape_.ink.width = widthInUse();
        shape_.ink.hasRoundCaps = state_.hasRoundCaps;
        if (state_.dash) {
            shape_.ink.dashOn = state_.dash->on * meanScale();
            shape_.ink.dashOff = state_.dash->off * meanScale();
            shape_.dashPhase =
                std::fmod(state_.dash->phase * meanScale() + dashStart_, shape_.ink.dashOn + shape_.ink.dashOff);
        }
    }
    attempt([&] { taker_.take(shape_); });
}

void ShapeContext::strokePath() {
    if (isPathDrawable()) passOn(ShapeInk::Kind::stroke, state_.strokeColor);
    forgetPath();
}

void ShapeContext::fillPath() {
    if (!isPathLost_) passOn(ShapeInk::Kind::fill, state_.fillColor);
    forgetPath();
}

void ShapeContext::clipToPath() {
    if (isPathLost_) shape_.path.clear();
    attempt([&] { state_.clip = std::make_shared<const ShapeClip>(ShapeClip{shape_.path, state_.clip}); });
    forgetPath();
}

/// The innermost clip, or the page where there is none, is filled with it.
void ShapeContext::drawLinearGradient(std::span<const GradientStop> stops, GraphicsPoint start, GraphicsPoint end) {
    shape_.gradientStart = onPage(start);
    shape_.gradientEnd = onPage(end);
    const double length =
        std::hypot(shape_.gradientEnd.x - shape_.gradientStart.x, shape_.gradientEnd.y - shape_.gradientStart.y);
    if (!canHold(shape_.gradientStart) || !canHold(shape_.gradientEnd) || !(length > 0) || isNothingIn(state_.clip))
        return;
    attempt([&] {
        Shape filled;
        filled.ink.kind = ShapeInk::Kind::gradient;
        filled.ink.gradientLength = std::round(length / exactLength) * exactLength;
        for (const auto& [location, color] : stops) filled.ink.stops.push_back({location, shownColor(color)});
        filled.gradientStart = shape_.gradientStart;
        filled.gradientEnd = shape_.gradientEnd;
        if (state_.clip) {
            filled.path = state_.clip->path;
            filled.clip = state_.clip->outer;
        } else {
            const auto [x, y, width, height] = page_;
            filled.path = {{Step::move, Step::line, Step::line, Step::line, Step::close},
                           {{x, y}, {x + width, y}, {x + width, y + height}, {x, y + height}}};
        }
        taker_.take(filled);
    });
}

}  // namespace velamo
