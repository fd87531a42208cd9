#include "velamo/platform/graphics/shape_grid.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

namespace velamo {
namespace {

/// Stitches from files lie on tenths of a millimetre, and corners of needle points between them. Others are moved by a
/// hundredth of a millimetre at most, the eighth part of a printer's pixel.
constexpr std::array<double, 3> gridSteps{0.1, 0.05, 0.02};
constexpr double inexactness = 1e-4;  // of a step: from single precision

constexpr std::uint64_t startOfHash = 0x9E3779B97F4A7C15U;

std::uint64_t mixed(std::uint64_t hash, std::uint64_t value) noexcept {
    constexpr std::uint64_t factor = 0xFF51AFD7ED558CCDU;
    hash = (hash ^ value) * factor;
    return hash ^ hash >> 32U;
}

std::uint64_t mixed(std::uint64_t hash, double value) noexcept {
    return mixed(hash, std::uint64_t{std::hash<double>()(value)});
}

std::uint64_t mixed(std::uint64_t hash, const GraphicsColor& color) noexcept {
    return mixed(mixed(mixed(mixed(hash, color.red), color.green), color.blue), color.alpha);
}

/// A line without dashes is the same from both ends.
bool isLine(const GridShape& shape, const ShapeInk& ink) noexcept {
    return shape.steps.size() == 2 && ink.kind == ShapeInk::Kind::stroke && !ink.isDashed();
}

std::uint64_t hashOfPoint(const std::int32_t* point) noexcept {
    return mixed(mixed(startOfHash, static_cast<std::uint64_t>(point[0])), static_cast<std::uint64_t>(point[1]));
}

std::uint64_t hashOf(const GridShape& shape, const ShapeInk& ink) noexcept {
    std::uint64_t hash = mixed(startOfHash, std::uint64_t{shape.ink});
    if (isLine(shape, ink)) {
        const std::int32_t* const ends = shape.numbers.data();
        return mixed(hash, hashOfPoint(ends) + hashOfPoint(ends + 2));
    }
    for (const std::int32_t number : shape.numbers) hash = mixed(hash, static_cast<std::uint64_t>(number));
    for (const std::int32_t number : {shape.originX, shape.originY, shape.angle})
        hash = mixed(hash, static_cast<std::uint64_t>(number));
    return hash;
}

bool isReverse(const std::vector<std::int32_t>& one, const std::vector<std::int32_t>& other) noexcept {
    return one[0] == other[2] && one[1] == other[3] && one[2] == other[0] && one[3] == other[1];
}

bool isSame(const GridShape& one, const GridShape& other, const ShapeInk& ink) noexcept {
    if (one.ink != other.ink || one.clip != other.clip || one.steps != other.steps) return false;
    if (isLine(one, ink) && isReverse(one.numbers, other.numbers)) return true;
    return one.numbers == other.numbers && one.dashPhase == other.dashPhase && one.originX == other.originX &&
           one.originY == other.originY && one.angle == other.angle;
}

std::int32_t rounded(double value) noexcept {
    return static_cast<std::int32_t>(std::lround(value));
}

}  // namespace

std::size_t InkTable::Hash::operator()(const ShapeInk& ink) const noexcept {
    std::uint64_t hash = mixed(mixed(mixed(startOfHash, ink.color), ink.width), ink.dashOn);
    hash = mixed(mixed(hash, ink.dashOff), ink.gradientLength);
    for (const auto& [location, color] : ink.stops) hash = mixed(mixed(hash, location), color);
    return hash;
}

std::uint32_t InkTable::numberOf(const ShapeInk& ink) {
    for (const std::uint32_t number : latest_)
        if (number < inks_.size() && *inks_[number] == ink) return number;
    const auto [found, isNew] = numbers_.try_emplace(ink, static_cast<std::uint32_t>(inks_.size()));
    if (isNew) inks_.push_back(&found->first);
    latest_[latestCount_++ % latest_.size()] = found->second;
    return found->second;
}

double ShapeSurvey::step() const noexcept {
    return gridSteps[grid_];
}

void ShapeSurvey::look(const ShapePath& path) noexcept {
    const auto isOnGrid = [this](double place) {
        const double steps = place / step();
        return std::abs(steps - std::round(steps)) <= inexactness;
    };
    for (const auto& [x, y] : path.points)
        while (grid_ + 1 < gridSteps.size() && !(isOnGrid(x) && isOnGrid(y))) ++grid_;
}

void ShapeSurvey::take(const Shape& shape) {
    inks_.numberOf(shape.ink);
    if (shape.ink.kind != ShapeInk::Kind::gradient) look(shape.path);
    if (shape.clip == clip_) return;
    clip_ = shape.clip;
    for (const ShapeClip* clip = clip_.get(); clip != nullptr; clip = clip->outer.get()) look(clip->path);
}

/// A gradient is as wide as a thread: its edge is held to two thousandths of a millimetre.
int ShapeGrid::decimalsOfGradients() const noexcept {
    constexpr double exactly = 0.002;
    return step / 10 <= exactly ? 1 : 2;
}

void ShapeGrid::put(const ShapePath& path, std::vector<std::int32_t>& numbers) const {
    numbers.clear();
    for (const auto& [x, y] : path.points) {
        numbers.push_back(rounded(x / step));
        numbers.push_back(rounded(y / step));
    }
}

/// The path is turned back by the rounded angle and moved back by the rounded origin, so that it stays in its place.
void ShapeGrid::putGradient(const Shape& shape, GridShape& placed) const {
    const double anglesOfRadian = 180 / std::numbers::pi * std::pow(10, decimalsOfAngle);
    const double numbersOfStep = std::pow(10, decimalsOfGradients());
    const auto [startX, startY] = shape.gradientStart;
    placed.angle = rounded(std::atan2(shape.gradientEnd.y - startY, shape.gradientEnd.x - startX) * anglesOfRadian);
    const std::int32_t halfTurn = rounded(std::numbers::pi * anglesOfRadian);
    if (placed.angle == -halfTurn) placed.angle = halfTurn;  // the sign of nothing decided
    placed.originX = rounded(startX / step * numbersOfStep);
    placed.originY = rounded(startY / step * numbersOfStep);
    const double cosine = std::cos(placed.angle / anglesOfRadian);
    const double sine = std::sin(placed.angle / anglesOfRadian);
    placed.numbers.clear();
    for (const auto& point : shape.path.points) {
        const double x = point.x / step * numbersOfStep - placed.originX;
        const double y = point.y / step * numbersOfStep - placed.originY;
        placed.numbers.push_back(rounded(x * cosine + y * sine));
        placed.numbers.push_back(rounded(y * cosine - x * sine));
    }
}

void ShapeGrid::put(const Shape& shape, InkTable& inks, GridShape& placed) const {
    placed.ink = inks.numberOf(shape.ink);
    placed.steps = shape.path.steps;
    placed.clip = shape.clip;
    placed.dashPhase = shape.dashPhase / step;
    placed.originX = placed.originY = placed.angle = 0;
    if (shape.ink.kind == ShapeInk::Kind::gradient)
        putGradient(shape, placed);
    else
        put(shape.path, placed.numbers);
}

ShapeWindow::ShapeWindow(const ShapeGrid& grid, InkTable& inks, Writer write)
    : grid_(grid), inks_(inks), write_(std::move(write)), held_(size_) {}

bool ShapeWindow::isOpaque(const ShapeInk& ink) const noexcept {
    if (ink.kind != ShapeInk::Kind::gradient) return ink.color.alpha == 1;
    return std::all_of(ink.stops.begin(), ink.stops.end(),
                       [](const GradientStop& stop) { return stop.color.alpha == 1; });
}

void ShapeWindow::take(const Shape& shape) {
    if (end_ - begin_ == size_) passOn(begin_++);
    Held& held = held_[end_ % size_];
    grid_.put(shape, inks_, held.shape);
    held.hash = hashOf(held.shape, shape.ink);
    held.isLeftOut = false;
    if (isOpaque(shape.ink)) {
        const auto [found, isNew] = latestOfHash_.try_emplace(held.hash, end_);
        if (!isNew) {
            Held& former = held_[found->second % size_];
            if (isSame(former.shape, held.shape, shape.ink)) former.isLeftOut = true;
            found->second = end_;
        }
    }
    ++end_;
}

void ShapeWindow::passOn(std::uint64_t index) {
    Held& held = held_[index % size_];
    const auto found = latestOfHash_.find(held.hash);
    if (found != latestOfHash_.end() && found->second == index) latestOfHash_.erase(found);
    if (!held.isLeftOut) write_(held.shape);
    held.shape.clip.reset();
}

void ShapeWindow::finish() {
    while (begin_ < end_) passOn(begin_++);
}

}  // namespace velamo
