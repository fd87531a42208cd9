#include <cstring>
#include <string_view>

#include "fuzz/claims.h"
#include "velamo/platform/graphics/bitmap.h"
#include "velamo/render/design_blocks.h"
#include "velamo/render/design_picture.h"
#include "velamo/render/draw_design.h"
#include "velamo/render/thumbnail.h"

namespace velamo::fuzz {
namespace {

constexpr int side = 64;
constexpr DesignRect rect{0, 0, side, side};

/// Moves as they stand in memory, nine bytes each: two floats, whatever they are, and the flags.
VLMDesign designOf(Input bytes) {
    constexpr std::size_t recordSize = 9;
    VLMDesign design;
    design.threads().push_back(VLMThread::initWithKeyofPalette("", "Undefined"));
    for (; bytes.size() >= recordSize; bytes = bytes.subspan(recordSize)) {
        float deltas[2];
        std::memcpy(deltas, bytes.data(), sizeof deltas);
        const unsigned flags = bytes[recordSize - 1];
        const bool isChange = (flags & 2U) != 0;
        design.stitches().push_back({deltas[0], deltas[1], (flags & 1U) != 0, isChange, (flags & 4U) != 0});
        if (isChange && (flags & 8U) == 0) design.threads().push_back(design.threads()[0].copy());
    }
    design.setDisplayRange({0, design.stitches().size()});
    return design;
}

std::vector<std::uint8_t> painted(const Painter& painter) {
    auto bitmap = Bitmap::make(side, side);
    claim(bitmap && bitmap->paint(painter), "no stitch spoils the drawing");
    return bitmap->rgba();
}

void checkDrawing(const VLMDesign& design, unsigned look) {
    painted([&](GraphicsContext& context) {
        drawDesignInRectofContextshow3DshowJumpsshowStructure(design, rect, context, (look & 1U) != 0, (look & 2U) != 0,
                                                              (look & 4U) != 0);
    });
    const DesignBlocks blocks(design);
    for (std::size_t block = 0; block < std::min<std::size_t>(blocks.size(), 3); ++block) {
        const auto alone =
            painted([&](GraphicsContext& context) { blocks.drawBlockInRectofContext(block, rect, context); });
        const auto asThread = painted([&](GraphicsContext& context) {
            drawDesignInRectofContextshow3DshowJumpsshowStructureshowThread(design, rect, context, false, false, false,
                                                                            static_cast<std::int32_t>(block));
        });
        claim(alone == asThread, "a block is drawn as its thread");
    }
}

void checkThumbnail(VLMDesign& design) {
    design.setXMax(side);
    design.setYMax(side);
    const auto picture = thumbnailOf(design, side);
    claim(!picture || (picture->width() == side && picture->height() == side), "a thumbnail has its design's size");
}

/// Between the quotes of paths stand numbers, and nothing that is none.
bool hasSoundPaths(const std::vector<std::uint8_t>& svg) {
    const std::string_view text(reinterpret_cast<const char*>(svg.data()), svg.size());
    for (std::size_t start = text.find(" d=\""); start != std::string_view::npos; start = text.find(" d=\"", start)) {
        start += 4;
        const std::string_view path = text.substr(start, text.find('"', start) - start);
        if (path.find_first_not_of("mlhvcz -.0123456789") != std::string_view::npos) return false;
    }
    return true;
}

void checkVectors(VLMDesign& design, unsigned look) {
    design.setXMax(side);
    design.setYMax(side);
    const DesignLook shown{(look & 1U) != 0, (look & 2U) != 0, (look & 4U) != 0};
    const auto svg = svgOf(design, shown);
    claim(svg && hasSoundPaths(*svg), "no stitch spoils an SVG picture");
    claim(pdfOf(design, shown).has_value(), "no stitch spoils a PDF picture");
}

}  // namespace
}  // namespace velamo::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    auto design = velamo::fuzz::designOf({data + 1, size - 1});
    design.setSelectionActive((data[0] & 8U) != 0);
    velamo::fuzz::checkDrawing(design, data[0]);
    velamo::fuzz::checkVectors(design, data[0]);
    velamo::fuzz::checkThumbnail(design);
    return 0;
}
