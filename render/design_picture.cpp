#include "render/design_picture.h"

#include <algorithm>
#include <cmath>

#include "platform/vector_picture.h"
#include "render/draw_design.h"

namespace velamo {
namespace {

constexpr double margin = 10;
constexpr double tenthsOfMillimetre = 10;
/// Everything lies in one pixel long before; a graphics library cannot undo much smaller scales.
constexpr double leastScale = 1e-6;

/// Draws the design with so many units of the context for each tenth of a millimetre.
Painter painterOf(const VLMDesign& design, double scale, const DesignLook& look) {
    return [&design, scale, look](GraphicsContext& context) {
        const VLMRect rect = pictureRectOf(design);
        context.scale(scale, scale);
        context.translate(-rect.x, -rect.y);
        drawDesignInRectofContextshow3DshowJumpsshowStructureshowThread(
            design, rect, context, look.show3D, look.showJumps, look.showStructure, look.showThread);
    };
}

}  // namespace

VLMRect pictureRectOf(const VLMDesign& design) noexcept {
    return {design.xMin() - margin, design.yMin() - margin, design.designWidth() + 2 * margin,
            design.designHeight() + 2 * margin};
}

PictureSize pictureSizeOf(const VLMDesign& design, double scale) noexcept {
    const VLMRect rect = pictureRectOf(design);
    return {std::ceil(rect.width * scale), std::ceil(rect.height * scale)};
}

double scaleForLongerSide(const VLMDesign& design, std::int32_t pixels) noexcept {
    const VLMRect rect = pictureRectOf(design);
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

std::optional<std::vector<std::uint8_t>> svgOf(const VLMDesign& design, const DesignLook& look) {
    const VLMRect rect = pictureRectOf(design);
    return svgPicture(rect.width / tenthsOfMillimetre, rect.height / tenthsOfMillimetre,
                      painterOf(design, 1 / tenthsOfMillimetre, look));
}

std::optional<std::vector<std::uint8_t>> pdfOf(const VLMDesign& design, const DesignLook& look) {
    const VLMRect rect = pictureRectOf(design);
    return pdfPicture(rect.width / tenthsOfMillimetre, rect.height / tenthsOfMillimetre,
                      painterOf(design, 1 / tenthsOfMillimetre, look));
}

}  // namespace velamo
