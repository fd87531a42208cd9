#pragma once

#include <sstream>
#include <string>
#include <vector>

#include "velamo/platform/graphics/graphics_context.h"

namespace velamo::test {

/// A context that draws nothing and writes down what it is asked for, an operation a line: "line 3 4".
class RecordingContext final : public GraphicsContext {
public:
    [[nodiscard]] const std::vector<std::string>& operations() const noexcept { return operations_; }
    /// The operations with the name, in order.
    [[nodiscard]] std::vector<std::string> operations(const std::string& name) const {
        std::vector<std::string> found;
        for (const std::string& operation : operations_)
            if (operation.substr(0, operation.find(' ')) == name) found.push_back(operation);
        return found;
    }

    void saveState() override { record("save"); }
    void restoreState() override { record("restore"); }
    void translate(double x, double y) override { record("translate", x, y); }
    void scale(double x, double y) override { record("scale", x, y); }
    void setRoundLineCap() override { record("round-cap"); }
    void setStrokeColor(const GraphicsColor& color) override { record("stroke-color", textOf(color)); }
    void setFillColor(const GraphicsColor& color) override { record("fill-color", textOf(color)); }
    void setLineWidth(double width) override { record("width", width); }
    void setLineDash(double phase, double on, double off) override { record("dash", phase, on, off); }
    void clearLineDash() override { record("no-dash"); }
    void moveTo(GraphicsPoint point) override { record("move", point.x, point.y); }
    void addLineTo(GraphicsPoint point) override { record("line", point.x, point.y); }
    void addArc(GraphicsPoint center, double radius, double startAngle, double endAngle, bool isClockwise) override {
        record("arc", center.x, center.y, radius, startAngle, endAngle, isClockwise ? "cw" : "ccw");
    }
    void addRectangle(const GraphicsRectangle& area) override {
        record("rectangle", area.x, area.y, area.width, area.height);
    }
    void strokePath() override { record("stroke"); }
    void fillPath() override { record("fill"); }
    void clipToPath() override { record("clip"); }
    void drawLinearGradient(std::span<const GradientStop> stops, GraphicsPoint start, GraphicsPoint end) override {
        std::string colors;
        for (const auto& [location, color] : stops)
            colors += (colors.empty() ? "" : " ") + textOf(location) + ":" + textOf(color);
        record("gradient", colors, start.x, start.y, end.x, end.y);
    }

private:
    static std::string textOf(const std::string& text) { return text; }
    static std::string textOf(double number) {
        std::ostringstream text;
        text << number;  // six digits
        return text.str();
    }
    static std::string textOf(const GraphicsColor& color) {
        return textOf(color.red) + "," + textOf(color.green) + "," + textOf(color.blue) + "," + textOf(color.alpha);
    }
    template <class... Values>
    void record(const std::string& name, const Values&... values) {
        std::string operation = name;
        ((operation += " " + textOf(values)), ...);
        operations_.push_back(std::move(operation));
    }

    std::vector<std::string> operations_;
};

}  // namespace velamo::test
