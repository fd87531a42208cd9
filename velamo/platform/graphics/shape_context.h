#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "velamo/platform/graphics/graphics_context.h"
#include "velamo/platform/graphics/shape.h"

namespace velamo {

/// A page in true size: what is drawn into it goes on as shapes in millimetres. Where scales differ between x and y,
/// lines have the width of their mean.
class ShapeContext final : public GraphicsContext {
public:
    enum class YAxis : std::uint8_t { up, down };

    /// The origin of what is drawn is the lower left corner; shapes have it there, or, where their y points down, in
    /// the upper left corner. `taker` has to live as long.
    ShapeContext(double widthInMillimetres, double heightInMillimetres, YAxis shapesHave, ShapeTaker& taker);

    /// Whether everything asked for has gone on so far; false when memory ran out.
    [[nodiscard]] bool isSound() const noexcept { return isSound_; }

    void saveState() override;
    void restoreState() override;
    void translate(double x, double y) override;
    void scale(double x, double y) override;
    void setRoundLineCap() override { state_.hasRoundCaps = true; }
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
        bool hasRoundCaps = false;
        std::shared_ptr<const ShapeClip> clip;
        GraphicsPoint scale{1, 1};
        GraphicsPoint origin;
    };
    enum class PathKind : std::uint8_t { empty, point, line, other };

    template <class Body>
    void attempt(Body&& body);
    [[nodiscard]] GraphicsPoint onPage(GraphicsPoint point) const noexcept;
    [[nodiscard]] double meanScale() const noexcept;
    [[nodiscard]] double widthInUse() const noexcept;
    [[nodiscard]] bool isPathDrawable();
    void addStep(ShapePath::Step step, std::initializer_list<GraphicsPoint> points);
    void addCurves(GraphicsPoint center, double radius, double startAngle, double sweep);
    void forgetPath() noexcept;
    void passOn(ShapeInk::Kind kind, const GraphicsColor& color);

    GraphicsRectangle page_;
    ShapeTaker& taker_;
    State state_;
    std::vector<State> savedStates_;
    PathKind pathKind_ = PathKind::empty;
    bool isPathLost_ = false;
    bool isSound_ = true;
    double dashStart_ = 0;  // how far behind the line's start the drawn part of it starts
    Shape shape_;           // its path is the one at hand
};

}  // namespace velamo
