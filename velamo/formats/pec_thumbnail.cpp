#include "velamo/formats/pec_thumbnail.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

#include "velamo/model/failure.h"
#include "velamo/platform/graphics/bitmap.h"
#include "velamo/render/design_blocks.h"
#include "velamo/render/draw_design.h"

namespace velamo {
namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr int columns = 48;
constexpr int rows = 38;
constexpr std::size_t bytesOfRow = 6;
static_assert(pecThumbnailSize == bytesOfRow * rows && pecThumbnailPixels == std::size_t{columns} * rows);
constexpr int pictureWidth = 42;
constexpr float pictureHeight = 32;
constexpr int firstColumn = 3;  // of the picture
constexpr int lastColumn = 44;
constexpr int firstRow = 3;
constexpr int lastRow = 34;
constexpr int margin = 10;  // round the design, in tenths of a millimetre
constexpr std::uint8_t lightestOfDark = 179;

constexpr std::array<std::uint8_t, bytesOfRow> edgeRow{0xF0, 0xFF, 0xFF, 0xFF, 0xFF, 0x0F};
constexpr std::array<std::uint8_t, bytesOfRow> cornerRow{0x08, 0x00, 0x00, 0x00, 0x00, 0x10};

constexpr std::size_t offsetOf(int row, int column = 0) noexcept {
    return static_cast<std::size_t>(row) * bytesOfRow + static_cast<std::size_t>(column / 8);
}

constexpr void set(PecThumbnail& thumbnail, int row, int column) noexcept {
    thumbnail[offsetOf(row, column)] |= static_cast<std::uint8_t>(1U << static_cast<unsigned>(column % 8));
}

constexpr PecThumbnail frame = [] {
    PecThumbnail thumbnail{};
    for (std::size_t i = 0; i < bytesOfRow; ++i) {
        thumbnail[offsetOf(1) + i] = thumbnail[offsetOf(rows - 2) + i] = edgeRow[i];
        thumbnail[offsetOf(2) + i] = thumbnail[offsetOf(rows - 3) + i] = cornerRow[i];
    }
    for (int row = firstRow; row <= lastRow; ++row) {
        const int inset = row == firstRow || row == lastRow ? 2 : 1;
        set(thumbnail, row, inset);
        set(thumbnail, row, columns - 1 - inset);
    }
    return thumbnail;
}();

using Pixels = std::span<const std::uint8_t, pecThumbnailPixels * 4>;

const std::uint8_t* pixelAt(Pixels rgba, int row, int column) noexcept {
    return rgba.data() + (static_cast<std::size_t>(row) * columns + static_cast<std::size_t>(column)) * 4;
}

bool isTransparent(Pixels rgba, int row, int column) noexcept {
    return pixelAt(rgba, row, column)[3] == 0;
}

bool isDark(Pixels rgba, int row, int column) noexcept {
    const std::uint8_t* const pixel = pixelAt(rgba, row, column);
    return std::max({pixel[0], pixel[1], pixel[2]}) <= lightestOfDark;
}

/// Asked of pixels that are not transparent themselves.
bool isAtOutline(Pixels rgba, int row, int column) noexcept {
    for (int nextRow = row - 1; nextRow <= row + 1; ++nextRow)
        for (int nextColumn = column - 1; nextColumn <= column + 1; ++nextColumn)
            if (isTransparent(rgba, nextRow, nextColumn)) return true;
    return false;
}

void append(const PecThumbnail& thumbnail, Bytes& bytes) {
    for (const std::uint8_t byte : thumbnail) bytes.push_back(byte);
}

/// Where the large picture goes in the small one.
GraphicsRectangle placeOf(const Bitmap& large) noexcept {
    const auto scale = static_cast<float>(static_cast<double>(pictureWidth) / large.width());
    float width = scale * static_cast<float>(large.width());
    float height = scale * static_cast<float>(large.height());
    if (height > pictureHeight) {
        const float factor = pictureHeight / height;
        width *= factor;
        height *= factor;
    }
    return {(columns - width) * 0.5, (rows - height) * 0.5, width, height};
}

/// The whole pixels round a rectangle and what the scaling filter mixes into the next ones.
GraphicsRectangle wholePixelsRound(const GraphicsRectangle& area) noexcept {
    constexpr double reach = 4;
    const double left = std::floor(area.x - reach);
    const double bottom = std::floor(area.y - reach);
    return {left, bottom, std::ceil(area.x + area.width + reach) - left,
            std::ceil(area.y + area.height + reach) - bottom};
}

/// Draws thumbnails of a design over one large bitmap with a pixel for each tenth of a millimetre.
class ThumbnailMaker {
public:
    explicit ThumbnailMaker(const VLMDesign& design, DrawnLines* lines = nullptr)
        : design_(design),
          lines_(lines),
          seen_{design.xMin() - double{margin}, design.yMin() - double{margin},
                double{2 * margin} + design.designWidth(), double{2 * margin} + design.designHeight()},
          large_(Bitmap::make(static_cast<std::int64_t>(seen_.width), static_cast<std::int64_t>(seen_.height))) {}

