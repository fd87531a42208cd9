#include "velamo/platform/graphics/bitmap.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <utility>

#include "velamo/platform/graphics/bitmap_context.h"
#include "velamo/platform/graphics/cairo_context.h"
#include "velamo/platform/graphics/cairo_stream.h"
#include "velamo/platform/graphics/line_stamps.h"

namespace velamo {
namespace {

bool isSide(std::int64_t pixels) noexcept {
    return pixels > 0 && pixels <= Bitmap::mostPixelsOfSide;
}

/// cairo's view of pixels; it does not write into what is only read.
CairoSurface surfaceOf(std::uint32_t* pixels, int width, int height) noexcept {
    return CairoSurface(cairo_image_surface_create_for_data(reinterpret_cast<unsigned char*>(pixels),
                                                            CAIRO_FORMAT_ARGB32, width, height,
                                                            width * static_cast<int>(sizeof *pixels)));
}

/// A border between pixels, from 0 to their number; 0 for what is no number.
std::size_t borderAt(double place, int count) noexcept {
    if (!(place > 0)) return 0;
    return static_cast<std::size_t>(std::min(place, static_cast<double>(count)));
}

/// The whole pixels that a length from `start` on touches, among `count`.
std::pair<std::size_t, std::size_t> pixelsTouched(double start, double length, int count) noexcept {
    const std::size_t first = borderAt(std::floor(start), count);
    return {first, std::max(first, borderAt(std::ceil(start + length), count))};
}

}  // namespace

DrawnLines::DrawnLines() : stamps_(std::make_unique<LineStamps>(true)) {}

DrawnLines::~DrawnLines() = default;

void Bitmap::Free::operator()(std::uint32_t* pixels) const noexcept {
    std::free(pixels);
}

bool Bitmap::canBe(std::int64_t width, std::int64_t height) noexcept {
    return isSide(width) && isSide(height) && width * height <= mostPixels;
}

std::optional<Bitmap> Bitmap::make(std::int64_t width, std::int64_t height) noexcept {
    if (!canBe(width, height)) return std::nullopt;
    const auto count = static_cast<std::size_t>(width * height);
    Pixels pixels(static_cast<std::uint32_t*>(std::calloc(count, sizeof(std::uint32_t))));
    if (!pixels) return std::nullopt;
    return Bitmap(static_cast<int>(width), static_cast<int>(height), std::move(pixels));
}

bool Bitmap::paint(const Painter& painter) {
    LineStamps stamps(false);
    return paint(painter, stamps);
}

bool Bitmap::paint(const Painter& painter, DrawnLines& lines) {
    return paint(painter, *lines.stamps_);
}

bool Bitmap::paint(const Painter& painter, LineStamps& stamps) {
    const CairoSurface surface = surfaceOf(pixels_.get(), width_, height_);
    BitmapContext context(surface.get(), {pixels_.get(), width_, height_}, stamps);
    painter(context);
    cairo_surface_flush(surface.get());
    return context.isSound();
}

bool Bitmap::drawBitmap(const Bitmap& source, const GraphicsRectangle& target, const GraphicsRectangle& part) {
    const CairoSurface from = surfaceOf(source.pixels_.get(), source.width_, source.height_);
    const CairoSurface to = surfaceOf(pixels_.get(), width_, height_);
    const CairoHandle cairo(cairo_create(to.get()));
    cairo_rectangle(cairo.get(), part.x, height_ - part.y - part.height, part.width, part.height);
    cairo_clip(cairo.get());
    cairo_translate(cairo.get(), target.x, height_ - target.y - target.height);
    cairo_scale(cairo.get(), target.width / source.width_, target.height / source.height_);
    cairo_set_source_surface(cairo.get(), from.get(), 0, 0);
    cairo_paint(cairo.get());
    cairo_surface_flush(to.get());
    return cairo_status(cairo.get()) == CAIRO_STATUS_SUCCESS;
}

bool Bitmap::drawBitmap(const Bitmap& source, const GraphicsRectangle& target) {
    return drawBitmap(source, target, {0, 0, static_cast<double>(width_), static_cast<double>(height_)});
}

void Bitmap::clear(const GraphicsRectangle& part) noexcept {
    const auto [left, right] = pixelsTouched(part.x, part.width, width_);
    const auto [top, bottom] = pixelsTouched(height_ - part.y - part.height, part.height, height_);
    const auto rowLength = static_cast<std::size_t>(width_);
    for (std::size_t row = top; row < bottom; ++row) {
        std::uint32_t* const pixels = pixels_.get() + row * rowLength;
        std::fill(pixels + left, pixels + right, 0U);
    }
}

std::vector<std::uint8_t> Bitmap::rgba() const {
    const std::size_t count = static_cast<std::size_t>(width_) * static_cast<std::size_t>(height_);
    std::vector<std::uint8_t> bytes(count * 4);
    std::uint8_t* byte = bytes.data();
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint32_t pixel = pixels_[i];
        for (const unsigned shift : {16U, 8U, 0U, 24U}) *byte++ = static_cast<std::uint8_t>(pixel >> shift);
    }
    return bytes;
}

std::optional<std::vector<std::uint8_t>> Bitmap::png() const {
    const CairoSurface surface = surfaceOf(pixels_.get(), width_, height_);
    std::vector<std::uint8_t> bytes;
    if (cairo_surface_write_to_png_stream(surface.get(), appendBytes, &bytes) != CAIRO_STATUS_SUCCESS)
        return std::nullopt;
    return bytes;
}

}  // namespace velamo
