#pragma once

#include <span>

#include "velamo/api.h"

namespace velamo {

struct VELAMO_API GraphicsPoint {
    double x = 0;
    double y = 0;
    friend bool operator==(const GraphicsPoint&, const GraphicsPoint&) = default;
};

struct VELAMO_API GraphicsRectangle {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;
    friend bool operator==(const GraphicsRectangle&, const GraphicsRectangle&) = default;
};

/// A device's colour; components beyond 0 to 1 are taken for the nearest end.
struct VELAMO_API GraphicsColor {
    double red = 0;
    double green = 0;
    double blue = 0;
    double alpha = 1;
    friend bool operator==(const GraphicsColor&, const GraphicsColor&) = default;
};

/// The colour at a place of a gradient, 0 being its start and 1 its end.
struct VELAMO_API GradientStop {
    double location = 0;
    GraphicsColor color;
    friend bool operator==(const GradientStop&, const GradientStop&) = default;
};

/// What shapes are drawn into. The y axis points up and angles grow counter-clockwise from the x axis, in radians. A
/// path is begun with moveTo or addRectangle and used up by strokePath, fillPath or clipToPath. A path that goes where
/// the surface cannot follow (coordinates that are not finite, or huge) is not drawn; of a single line, the part that
/// can be seen is.
class VELAMO_API GraphicsContext {
public:
    virtual ~GraphicsContext() = default;

    /// Colours, widths, dash, clip and transform; what is saved last is restored first.
    virtual void saveState() = 0;
    virtual void restoreState() = 0;

    /// New units for what follows, on top of those that hold. Factors are finite and not zero.
    virtual void translate(double x, double y) = 0;
    virtual void scale(double x, double y) = 0;

    virtual void setRoundLineCap() = 0;
    virtual void setStrokeColor(const GraphicsColor& color) = 0;
    virtual void setFillColor(const GraphicsColor& color) = 0;
    /// A width of 0 is the thinnest line that the device shows well: one pixel of a bitmap.
    virtual void setLineWidth(double width) = 0;
    /// Lines are drawn for the length `on`, left out for the length `off`, and so on, beginning `phase` into that.
    virtual void setLineDash(double phase, double on, double off) = 0;
    virtual void clearLineDash() = 0;

    virtual void moveTo(GraphicsPoint point) = 0;
    virtual void addLineTo(GraphicsPoint point) = 0;
    /// Joined to the path so far by a line.
    virtual void addArc(GraphicsPoint center, double radius, double startAngle, double endAngle, bool isClockwise) = 0;
    virtual void addRectangle(const GraphicsRectangle& rectangle) = 0;
    virtual void strokePath() = 0;
    virtual void fillPath() = 0;
    /// Nothing is drawn outside the path until an earlier state is restored.
    virtual void clipToPath() = 0;

    /// Fills the clip with colours that change between two lines through the points, at right angles to the way between
    /// them; beyond these lines nothing is drawn.
    virtual void drawLinearGradient(std::span<const GradientStop> stops, GraphicsPoint start, GraphicsPoint end) = 0;

protected:
    GraphicsContext() = default;
    GraphicsContext(const GraphicsContext&) = default;
    GraphicsContext& operator=(const GraphicsContext&) = default;
};

}  // namespace velamo