    /// False when the picture cannot be made.
    [[nodiscard]] bool appendThread(std::int32_t thread, Bytes& bytes) {
        const auto paint = [&](GraphicsContext& context) {
            drawDesignInRectofContextshow3DshowJumpsshowStructureshowThread(design_, seen_, context, false, false,
                                                                            false, thread);
        };
        return appendPicture(paint, {0, 0, seen_.width, seen_.height}, bytes);
    }
    [[nodiscard]] bool appendBlock(const DesignBlocks& blocks, std::size_t block, Bytes& bytes) {
        const auto paint = [&](GraphicsContext& context) { blocks.drawBlockInRectofContext(block, seen_, context); };
        return appendPicture(paint, partOf(blocks.boundsOf(block)), bytes);
    }

private:
    /// What the lines of stitches within the bounds touch, in pixels of the large bitmap.
    [[nodiscard]] GraphicsRectangle partOf(const DesignRect& bounds) const noexcept {
        constexpr double reach = widestStitch / 2 + 1;
        return {bounds.x - seen_.x - reach, bounds.y - seen_.y - reach, bounds.width + 2 * reach,
                bounds.height + 2 * reach};
    }
    /// Leaves the large bitmap transparent; `part` is what the painter draws in.
    [[nodiscard]] bool appendPicture(const Painter& painter, const GraphicsRectangle& part, Bytes& bytes) {
        auto small = Bitmap::make(columns, rows);
        if (!small || !large_) return false;
        const Painter paint = [&](GraphicsContext& context) {
            context.translate(-seen_.x, -seen_.y);
            painter(context);
        };
        const bool isPainted = lines_ == nullptr ? large_->paint(paint) : large_->paint(paint, *lines_);
        const GraphicsRectangle place = placeOf(*large_);
        const double scale = place.width / seen_.width;
        const GraphicsRectangle smallPart{place.x + part.x * scale, place.y + part.y * scale, part.width * scale,
                                          part.height * scale};
        if (!isPainted || !small->drawBitmap(*large_, place, wholePixelsRound(smallPart))) return false;
        large_->clear(part);
        append(pecThumbnailOf(Pixels(small->rgba())), bytes);
        return true;
    }

    const VLMDesign& design_;
    DrawnLines* lines_;
    DesignRect seen_;
    std::optional<Bitmap> large_;
};

/// Without stitches or threads there is nothing to draw, and the bounds mean nothing.
bool isEmpty(const VLMDesign& design) noexcept {
    return design.stitches().empty() || design.threads().empty();
}

bool appendThumbnail(const VLMDesign& design, std::int32_t thread, Bytes& bytes) {
    if (!isEmpty(design)) return ThumbnailMaker(design).appendThread(thread, bytes);
    append(frame, bytes);
    return true;
}

bool appendAllThumbnails(const VLMDesign& design, Bytes& bytes) {
    const std::size_t count = 1 + design.threads().size();
    bytes.reserve(pecThumbnailSize * count);
    if (!isEmpty(design)) {
        DrawnLines lines;  // all are drawn twice
        ThumbnailMaker maker(design, &lines);
        if (!maker.appendThread(-1, bytes)) return false;
        const DesignBlocks blocks(design);
        for (std::size_t block = 0; block < blocks.size(); ++block)
            if (!maker.appendBlock(blocks, block, bytes)) return false;
    }
    while (bytes.size() < pecThumbnailSize * count) append(frame, bytes);  // for threads without stitches
    return true;
}

/// What the body appends, or no bytes when it fails.
template <class Body>
Bytes bytesOf(Body&& body) noexcept {
    Bytes bytes;
    if (!operation(nullptr, [&] { return body(bytes); })) bytes.clear();
    return bytes;
}

}  // namespace

PecThumbnail pecThumbnailOf(Pixels rgba) noexcept {
    PecThumbnail thumbnail = frame;
    for (int row = firstRow; row <= lastRow; ++row)
        for (int column = firstColumn; column <= lastColumn; ++column)
            if (!isTransparent(rgba, row, column) && (isAtOutline(rgba, row, column) || isDark(rgba, row, column)))
                set(thumbnail, row, column);
    return thumbnail;
}

bool hasPecThumbnail(const VLMDesign& design) noexcept {
    constexpr std::int64_t margins = std::int64_t{2} * margin;
    return isEmpty(design) || Bitmap::canBe(design.designWidth() + margins, design.designHeight() + margins);
}

Bytes exportPecBitmapToDataForThread(const VLMDesign& design, std::int32_t thread) noexcept {
    return bytesOf([&](Bytes& bytes) { return appendThumbnail(design, thread, bytes); });
}

Bytes pecThumbnailsOfDesignAndThreads(const VLMDesign& design) noexcept {
    return bytesOf([&](Bytes& bytes) { return appendAllThumbnails(design, bytes); });
}

constexpr PecThumbnails drawnPecThumbnails{hasPecThumbnail, exportPecBitmapToDataForThread,
                                           pecThumbnailsOfDesignAndThreads};

}  // namespace velamo
