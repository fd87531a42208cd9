#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <unordered_map>
#include <vector>

#include "velamo/platform/graphics/shape.h"

namespace velamo {

/// The inks of a picture, numbered as they come.
class InkTable {
public:
    /// May throw std::bad_alloc for a new one.
    std::uint32_t numberOf(const ShapeInk& ink);
    [[nodiscard]] const ShapeInk& operator[](std::uint32_t number) const { return *inks_[number]; }
    [[nodiscard]] std::size_t size() const noexcept { return inks_.size(); }

private:
    struct Hash {
        std::size_t operator()(const ShapeInk& ink) const noexcept;
    };
    std::unordered_map<ShapeInk, std::uint32_t, Hash> numbers_;
    std::vector<const ShapeInk*> inks_;
    std::array<std::uint32_t, 4> latest_{};  // are asked first: a flat SVG picture is made in 80 % of the time
    std::size_t latestCount_ = 0;
};

/// A picture's inks and the coarsest grid that all its places lie on, so that they are written with few digits.
class ShapeSurvey final : public ShapeTaker {
public:
    void take(const Shape& shape) override;

    [[nodiscard]] InkTable& inks() noexcept { return inks_; }
    /// The grid's step in millimetres. Places of pictures that have no common one are moved by up to half a step.
    [[nodiscard]] double step() const noexcept;

private:
    void look(const ShapePath& path) noexcept;

    InkTable inks_;
    std::size_t grid_ = 0;
    std::shared_ptr<const ShapeClip> clip_;
};

/// A shape whose numbers are whole ones: all places in steps of the grid. A gradient's path has coordinates of its own,
/// in which the gradient goes along the x axis from 0, and which are turned by the angle and moved to the origin; all
/// these have some decimals more.
struct GridShape {
    std::uint32_t ink = 0;
    std::vector<ShapePath::Step> steps;
    std::vector<std::int32_t> numbers;  // x and y of each point
    std::shared_ptr<const ShapeClip> clip;
    double dashPhase = 0;
    std::int32_t originX = 0;
    std::int32_t originY = 0;
    std::int32_t angle = 0;  // from x to y, in degrees and decimals
};

/// A grid that shapes are put onto; the step in millimetres.
struct ShapeGrid {
    static constexpr int decimalsOfAngle = 3;
    double step = 1;
    [[nodiscard]] int decimalsOfGradients() const noexcept;
    void put(const ShapePath& path, std::vector<std::int32_t>& numbers) const;
    /// The ink's number is that in the table.
    void put(const Shape& shape, InkTable& inks, GridShape& placed) const;

private:
    void putGradient(const Shape& shape, GridShape& placed) const;
};

/// Holds the latest shapes back. One that is drawn again exactly, and lets nothing through, is left out the first time:
/// whatever was drawn on it meanwhile is covered. So a thread that goes to and fro on one spot is drawn once.
class ShapeWindow final : public ShapeTaker {
public:
    using Writer = std::function<void(const GridShape&)>;
    /// All of them have to live as long.
    ShapeWindow(const ShapeGrid& grid, InkTable& inks, Writer write);

    void take(const Shape& shape) override;
    /// Passes the last ones on.
    void finish();

private:
    static constexpr std::size_t size_ = 4096;
    struct Held {
        GridShape shape;
        std::uint64_t hash = 0;
        bool isLeftOut = false;
    };
    void passOn(std::uint64_t index);
    [[nodiscard]] bool isOpaque(const ShapeInk& ink) const noexcept;

    const ShapeGrid grid_;
    InkTable& inks_;
    Writer write_;
    std::vector<Held> held_;
    std::uint64_t begin_ = 0;  // the shapes from here up to `end_` are held, each in the place of its rest modulo size
    std::uint64_t end_ = 0;
    std::unordered_map<std::uint64_t, std::uint64_t> latestOfHash_;
};

}  // namespace velamo
