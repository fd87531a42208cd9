#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "velamo/platform/graphics/deflater.h"
#include "velamo/platform/graphics/shape_grid.h"
#include "velamo/platform/system/byte_sink.h"

namespace velamo {

/// Writes shapes, whose y points up, as a PDF file of one page, without date or name of a program. The unit is the
/// grid's step; the first stop's alpha is that of a whole gradient.
class PdfWriter {
public:
    /// The table, which holds all inks already, and the sink have to live as long. May throw std::bad_alloc.
    PdfWriter(double widthInMillimetres, double heightInMillimetres, const ShapeGrid& grid, const InkTable& inks,
              const ByteSink& sink);

    void write(const GridShape& shape);
    /// Writes the end of the file. Returns false when the sink did not take all of it.
    [[nodiscard]] bool finish();

private:
    enum Object : std::size_t { catalog, pages, page, content, contentLength, resources, objectCount };
    /// What is set, so that only what changes is written.
    struct State {
        std::optional<GraphicsColor> strokeColor;
        std::optional<GraphicsColor> fillColor;
        double width = 1;
        double dashOn = 0;
        double dashOff = 0;
        double dashPhase = 0;
        double alpha = 1;
        bool hasRoundCaps = false;
    };

    void put(std::string_view text);
    void beginObject(Object object);
    void writeObject(Object object, std::string_view body);
    void passContent();
    void changeClip(const std::shared_ptr<const ShapeClip>& clip);
    void openClips(const ShapeClip* clip);
    void take(const ShapeInk& ink, double dashPhase);
    void takeStroke(const ShapeInk& ink, double dashPhase);
    void takeAlpha(double alpha);
    void takeColor(std::optional<GraphicsColor>& current, const GraphicsColor& color, std::string_view command);
    void writeGradient(const GridShape& shape);
    void writeResources();
    void writeShading(const ShapeInk& ink);
    [[nodiscard]] std::string number(double value) const;

    const ShapeGrid grid_;
    const InkTable& inks_;
    const ByteSink& sink_;
    const ByteSink compressedSink_;
    Deflater deflater_;
    bool isSound_ = true;
    std::size_t bytesPut_ = 0;
    std::array<std::size_t, objectCount> places_{};
    std::string text_;  // of the page's content, not yet passed on
    State state_;
    State stateOutside_;  // of all clips
    std::shared_ptr<const ShapeClip> clip_;
    std::size_t clipsOpen_ = 0;
    std::map<double, std::size_t> alphas_;  // and the numbers of the graphics states that set them
};

}  // namespace velamo
