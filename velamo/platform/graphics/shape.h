#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "velamo/platform/graphics/graphics_context.h"

namespace velamo {

/// Lines and curves, in millimetres. A move and a line take one point each, a curve takes its two handles and its end,
/// and closing takes none.
struct ShapePath {
    enum class Step : std::uint8_t { move, line, curve, close };
    std::vector<Step> steps;
    std::vector<GraphicsPoint> points;

    void clear() noexcept {
        steps.clear();
        points.clear();
    }
};

/// What a shape is drawn with; lengths in millimetres.
struct ShapeInk {
    enum class Kind : std::uint8_t { stroke, fill, gradient };
    Kind kind = Kind::fill;
    bool hasRoundCaps = false;
    GraphicsColor color;  // of strokes and fills
    double width = 0;     // of strokes
    double dashOn = 0;    // of strokes: none is dashed where both are 0
    double dashOff = 0;
    std::vector<GradientStop> stops;  // of gradients
    double gradientLength = 0;
    friend bool operator==(const ShapeInk&, const ShapeInk&) = default;

    [[nodiscard]] bool isDashed() const noexcept { return dashOn + dashOff > 0; }
};

/// What shapes are drawn in; nothing is drawn outside of all the paths from here to the outermost.
struct ShapeClip {
    ShapePath path;
    std::shared_ptr<const ShapeClip> outer;
};

struct Shape {
    ShapeInk ink;
    ShapePath path;
    std::shared_ptr<const ShapeClip> clip;
    double dashPhase = 0;
    // Of a gradient.
    GraphicsPoint gradientStart;
    GraphicsPoint gradientEnd;
};

/// Takes the shapes of a picture in their order. The shape is the caller's and changes after the call.
class ShapeTaker {
public:
    virtual ~ShapeTaker() = default;
    virtual void take(const Shape& shape) = 0;

protected:
    ShapeTaker() = default;
    ShapeTaker(const ShapeTaker&) = default;
    ShapeTaker& operator=(const ShapeTaker&) = default;
};

}  // namespace velamo
