#include "velamo/render/design_picture.h"

#include <algorithm>
#include <cmath>

#include "velamo/platform/graphics/vector_picture.h"
#include "velamo/render/draw_design.h"

namespace velamo {
namespace {

constexpr double margin = 10;
constexpr double tenthsOfMillimetre = 10;
/// Everything lies in one pixel long before; a graphics library cannot undo much smaller scales.
constexpr double leastScale = 1e-6;

/// Draws the design with so many units of the context for each tenth of a millimetre.
Painter painterOf(const VLMDesign& design, double scale, const DesignLook& look) {
    return [&design, scale, look](GraphicsContext& context) {
        const DesignRect rect = pictureRectOf(design);
        context.scale(scale, scale);
        context.translate(-rect.x, -rect.y);
        drawDesignInRectofContextshow3DshowJumpsshowStructureshowThread(
            design, rect, context, look.show3D, look.showJumps, look.showStructure, look.showThread);
    };
}

bool writePicture(bool (*write)(double width, double height, const Painter&, const ByteSink&), const VLMDesign& design,
                  const DesignLook& look, const ByteSink& sink) {
    const DesignRect rect = pictureRectOf(design);
    return write(rect.width / tenthsOfMillimetre, rect.height / tenthsOfMillimetre,
                 painterOf(design, 1 / tenthsOfMillimetre, look), sink);
}

std::optional<std::vector<std::uint8_t>> bytesOf(bool (*write)(const VLMDesign&, const DesignLook&, const ByteSink&),
                                                 const VLMDesign& design, const DesignLook& look) {
    std::vector<std::uint8_t> bytes;
    const auto append = [&bytes](std::span<const std::uint8_t> piece) {
        bytes.insert(bytes.end(), piece.begin(), piece.end());
        return true;
    };
    if (!write(design, look, append)) return std::nullopt;
    return bytes;
}

}  // namespace

DesignRect pictureRectOf(const VLMDesign& design) noexcept {
    return {design.xMin() - margin, design.yMin() - margin, design.designWidth() + 2 * margin,
            design.designHeight() + 2 * margin};
}

PictureSize pictureSizeOf(const VLMDesign& design, double scale) noexcept {
    const DesignRect rect = pictureRectOf(design);
    return {std::ceil(rect.width * scale), std::ceil(rect.height * scale)};
}

double scaleForLongerSide(const VLMDesign& design, std::int32_t pixels) noexcept {
    const DesignRect rect = pictureRectOf(design);
    const double length = std::max(rect.width, rect.height);
    if (!(length > 0)) return 0;
    const double scale = pixels / length;
    return std::ceil(length * scale) > pixels ? std::nextafter(scale, 0) : scale;  // not a pixel more by rounding
}

std::optional<Bitmap> bitmapOf(const VLMDesign& design, double scale, const DesignLook& look) {
    const auto [width, height] = pictureSizeOf(design, scale);
    if (!(std::min(width, height) >= 1 && std::max(width, height) <= Bitmap::mostPixelsOfSide)) return std::nullopt;
    auto bitmap = Bitmap::make(static_cast<std::int64_t>(width), static_cast<std::int64_t>(height));
    if (!bitmap || !bitmap->paint(painterOf(design, std::max(scale, leastScale), look))) return std::nullopt;
    return bitmap;
}

bool writeSvgOf(const VLMDesign& design, const DesignLook& look, const ByteSink& sink) {
    return writePicture(writeSvgPicture, design, look, sink);
}

bool writePdfOf(const VLMDesign& design, const DesignLook& look, const ByteSink& sink) {
    return writePicture(writePdfPicture, design, look, sink);
}

std::optional<std::vector<std::uint8_t>> svgOf(const VLMDesign& design, const DesignLook& look) {
    return bytesOf(writeSvgOf, design, look);
}

std::optional<std::vector<std::uint8_t>> pdfOf(const VLMDesign& design, const DesignLook& look) {
    return bytesOf(writePdfOf, design, look);
}

}  // namespace velamo
