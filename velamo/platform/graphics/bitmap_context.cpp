#include "velamo/platform/graphics/bitmap_context.h"

namespace velamo {

void BitmapContext::saveState() {
    givePath();
    savedStates_.push_back(state_);
    cairo_.saveState();
}

void BitmapContext::restoreState() {
    givePath();
    if (savedStates_.empty()) return;
    state_ = savedStates_.back();
    savedStates_.pop_back();
    cairo_.restoreState();
}

void BitmapContext::translate(double x, double y) {
    givePath();
    cairo_.translate(x, y);
}

void BitmapContext::scale(double x, double y) {
    givePath();
    cairo_.scale(x, y);
}

void BitmapContext::setRoundLineCap() {
    state_.hasRoundCap = true;
    cairo_.setRoundLineCap();
}

void BitmapContext::setStrokeColor(const GraphicsColor& color) {
    state_.strokeColor = color;
    cairo_.setStrokeColor(color);
}

void BitmapContext::setLineWidth(double width) {
    state_.lineWidth = width;
    cairo_.setLineWidth(width);
}

void BitmapContext::setLineDash(double phase, double on, double off) {
    state_.hasDash = true;
    cairo_.setLineDash(phase, on, off);
}

void BitmapContext::clearLineDash() {
    state_.hasDash = false;
    cairo_.clearLineDash();
}

/// Tells cairo of a path that turned out to be more than one line, or that cannot be printed.
void BitmapContext::givePath() {
    if (!start_) return;
    cairo_.moveTo(*start_);
    if (end_) cairo_.addLineTo(*end_);
    start_.reset();
    end_.reset();
    hasPath_ = true;
}

void BitmapContext::moveTo(GraphicsPoint point) {
    givePath();
    if (hasPath_)
        cairo_.moveTo(point);
    else
        start_ = point;
}

void BitmapContext::addLineTo(GraphicsPoint point) {
    if (start_ && !end_) {
        end_ = point;
        return;
    }
    givePath();
    cairo_.addLineTo(point);
    hasPath_ = true;
}

void BitmapContext::addArc(GraphicsPoint center, double radius, double startAngle, double endAngle, bool isClockwise) {
    givePath();
    cairo_.addArc(center, radius, startAngle, endAngle, isClockwise);
    hasPath_ = true;
}

void BitmapContext::addRectangle(const GraphicsRectangle& rectangle) {
    givePath();
    cairo_.addRectangle(rectangle);
    hasPath_ = true;
}

bool BitmapContext::isLinePrinted() noexcept {
    const bool isPrintable = start_ && end_ && state_.hasRoundCap && !state_.hasDash && !state_.isClipped &&
                             state_.lineWidth > 0 && state_.strokeColor.alpha >= 1;
    if (!isPrintable) return false;
    if (!isPrinted_) cairo_surface_flush(surface_);
    const bool isDone = stamps_.print({*start_, *end_, state_.lineWidth}, cairo_.matrix(), state_.strokeColor, target_);
    isPrinted_ = isPrinted_ || isDone;
    return isDone;
}

void BitmapContext::letCairoDraw() noexcept {
    if (isPrinted_) cairo_surface_mark_dirty(surface_);
    isPrinted_ = false;
    hasPath_ = false;
}

void BitmapContext::strokePath() {
    if (isLinePrinted()) {
        start_.reset();
        end_.reset();
        return;
    }
    givePath();
    letCairoDraw();
    cairo_.strokePath();
}

void BitmapContext::fillPath() {
    givePath();
    letCairoDraw();
    cairo_.fillPath();
}

void BitmapContext::clipToPath() {
    givePath();
    state_.isClipped = true;
    hasPath_ = false;
    cairo_.clipToPath();
}

void BitmapContext::drawLinearGradient(std::span<const GradientStop> stops, GraphicsPoint start, GraphicsPoint end) {
    givePath();
    const bool hadPath = hasPath_;
    letCairoDraw();
    hasPath_ = hadPath;
    cairo_.drawLinearGradient(stops, start, end);
}

}  // namespace velamo
