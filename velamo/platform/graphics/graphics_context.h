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

/// A colour for drawing; components below 0 count as 0, those above 1 as 1.
struct VELAMO_API GraphicsColor {
    double red = 0;
    double green = 0;
    double blue = 0;
    double alpha = 1;
    friend bool operator==(const GraphicsColor&, const GraphicsColor&) = default;
};

/// The colour at a place of a gradient, whose start is at 0 and whose end is at 1.
struct VELAMO_API GradientStop {
    double location = 0;
    GraphicsColor color;
    friend bool operator==(const GradientStop&, const GradientStop&) = default;
};

/// What shapes are drawn into. The y axis points upward; angles are in radians and grow counter-clockwise from the x
/// axis. A path begins with moveTo or addRectangle and is used up by strokePath, fillPath or clipToPath. A path that
/// leads where the surface cannot follow (with coordinates that are huge or not finite) is not drawn; of a single line
/// the visible part is drawn. Every operation may throw std::bad_alloc.
class VELAMO_API GraphicsContext {
public:
    virtual ~GraphicsContext() = default;

    /// Saves colours, widths, dash, clip and units; the state that was saved last is restored first.
    virtual void saveState() = 0;
    virtual void restoreState() = 0;

    /// Changes the units of what follows, in addition to earlier changes. Factors are finite and not zero.
    virtual void translate(double x, double y) = 0;
    virtual void scale(double x, double y) = 0;

    virtual void setRoundLineCap() = 0;
    virtual void setStrokeColor(const GraphicsColor& color) = 0;
    virtual void setFillColor(const GraphicsColor& color) = 0;
    /// A width of 0 is the thinnest line that the device shows well: one pixel of a bitmap.
    virtual void setLineWidth(double width) = 0;
    /// Makes lines dashed: drawn for the length `on`, left out for the length `off`, and so on. `phase` is the distance
    /// into this pattern at which a line begins.
    virtual void setLineDash(double phase, double on, double off) = 0;
    virtual void clearLineDash() = 0;

    virtual void moveTo(GraphicsPoint point) = 0;
    virtual void addLineTo(GraphicsPoint point) = 0;
    /// Adds an arc, joined to the path so far by a line.
    virtual void addArc(GraphicsPoint center, double radius, double startAngle, double endAngle, bool isClockwise) = 0;
    virtual void addRectangle(const GraphicsRectangle& rectangle) = 0;
    virtual void strokePath() = 0;
    virtual void fillPath() = 0;
    /// Limits drawing to the inside of the path until an earlier state is restored.
    virtual void clipToPath() = 0;

    /// Fills the clip with colours that change from `start` to `end`. Nothing is drawn beyond the two lines that cross
    /// these points at right angles to the way between them.
    virtual void drawLinearGradient(std::span<const GradientStop> stops, GraphicsPoint start, GraphicsPoint end) = 0;

protected:
    GraphicsContext() = default;
    GraphicsContext(const GraphicsContext&) = default;
    GraphicsContext& operator=(const GraphicsContext&) = default;
};

}  // namespace velamo
