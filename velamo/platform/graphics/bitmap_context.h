#pragma once

#include <cairo.h>

#include <optional>
#include <vector>

#include "velamo/platform/graphics/cairo_context.h"
#include "velamo/platform/graphics/line_stamps.h"

namespace velamo {

/// Draws into a bitmap what a CairoContext draws into it, to the bit, but prints lines with round ends that come again.
class BitmapContext final : public GraphicsContext {
public:
    /// `surface` is cairo's view of the pixels. All of it stays with the caller, and has to outlive the context.
    BitmapContext(cairo_surface_t* surface, const PixelRows& target, LineStamps& stamps)
        : surface_(surface), target_(target), stamps_(stamps), cairo_(surface, target.height, 1) {}

    /// As that of CairoContext.
    [[nodiscard]] bool isSound() const noexcept { return cairo_.isSound(); }

    void saveState() override;
    void restoreState() override;
    void translate(double x, double y) override;
    void scale(double x, double y) override;
    void setRoundLineCap() override;
    void setStrokeColor(const GraphicsColor& color) override;
    void setFillColor(const GraphicsColor& color) override { cairo_.setFillColor(color); }
    void setLineWidth(double width) override;
    void setLineDash(double phase, double on, double off) override;
    void clearLineDash() override;
    void moveTo(GraphicsPoint point) override;
    void addLineTo(GraphicsPoint point) override;
    void addArc(GraphicsPoint center, double radius, double startAngle, double endAngle, bool isClockwise) override;
    void addRectangle(const GraphicsRectangle& rectangle) override;
    void strokePath() override;
    void fillPath() override;
    void clipToPath() override;
    void drawLinearGradient(std::span<const GradientStop> stops, GraphicsPoint start, GraphicsPoint end) override;

private:
    struct State {
        GraphicsColor strokeColor;
        double lineWidth = 1;
        bool hasRoundCap = false;
        bool hasDash = false;
        bool isClipped = false;
    };
    [[nodiscard]] bool isLinePrinted() noexcept;
    void givePath();
    void letCairoDraw() noexcept;

    cairo_surface_t* surface_;
    PixelRows target_;
    LineStamps& stamps_;
    CairoContext cairo_;
    State state_;
    std::vector<State> savedStates_;
    std::optional<GraphicsPoint> start_;  // of a path that cairo has not been told of
    std::optional<GraphicsPoint> end_;
    bool hasPath_ = false;    // cairo has one
    bool isPrinted_ = false;  // since cairo drew
};

}  // namespace velamo
