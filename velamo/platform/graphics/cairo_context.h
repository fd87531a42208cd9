#pragma once

#include <cairo.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "velamo/platform/graphics/graphics_context.h"

namespace velamo {

struct CairoDeleter {
    void operator()(cairo_t* context) const noexcept { cairo_destroy(context); }
    void operator()(cairo_surface_t* surface) const noexcept { cairo_surface_destroy(surface); }
    void operator()(cairo_pattern_t* pattern) const noexcept { cairo_pattern_destroy(pattern); }
};
using CairoHandle = std::unique_ptr<cairo_t, CairoDeleter>;
using CairoSurface = std::unique_ptr<cairo_surface_t, CairoDeleter>;
using CairoPattern = std::unique_ptr<cairo_pattern_t, CairoDeleter>;

/// Draws into a cairo surface. cairo's y axis points down: it is turned here, once, so that the origin is the surface's
/// lower left corner.
class CairoContext final : public GraphicsContext {
public:
    /// `height` in the surface's units; `hairline` is what a line of width 0 is drawn with, in the same units.
    CairoContext(cairo_surface_t* surface, double height, double hairline);

    /// Whether everything asked for has been drawn so far; false when memory ran out.
    [[nodiscard]] bool isSound() const noexcept { return cairo_status(cairo_.get()) == CAIRO_STATUS_SUCCESS; }

    /// From the units in use to those of the surface.
    [[nodiscard]] cairo_matrix_t matrix() const noexcept {
        cairo_matrix_t matrix;
        cairo_get_matrix(cairo_.get(), &matrix);
        return matrix;
    }

    void saveState() override;
    void restoreState() override;
    void translate(double x, double y) override;
    void scale(double x, double y) override;
    void setRoundLineCap() override;
    void setStrokeColor(const GraphicsColor& color) override { state_.strokeColor = color; }
    void setFillColor(const GraphicsColor& color) override { state_.fillColor = color; }
    void setLineWidth(double width) override { state_.lineWidth = width; }
    void setLineDash(double phase, double on, double off) override { state_.dash = {phase, on, off}; }
    void clearLineDash() override { state_.dash.reset(); }
    void moveTo(GraphicsPoint point) override;
    void addLineTo(GraphicsPoint point) override;
    void addArc(GraphicsPoint center, double radius, double startAngle, double endAngle, bool isClockwise) override;
    void addRectangle(const GraphicsRectangle& rectangle) override;
    void strokePath() override;
    void fillPath() override;
    void clipToPath() override;
    void drawLinearGradient(std::span<const GradientStop> stops, GraphicsPoint start, GraphicsPoint end) override;

private:
    struct Dash {
        double phase = 0;
        double on = 0;
        double off = 0;
    };
    struct State {
        GraphicsColor strokeColor;
        GraphicsColor fillColor;
        double lineWidth = 1;
        std::optional<Dash> dash;
    };
    enum class PathKind : std::uint8_t { empty, point, line, other };
    struct Line {
        GraphicsPoint start;
        GraphicsPoint end;
    };

    [[nodiscard]] bool canHold(GraphicsPoint point) const noexcept;
    [[nodiscard]] double widthInUse() const noexcept;
    [[nodiscard]] GraphicsRectangle visibleArea(double margin) const noexcept;
    [[nodiscard]] bool isPathDrawable() noexcept;
    bool replaceByVisiblePart();
    void setSource(const GraphicsColor& color) noexcept;
    void setDash() noexcept;
    void forgetPath() noexcept;
    void takeGradient(std::span<const GradientStop> stops);

    CairoHandle cairo_;
    double hairline_;
    State state_;
    std::vector<State> savedStates_;
    PathKind pathKind_ = PathKind::empty;
    bool isPathLost_ = false;
    Line line_;             // the path, while its kind is point or line
    double dashStart_ = 0;  // how far behind the line's start the drawn part of it starts
    std::vector<GradientStop> gradientStops_;
    CairoPattern gradient_;  // of the stops above, from (0, 0) to (1, 0)
};

}  // namespace velamo
