#include "platform/vector_picture.h"

#include <cairo-pdf.h>
#include <cairo-svg.h>

#include <cmath>

#include "platform/cairo_context.h"
#include "platform/cairo_stream.h"

namespace velamo {
namespace {

constexpr double millimetresOfInch = 25.4;
constexpr double pointsOfInch = 72;
constexpr double pointsOfMillimetre = pointsOfInch / millimetresOfInch;
constexpr double hairlinesOfInch = 300;  // a pixel of a common printer

using Bytes = std::optional<std::vector<std::uint8_t>>;

bool isSize(double length) noexcept {
    return std::isfinite(length) && length > 0;
}

/// A surface has `unitsOfMillimetre` of its units in a millimetre.
struct Kind {
    cairo_surface_t* (*create)(cairo_write_func_t write, void* closure, double width, double height);
    double unitsOfMillimetre;
};

cairo_surface_t* createSvg(cairo_write_func_t write, void* closure, double width, double height) {
    cairo_surface_t* const surface = cairo_svg_surface_create_for_stream(write, closure, width, height);
    cairo_svg_surface_set_document_unit(surface, CAIRO_SVG_UNIT_MM);
    return surface;
}

Bytes picture(const Kind& kind, double width, double height, const Painter& painter) {
    if (!isSize(width) || !isSize(height)) return std::nullopt;
    std::vector<std::uint8_t> bytes;
    const double units = kind.unitsOfMillimetre;
    const CairoSurface surface(kind.create(appendBytes, &bytes, width * units, height * units));
    {
        CairoContext context(surface.get(), height * units, units * millimetresOfInch / hairlinesOfInch);
        context.scale(units, units);
        painter(context);
        if (!context.isSound()) return std::nullopt;
    }
    cairo_surface_finish(surface.get());
    if (cairo_surface_status(surface.get()) != CAIRO_STATUS_SUCCESS) return std::nullopt;
    return bytes;
}

}  // namespace

Bytes svgPicture(double widthInMillimetres, double heightInMillimetres, const Painter& painter) {
    return picture({createSvg, 1}, widthInMillimetres, heightInMillimetres, painter);
}

Bytes pdfPicture(double widthInMillimetres, double heightInMillimetres, const Painter& painter) {
    return picture({cairo_pdf_surface_create_for_stream, pointsOfMillimetre}, widthInMillimetres, heightInMillimetres,
                   painter);
}

}  // namespace velamo
