#pragma once

#include <string>
#include <vector>

#include "velamo/platform/graphics/shape_grid.h"
#include "velamo/platform/system/byte_sink.h"

namespace velamo {

/// Writes shapes, whose y points down, as an SVG file: an element each, with its path in relative coordinates and a
/// class for its ink. The unit is the grid's step.
class SvgWriter {
public:
    /// The table, which holds all inks already, and the sink have to live as long.
    SvgWriter(double widthInMillimetres, double heightInMillimetres, const ShapeGrid& grid, const InkTable& inks,
              const ByteSink& sink);

    void write(const GridShape& shape);
    /// Writes the end of the file. Returns false when the sink did not take all of it.
    [[nodiscard]] bool finish();

private:
    void writeStart(double widthInMillimetres, double heightInMillimetres);
    void writeRule(const ShapeInk& ink, const std::string& name);
    void writeGradient(const ShapeInk& ink, const std::string& name);
    void writeHeld(std::uint32_t nextInk);
    void writeElement(const GridShape& shape);
    void openClips(const ShapeClip* clip);
    void changeClip(const std::shared_ptr<const ShapeClip>& clip);
    void openGroup(std::uint32_t ink);
    void closeGroup();
    void pass();

    const ShapeGrid grid_;
    const InkTable& inks_;
    const ByteSink& sink_;
    std::vector<std::string> names_;  // of the classes
    std::string text_;                // not yet passed on
    bool isSound_ = true;
    GridShape held_;
    bool isHeld_ = false;
    std::uint32_t groupInk_ = 0;
    bool isGroupOpen_ = false;
    int classesInGroup_ = 0;  // since one of the group's own ink
    std::shared_ptr<const ShapeClip> clip_;
    std::size_t clipsOpen_ = 0;
    std::size_t clipCount_ = 0;
};

}  // namespace velamo
