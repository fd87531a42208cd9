#include "velamo/platform/graphics/line_stamps.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <iterator>

namespace velamo {
namespace {

constexpr std::int32_t fractions = 256;  // of a pixel, that cairo tells apart
constexpr int longestWay = 128;          // to each side, in pixels; for longer ones there are too many ways
constexpr int widestReach = 32;          // of a line beyond its ends
constexpr int coverSide = 2 * (longestWay + widestReach + 2);
constexpr int coverMiddle = coverSide / 2;
constexpr std::size_t mostStamps = 1U << 17U;
constexpr std::size_t mostBytes = 1U << 25U;
constexpr std::size_t countOfInks = 256;

/// Nearest, as cairo rounds places.
std::int32_t inFractions(double pixels) noexcept {
    return static_cast<std::int32_t>(std::nearbyint(pixels * fractions));
}

/// A pixel's four components, each in the low byte of 16 bits: to mix all at once draws thumbnails in 80 % of the time.
constexpr std::uint64_t lowBytes = 0x00FF00FF00FF00FF;

constexpr std::uint64_t componentsOf(std::uint32_t pixel) noexcept {
    return (pixel | std::uint64_t{pixel} << 24U) & lowBytes;
}

constexpr std::uint32_t pixelOf(std::uint64_t components) noexcept {
    return static_cast<std::uint32_t>(components | components >> 24U);
}

/// Each component times `by` 255ths, rounded as cairo rounds.
constexpr std::uint64_t scaled(std::uint64_t components, std::uint32_t by) noexcept {
    constexpr std::uint64_t halves = 0x007F007F007F007F;
    const std::uint64_t product = components * by + halves;
    return ((product + (product >> 8U & lowBytes)) >> 8U) & lowBytes;
}

/// What cairo makes of a pixel that `cover` 255ths of are covered by another one.
constexpr std::uint32_t mixed(std::uint64_t above, std::uint32_t cover, std::uint32_t below) noexcept {
    return pixelOf(scaled(above, cover) + scaled(componentsOf(below), 255 - cover));
}

/// How far a line may reach beyond its ends, in pixels.
double reachOf(double width, const cairo_matrix_t& matrix) noexcept {
    return width / 2 * std::max(std::abs(matrix.xx) + std::abs(matrix.xy), std::abs(matrix.yx) + std::abs(matrix.yy)) +
           2;
}

std::size_t mixedBits(std::size_t hash, std::uint64_t number) noexcept {
    constexpr std::uint64_t factor = 0x9E3779B97F4A7C15;
    return (std::rotl(hash, 23) ^ number) * factor;
}

}  // namespace

std::size_t LineStamps::ShapeHash::operator()(const Shape& shape) const noexcept {
    const auto pair = [](std::int32_t one, std::int32_t other) {
        return std::uint64_t{static_cast<std::uint32_t>(one)} << 32U | static_cast<std::uint32_t>(other);
    };
    std::size_t hash = mixedBits(0, pair(shape.x, shape.y));
    hash = mixedBits(hash, pair(shape.startX, shape.startY));
    hash = mixedBits(hash, std::bit_cast<std::uint64_t>(shape.width));
    return hash ^ hash >> 32U;
}

void LineStamps::forget() noexcept {
    stamps_.clear();
    rows_.clear();
    covers_.clear();
}

/// Stamps are those of one way to measure.
void LineStamps::takePen(const cairo_matrix_t& matrix) noexcept {
    if (matrix.xx == matrix_.xx && matrix.xy == matrix_.xy && matrix.yx == matrix_.yx && matrix.yy == matrix_.yy)
        return;
    forget();
    matrix_ = {matrix.xx, matrix.yx, matrix.xy, matrix.yy, 0, 0};
}

/// To look for stamps takes its time, too: of places that are no whole numbers of pixels hardly any comes again, and
/// their picture is drawn in 85 % of the time without.
bool LineStamps::isWorthWhile() const noexcept {
    constexpr std::size_t trial = 1U << 14U;
    return doLinesReturn_ || met_ < trial || printed_ > met_ / 4;
}

bool LineStamps::print(const Line& line, const cairo_matrix_t& matrix, const GraphicsColor& color,
                       const PixelRows& target) noexcept {
    if (!isWorthWhile()) return false;
    auto [start, end, width] = line;
    cairo_matrix_transform_point(&matrix, &start.x, &start.y);
    cairo_matrix_transform_point(&matrix, &end.x, &end.y);
    const double reach = reachOf(width, matrix);
    const auto isWithin = [reach](double one, double other, int size) {
        return std::min(one, other) >= reach && std::max(one, other) <= size - reach &&
               std::abs(one - other) <= longestWay;
    };
    if (!(reach <= widestReach && isWithin(start.x, end.x, target.width) && isWithin(start.y, end.y, target.height)))
        return false;
    const std::int32_t x = inFractions(start.x);
    const std::int32_t y = inFractions(start.y);
    const Shape shape{inFractions(end.x) - x, inFractions(end.y) - y, x % fractions, y % fractions, width};
    try {
        takePen(matrix);
        ++met_;
        const Stamp* const stamp = stampOf(shape);
        if (stamp == nullptr) return false;
        const std::optional<std::uint32_t> pixel = pixelOf(color);
        if (!pixel) return false;
        ++printed_;
        press(*stamp, *pixel, x / fractions, y / fractions, target);
        return true;
    } catch (...) {  // without memory cairo does it, or says that it cannot
        forget();
        return false;
    }
}

void LineStamps::press(const Stamp& stamp, std::uint32_t pixel, int column, int row,
                       const PixelRows& target) const noexcept {
    const std::uint64_t components = componentsOf(pixel);
    std::uint32_t* start = target.pixels + std::ptrdiff_t{row + stamp.top} * target.width + column;
    for (std::uint32_t i = 0; i < stamp.rows; ++i, start += target.width) {
        const Row& cut = rows_[stamp.firstRow + i];
        const std::uint8_t* cover = covers_.data() + cut.covers;
        std::uint32_t* out = start + cut.column;
        for (std::uint32_t left = cut.left; left > 0; --left, ++out) *out = mixed(components, *cover++, *out);
        out = std::fill_n(out, cut.whole, pixel);
        for (std::uint32_t left = cut.right; left > 0; --left, ++out) *out = mixed(components, *cover++, *out);
    }
}

/// None before its time, and none when there is no memory for it.
const LineStamps::Stamp* LineStamps::stampOf(const Shape& shape) {
    if (stamps_.size() >= mostStamps || rows_.size() * sizeof(Row) + covers_.size() > mostBytes) forget();
    const auto [found, isNew] = stamps_.try_emplace(shape);
    Stamp& stamp = found->second;
    if (stamp.isMade) return &stamp;
    if (isNew && !doLinesReturn_) return nullptr;
    stamp.isMade = make(stamp, shape);
    return stamp.isMade ? &stamp : nullptr;
}

bool LineStamps::make(Stamp& stamp, const Shape& shape) {
    if (!cairo_) {
        cover_.assign(std::size_t{coverSide} * coverSide, 0);
        surface_.reset(
            cairo_image_surface_create_for_data(cover_.data(), CAIRO_FORMAT_A8, coverSide, coverSide, coverSide));
        cairo_.reset(cairo_create(surface_.get()));
        cairo_set_line_cap(cairo_.get(), CAIRO_LINE_CAP_ROUND);
    }
    const double startX = coverMiddle + static_cast<double>(shape.startX) / fractions;
    const double startY = coverMiddle + static_cast<double>(shape.startY) / fractions;
    const double endX = startX + static_cast<double>(shape.x) / fractions;
    const double endY = startY + static_cast<double>(shape.y) / fractions;
    cairo_identity_matrix(cairo_.get());
    cairo_move_to(cairo_.get(), startX, startY);
    cairo_line_to(cairo_.get(), endX, endY);
    cairo_set_matrix(cairo_.get(), &matrix_);
    cairo_set_line_width(cairo_.get(), shape.width);
    cairo_stroke(cairo_.get());
    cairo_surface_flush(surface_.get());
    if (cairo_status(cairo_.get()) != CAIRO_STATUS_SUCCESS) return false;
    const int reach = static_cast<int>(std::ceil(reachOf(shape.width, matrix_)));
    takeRows(stamp, {static_cast<int>(std::min(startX, endX)) - reach, static_cast<int>(std::min(startY, endY)) - reach,
                     static_cast<int>(std::max(startX, endX)) + reach + 1,
                     static_cast<int>(std::max(startY, endY)) + reach + 1});
    cairo_surface_mark_dirty(surface_.get());
    return true;
}

/// Leaves the surface empty.
void LineStamps::takeRows(Stamp& stamp, const Box& box) {
    stamp.top = box.top - coverMiddle;
    stamp.firstRow = static_cast<std::uint32_t>(rows_.size());
    for (int row = box.top; row < box.bottom; ++row) {
        std::uint8_t* const start = cover_.data() + std::size_t{coverSide} * static_cast<std::size_t>(row);
        takeRow({start + box.left, start + box.right}, box.left - coverMiddle);
        std::fill(start + box.left, start + box.right, std::uint8_t{0});
    }
    stamp.rows = static_cast<std::uint32_t>(rows_.size()) - stamp.firstRow;
}

void LineStamps::takeRow(std::span<const std::uint8_t> cover, int column) {
    const auto isCovered = [](std::uint8_t part) { return part != 0; };
    const auto isWhole = [](std::uint8_t part) { return part == 255; };
    const auto first = std::find_if(cover.begin(), cover.end(), isCovered);
    const auto last = std::find_if(cover.rbegin(), std::make_reverse_iterator(first), isCovered).base();
    const auto whole = std::find_if(first, last, isWhole);
    const auto right = std::find_if_not(whole, last, isWhole);
    rows_.push_back({column + static_cast<std::int32_t>(first - cover.begin()),
                     static_cast<std::uint16_t>(whole - first), static_cast<std::uint16_t>(right - whole),
                     static_cast<std::uint16_t>(last - right), static_cast<std::uint32_t>(covers_.size())});
    covers_.insert(covers_.end(), first, whole);
    covers_.insert(covers_.end(), right, last);
}

/// As cairo sees the colour: what it makes of a pixel in the middle of a wide line.
std::optional<std::uint32_t> LineStamps::pixelOf(const GraphicsColor& color) {
    std::size_t hash = 0;
    for (const double component : {color.red, color.green, color.blue})
        hash = mixedBits(hash, std::bit_cast<std::uint64_t>(component));
    inks_.resize(countOfInks);
    Ink& ink = inks_[hash >> 32U & (countOfInks - 1)];
    if (ink.color == color) return ink.pixel;
    constexpr int side = 8;
    std::array<std::uint32_t, std::size_t{side} * side> pixels{};
    const CairoSurface surface(cairo_image_surface_create_for_data(reinterpret_cast<unsigned char*>(pixels.data()),
                                                                   CAIRO_FORMAT_ARGB32, side, side,
                                                                   side * static_cast<int>(sizeof pixels[0])));
    CairoContext context(surface.get(), side, 1);
    context.setRoundLineCap();
    context.setStrokeColor(color);
    context.setLineWidth(2 * side);
    context.moveTo({0, side / 2.0});
    context.addLineTo({side, side / 2.0});
    context.strokePath();
    cairo_surface_flush(surface.get());
    if (!context.isSound()) return std::nullopt;
    ink = {color, pixels[pixels.size() / 2 + side / 2]};
    return ink.pixel;
}

}  // namespace velamo
