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

/// Keeps lines that were drawn, so that they are drawn faster when they occur again, on the same bitmap or on another.
/// Must be used by one thread at a time.
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

/// A picture of pixels in memory, which may be transparent. Must be used by one thread at a time.
class VELAMO_API Bitmap {
public:
    static constexpr std::int64_t mostPixelsOfSide = 32767;  // what the graphics library takes
    /// A larger picture would need more than a gigabyte, and a small file must not be able to make us ask for that.
    static constexpr std::int64_t mostPixels = std::int64_t{1} << 28U;

    /// Returns whether a bitmap can be that many pixels wide and high: each side is from 1 to mostPixelsOfSide, and the
    /// area is at most mostPixels.
    [[nodiscard]] static bool canBe(std::int64_t width, std::int64_t height) noexcept;
    /// Makes a transparent bitmap. Returns nullopt when canBe() is false or memory runs out.
    [[nodiscard]] static std::optional<Bitmap> make(std::int64_t width, std::int64_t height) noexcept;

    [[nodiscard]] int width() const noexcept { return width_; }
    [[nodiscard]] int height() const noexcept { return height_; }

    /// Lets `painter` draw. The unit is a pixel, y points upward and the origin is the lower left corner. Returns false
    /// when something could not be drawn because memory ran out. Whatever `painter` throws passes through; what was
    /// drawn stays.
    [[nodiscard]] bool paint(const Painter& painter);
    /// The same with a store of lines that were drawn before or will be drawn again. The picture is the same to the
    /// bit.
    [[nodiscard]] bool paint(const Painter& painter, DrawnLines& lines);
    /// Draws another bitmap, scaled into `target`, and leaves everything outside `part` as it is. Both rectangles are
    /// in the coordinates of paint(). Returns false when memory ran out.
    [[nodiscard]] bool drawBitmap(const Bitmap& source, const GraphicsRectangle& target, const GraphicsRectangle& part);
    /// The same for the whole bitmap.
    [[nodiscard]] bool drawBitmap(const Bitmap& source, const GraphicsRectangle& target);
    /// Makes all pixels transparent that `part`, a rectangle in the coordinates of paint(), touches.
    void clear(const GraphicsRectangle& part) noexcept;

    /// The pixels themselves, rows from the top down. From the highest byte to the lowest a pixel holds alpha, red,
    /// green and blue, premultiplied. The bitmap owns them.
    [[nodiscard]] std::span<std::uint32_t> pixels() noexcept {
        return {pixels_.get(), static_cast<std::size_t>(width_) * static_cast<std::size_t>(height_)};
    }
    [[nodiscard]] std::span<const std::uint32_t> pixels() const noexcept {
        return {pixels_.get(), static_cast<std::size_t>(width_) * static_cast<std::size_t>(height_)};
    }
    /// Returns red, green, blue and alpha of each pixel, a byte each, premultiplied, rows from the top down. May throw
    /// std::bad_alloc.
    [[nodiscard]] std::vector<std::uint8_t> rgba() const;
    /// Returns the bytes of a PNG file, or nullopt when memory ran out.
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
