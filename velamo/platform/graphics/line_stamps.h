#pragma once

#include <cairo.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <unordered_map>
#include <vector>

#include "velamo/platform/graphics/cairo_context.h"

namespace velamo {

/// The pixels of a bitmap, rows from the top down.
struct PixelRows {
    std::uint32_t* pixels = nullptr;
    int width = 0;
    int height = 0;
};

/// Lines with round ends as cairo draws them, kept to be printed wherever they come again. To follow a line's outline
/// and to measure how far it covers each pixel takes cairo some hundred times as long as to mix colours by what was
/// measured before, and designs are made of few different lines: a line that is moved by whole pixels covers the next
/// pixels just as far. So the thumbnails of a PES file are drawn in a fifth of the time, and a flat picture of 1800
/// pixels in 40 %. What is printed is to the bit what cairo draws.
class LineStamps {
public:
    /// The stamp of a line is made when it comes again, as long as enough of them do; or as soon as it is met, if it is
    /// known that lines return: the thumbnails of a PES file take 75 % of the time then.
    explicit LineStamps(bool doLinesReturn) noexcept : doLinesReturn_(doLinesReturn) {}

    /// A line in units that `matrix` takes to pixels, y downward.
    struct Line {
        GraphicsPoint start;
        GraphicsPoint end;
        double width = 0;
    };
    /// Draws the line over what is there, in an opaque colour. Returns false and draws nothing when cairo has to do it:
    /// a line that is not known yet, a long one, one that is not wholly within the pixels.
    [[nodiscard]] bool print(const Line& line, const cairo_matrix_t& matrix, const GraphicsColor& color,
                             const PixelRows& target) noexcept;

private:
    /// Places and ways in 256ths of a pixel.
    struct Shape {
        std::int32_t x = 0;  // the way from start to end
        std::int32_t y = 0;
        std::int32_t startX = 0;  // within its pixel
        std::int32_t startY = 0;
        double width = 0;
        friend bool operator==(const Shape&, const Shape&) = default;
    };
    struct ShapeHash {
        [[nodiscard]] std::size_t operator()(const Shape& shape) const noexcept;
    };
    /// What a line covers of a row of pixels: on its left and its right pixels in part, between them whole ones.
    struct Row {
        std::int32_t column = 0;  // of the first pixel, from that of the line's start
        std::uint16_t left = 0;
        std::uint16_t whole = 0;
        std::uint16_t right = 0;
        std::uint32_t covers = 0;  // where their parts begin: those at the left, then those at the right
    };
    struct Stamp {
        bool isMade = false;
        std::int32_t top = 0;  // from the row of the line's start
        std::uint32_t firstRow = 0;
        std::uint32_t rows = 0;
    };

    /// Pixels up to `right` and `bottom`.
    struct Box {
        int left = 0;
        int top = 0;
        int right = 0;
        int bottom = 0;
    };
    struct Ink {
        GraphicsColor color{0, 0, 0, 0};
        std::uint32_t pixel = 0;
    };

    void takePen(const cairo_matrix_t& matrix) noexcept;
    void forget() noexcept;
    [[nodiscard]] bool isWorthWhile() const noexcept;
    [[nodiscard]] const Stamp* stampOf(const Shape& shape);
    [[nodiscard]] bool make(Stamp& stamp, const Shape& shape);
    void takeRows(Stamp& stamp, const Box& box);
    void takeRow(std::span<const std::uint8_t> cover, int column);
    [[nodiscard]] std::optional<std::uint32_t> pixelOf(const GraphicsColor& color);
    void press(const Stamp& stamp, std::uint32_t pixel, int column, int row, const PixelRows& target) const noexcept;

    bool doLinesReturn_;
    std::size_t met_ = 0;  // lines, and how many of them had a stamp
    std::size_t printed_ = 0;
    cairo_matrix_t matrix_{};  // of all stamps, without the way that it moves things
    std::unordered_map<Shape, Stamp, ShapeHash> stamps_;
    std::vector<Row> rows_;
    std::vector<std::uint8_t> covers_;
    // Each at the place that its hash gives it. To ask cairo for the ink of each line would take four times as long.
    std::vector<Ink> inks_;
    std::vector<std::uint8_t> cover_;  // the pixels of the surface, on which stamps are cut
    CairoSurface surface_;
    CairoHandle cairo_;
};

}  // namespace velamo
