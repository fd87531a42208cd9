#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "velamo/api.h"
#include "velamo/platform/graphics/graphics_context.h"
#include "velamo/platform/graphics/painter.h"

namespace velamo {

class LineStamps;

/// Lines that were drawn and are kept, so that they are drawn quickly (see LineStamps) when they come again, be it on
/// another bitmap.
class VELAMO_API DrawnLines {
public:
    /// May throw std::bad_alloc.
    DrawnLines();
    ~DrawnLines();
    DrawnLines(const DrawnLines&) = delete;
    DrawnLines& operator=(const DrawnLines&) = delete;

private:
    friend class Bitmap;
    std::unique_ptr<LineStamps> stamps_;
};

/// A picture of pixels in memory, which may be transparent.
class VELAMO_API Bitmap {
public:
    static constexpr std::int64_t mostPixelsOfSide = 32767;  // what the graphics library takes
    /// More pixels would need more than a gigabyte; a small file must not be able to ask for that.
    static constexpr std::int64_t mostPixels = std::int64_t{1} << 28U;

    /// Whether a bitmap can be so many pixels wide and high.
    [[nodiscard]] static bool canBe(std::int64_t width, std::int64_t height) noexcept;
    /// A transparent bitmap. Nothing when a side has no or too many pixels, or when there is no memory for it.
    [[nodiscard]] static std::optional<Bitmap> make(std::int64_t width, std::int64_t height) noexcept;

    [[nodiscard]] int width() const noexcept { return width_; }
    [[nodiscard]] int height() const noexcept { return height_; }

    /// Lets `painter` draw; the unit is a pixel, the origin the lower left corner. False when something could not be
    /// drawn because memory ran out.
    [[nodiscard]] bool paint(const Painter& painter);
    /// The same, to the bit, with lines that were drawn before or will be drawn again.
    [[nodiscard]] bool paint(const Painter& painter, DrawnLines& lines);
    /// Draws another bitmap, scaled into `target`; what lies outside `part` is left as it is. Both are rectangles as in
    /// paint(). False when memory ran out.
    [[nodiscard]] bool drawBitmap(const Bitmap& source, const GraphicsRectangle& target, const GraphicsRectangle& part);
    /// The same of the whole bitmap.
    [[nodiscard]] bool drawBitmap(const Bitmap& source, const GraphicsRectangle& target);
    /// Makes all pixels transparent that `part`, a rectangle as in paint(), touches.
    void clear(const GraphicsRectangle& part) noexcept;

    /// The pixels themselves: alpha, red, green and blue from the highest byte down, premultiplied; rows from the top
    /// down.
    [[nodiscard]] std::span<std::uint32_t> pixels() noexcept {
        return {pixels_.get(), static_cast<std::size_t>(width_) * static_cast<std::size_t>(height_)};
    }
    [[nodiscard]] std::span<const std::uint32_t> pixels() const noexcept {
        return {pixels_.get(), static_cast<std::size_t>(width_) * static_cast<std::size_t>(height_)};
    }
    /// Red, green, blue and alpha of each pixel, premultiplied, rows from the top down.
    [[nodiscard]] std::vector<std::uint8_t> rgba() const;
    /// A PNG file. Nothing when memory ran out.
    [[nodiscard]] std::optional<std::vector<std::uint8_t>> png() const;

private:
    struct Free {
        void operator()(std::uint32_t* pixels) const noexcept;
    };
    using Pixels = std::unique_ptr<std::uint32_t[], Free>;
    Bitmap(int width, int height, Pixels pixels) noexcept
        : width_(width), height_(height), pixels_(std::move(pixels)) {}

    [[nodiscard]] bool paint(const Painter& painter, LineStamps& stamps);

    int width_;
    int height_;
    Pixels pixels_;
};

}  // namespace velamo
