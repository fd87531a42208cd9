#include "velamo/platform/graphics/vector_picture.h"

#include "velamo/platform/graphics/pdf_writer.h"
#include "velamo/platform/graphics/shape_context.h"
#include "velamo/platform/graphics/shape_grid.h"
#include "velamo/platform/graphics/svg_writer.h"

namespace velamo {
namespace {

using Bytes = std::optional<std::vector<std::uint8_t>>;
using YAxis = ShapeContext::YAxis;

constexpr double longestSide = 1e9;  // millimetres; of more, numbers could not tell the nanometres

bool isSize(double length) noexcept {
    return length > 0 && length <= longestSide;
}

/// Looks for inks and grid first, as they stand at the file's start, and draws then.
template <class Writer>
bool write(double width, double height, YAxis axis, const Painter& painter, const ByteSink& sink) {
    if (!isSize(width) || !isSize(height)) return false;
    ShapeSurvey survey;
    ShapeContext looker(width, height, axis, survey);
    painter(looker);
    if (!looker.isSound()) return false;
    const ShapeGrid grid{survey.step()};
    Writer writer(width, height, grid, survey.inks(), sink);
    ShapeWindow window(grid, survey.inks(), [&](const GridShape& shape) { writer.write(shape); });
    ShapeContext context(width, height, axis, window);
    painter(context);
    if (!context.isSound()) return false;
    window.finish();
    return writer.finish();
}

Bytes bytesOf(bool (*write)(double, double, const Painter&, const ByteSink&), double width, double height,
              const Painter& painter) {
    std::vector<std::uint8_t> bytes;
    const auto append = [&bytes](std::span<const std::uint8_t> piece) {
        bytes.insert(bytes.end(), piece.begin(), piece.end());
        return true;
    };
    if (!write(width, height, painter, append)) return std::nullopt;
    return bytes;
}

}  // namespace

bool writeSvgPicture(double widthInMillimetres, double heightInMillimetres, const Painter& painter,
                     const ByteSink& sink) {
    return write<SvgWriter>(widthInMillimetres, heightInMillimetres, YAxis::down, painter, sink);
}

bool writePdfPicture(double widthInMillimetres, double heightInMillimetres, const Painter& painter,
                     const ByteSink& sink) {
    return write<PdfWriter>(widthInMillimetres, heightInMillimetres, YAxis::up, painter, sink);
}

Bytes svgPicture(double widthInMillimetres, double heightInMillimetres, const Painter& painter) {
    return bytesOf(writeSvgPicture, widthInMillimetres, heightInMillimetres, painter);
}

Bytes pdfPicture(double widthInMillimetres, double heightInMillimetres, const Painter& painter) {
    return bytesOf(writePdfPicture, widthInMillimetres, heightInMillimetres, painter);
}

}  // namespace velamo
