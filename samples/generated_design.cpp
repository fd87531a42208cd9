#include "samples/generated_design.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <span>
#include <string>
#include <vector>

#include "samples/pen.h"

namespace velamo {
namespace {

using std::numbers::pi;
using Line = std::vector<DesignPoint>;

/// Numbers by chance; unlike the standard library's, the same wherever we are built.
class Dice {
public:
    explicit Dice(std::uint64_t seed) noexcept : state_(seed) {}
    [[nodiscard]] std::uint64_t roll() noexcept {
        state_ += 0x9E3779B97F4A7C15U;
        std::uint64_t bits = state_;
        bits = (bits ^ (bits >> 30U)) * 0xBF58476D1CE4E5B9U;
        bits = (bits ^ (bits >> 27U)) * 0x94D049BB133111EBU;
        return bits ^ (bits >> 31U);
    }
    /// From 0 to `count` - 1.
    [[nodiscard]] std::size_t oneOf(std::size_t count) noexcept { return roll() % count; }
    [[nodiscard]] int between(int least, int most) noexcept {
        return least + static_cast<int>(oneOf(static_cast<std::size_t>(most) + 1 - static_cast<std::size_t>(least)));
    }
    [[nodiscard]] double within(double least, double most) noexcept {
        constexpr double parts = 9007199254740992;  // 2^53
        return least + (most - least) * static_cast<double>(roll() >> 11U) / parts;
    }

private:
    std::uint64_t state_;
};

/// A place of the cloth in which something is sewn: a middle and half a width, in millimetres.
struct Place {
    DesignPoint middle;
    double reach = 0;
};

DesignPoint at(const Place& place, double angle, double radius) {
    return {place.middle.x + place.reach * radius * std::cos(angle),
            place.middle.y + place.reach * radius * std::sin(angle)};
}

constexpr double smallestPart = 2;

Place partOf(const Place& whole, Dice& dice) {
    const double reach = std::max(std::min(smallestPart, whole.reach), whole.reach * dice.within(0.1, 0.7));
    const double room = (whole.reach - reach) / whole.reach;
    const double angle = dice.within(0, 2 * pi);
    return {at(whole, angle, dice.within(0, room)), reach};
}

/// A closed line around the place, with waves.
Line outline(const Place& place, Dice& dice) {
    constexpr int corners = 72;
    std::array<double, 4> waves{};
    std::array<double, 4> phases{};
    for (double& wave : waves) wave = dice.within(0, 0.25);
    for (double& phase : phases) phase = dice.within(0, 2 * pi);
    Line line;
    for (int i = 0; i <= corners; ++i) {
        const double angle = 2 * pi * (i % corners) / corners;
        double radius = 0.6;
        for (std::size_t wave = 0; wave < waves.size(); ++wave)
            radius += waves[wave] * std::sin((static_cast<double>(wave) + 2) * angle + phases[wave]) / 2;
        line.push_back(at(place, angle, radius));
    }
    return line;
}

/// What is drawn by a computer: an ellipse, or a regular polygon.
Line regularShape(const Place& place, Dice& dice) {
    // Round things are sewn from stitch to stitch, and so each in its own pieces.
    const double stitch = dice.within(1.5, 3.5);
    const int around = std::max(12, static_cast<int>(2 * pi * place.reach / stitch));
    const int corners = dice.oneOf(2) == 0 ? around : dice.between(3, 8);
    const double flatness = dice.oneOf(2) == 0 ? 1 : dice.within(0.4, 1);
    const double start = dice.oneOf(2) == 0 ? 0 : dice.within(0, pi);
    Line line;
    for (int i = 0; i <= corners; ++i) {
        const DesignPoint point = at(place, start + 2 * pi * i / corners, 1);
        line.push_back({point.x, place.middle.y + (point.y - place.middle.y) * flatness});
    }
    return line;
}

Line shape(const Place& place, Dice& dice) {
    return dice.oneOf(3) == 0 ? regularShape(place, dice) : outline(place, dice);
}

void sewOutline(Pen& pen, const Place& place, Dice& dice) {
    const Line line = shape(place, dice);
    const double stitch = dice.within(1.5, 3.5);
    for (int round = dice.between(1, 3); round > 0; --round) pen.sewPath(line, stitch);
}

/// The first and the last place where a level line crosses the closed line.
std::pair<double, double> crossings(const Line& line, double level) {
    std::pair<double, double> found{HUGE_VAL, -HUGE_VAL};
    for (std::size_t i = 1; i < line.size(); ++i) {
        const DesignPoint& from = line[i - 1];
        const DesignPoint& to = line[i];
        if ((from.y <= level) == (to.y <= level)) continue;
        const double x = from.x + (to.x - from.x) * (level - from.y) / (to.y - from.y);
        found = {std::min(found.first, x), std::max(found.second, x)};
    }
    return found;
}

DesignPoint turned(const DesignPoint& point, double angle) {
    return {point.x * std::cos(angle) - point.y * std::sin(angle),
            point.x * std::sin(angle) + point.y * std::cos(angle)};
}

/// Rows to and fro between the edges.
void sewFilling(Pen& pen, const Place& place, Dice& dice) {
    const double angle = dice.oneOf(2) == 0 ? 0 : dice.within(0, pi);
    const double spacing = dice.within(0.35, 1.2) * (place.reach > 25 ? 2 : 1);
    const double stitch = dice.within(2.5, 5);
    Line line = shape(place, dice);
    for (DesignPoint& point : line) point = turned(point, -angle);
    const auto [low, high] = std::minmax_element(line.begin(), line.end(), [](auto& a, auto& b) { return a.y < b.y; });
    bool isBack = dice.oneOf(2) == 0;
    bool isFirst = true;
    double level = low->y + spacing / 2;
    while (level < high->y) {
        const auto [left, right] = crossings(line, level);
        if (left <= right) {
            const DesignPoint start = turned({isBack ? right : left, level}, angle);
            if (isFirst)
                pen.jumpTo(start);
            else
                pen.sewTo(start, stitch);
            pen.sewTo(turned({isBack ? left : right, level}, angle), stitch);
            isFirst = false;
        }
        level += spacing;
        isBack = !isBack;
    }
}

/// A bent column of zigzag.
void sewColumn(Pen& pen, const Place& place, Dice& dice) {
    const DesignPoint from = at(place, dice.within(0, 2 * pi), 1);
    const DesignPoint bend = at(place, dice.within(0, 2 * pi), 1.2);
    const DesignPoint to = at(place, dice.within(0, 2 * pi), 1);
    const double width = dice.within(1, 7) / 2;
    const int rows = std::max(4, static_cast<int>(place.reach * dice.within(2, 5)));
    for (int row = 0; row <= rows; ++row) {
        const double part = static_cast<double>(row) / rows;
        const DesignPoint along{2 * (1 - part) * (bend.x - from.x) + 2 * part * (to.x - bend.x),
                                2 * (1 - part) * (bend.y - from.y) + 2 * part * (to.y - bend.y)};
        const double length = std::max(std::hypot(along.x, along.y), 0.1);
        const double side = row % 2 == 0 ? width : -width;
        const double rest = 1 - part;
        const DesignPoint point{
            rest * rest * from.x + 2 * rest * part * bend.x + part * part * to.x - along.y / length * side,
            rest * rest * from.y + 2 * rest * part * bend.y + part * part * to.y + along.x / length * side};
        if (row == 0)
            pen.jumpTo(point);
        else
            pen.sewTo(point, 12);
    }
}

void sewPetals(Pen& pen, const Place& place, Dice& dice) {
    const int petals = dice.between(4, 12);
    const int rows = dice.between(6, 24);
    const double inner = dice.within(0.1, 0.5);
    const double width = dice.within(0.5, 1.2) * pi / petals;
    const double start = dice.within(0, pi);
    pen.jumpTo(at(place, start, inner));
    for (int petal = 0; petal < petals; ++petal)
        for (int row = 0; row < rows; ++row) {
            const double part = (row + 1.0) / (rows + 1);
            const double half = width * std::sin(pi * part);
            const double radius = inner + (1 - inner) * part;
            pen.sewTo(at(place, start + 2 * pi * petal / petals - half, radius), 7);
            pen.sewTo(at(place, start + 2 * pi * petal / petals + half, radius), 7);
        }
}

/// Letters as strokes from node to node of a grid of three by three, numbered by rows from below.
constexpr std::array<const char*, 16> letters{"0674385", "6012",     "60828",   "034567", "80",     "6785210",
                                              "0682",    "6412",     "8634520", "7148",   "062860", "2680",
                                              "1736",    "58630125", "4617",    "86420"};

void sewLettering(Pen& pen, const Place& place, Dice& dice) {
    constexpr double smallestLetter = 4;
    const int count = std::clamp(static_cast<int>(2 * place.reach / smallestLetter), 1, dice.between(1, 9));
    const double size = 2 * place.reach / count;
    const double stitch = dice.within(1.2, 3);
    const double width = dice.oneOf(2) == 0 ? 0 : size * dice.within(0.08, 0.15);
    for (int i = 0; i < count; ++i) {
        const std::string letter = letters[dice.oneOf(letters.size())];
        const DesignPoint corner{place.middle.x - place.reach + size * i, place.middle.y - size / 2};
        Line line;
        for (const char node : letter) {
            const int column = (node - '0') % 3;
            const int row = (node - '0') / 3;
            line.push_back({corner.x + size * 0.4 * column, corner.y + size * 0.5 * row});
        }
        if (width == 0) {
            pen.sewPath(line, stitch);
            continue;
        }
        for (std::size_t node = 1; node < line.size(); ++node) pen.satin(line[node - 1], line[node], width);
    }
}

constexpr std::array<void (*)(Pen&, const Place&, Dice&), 8> parts{sewFilling, sewFilling, sewOutline, sewOutline,
                                                                   sewColumn,  sewColumn,  sewPetals,  sewLettering};

void sewPart(Pen& pen, const Place& place, Dice& dice) {
    parts[dice.oneOf(parts.size())](pen, place, dice);
}

constexpr std::array<const char*, 6> threads{"800", "507", "206", "406", "612", "058"};

constexpr std::size_t frames = 25;
constexpr std::uint64_t framedSeeds = 10;  // one in so many

/// Something large that many designs have in common, and where the rest goes.
Place sewFrame(Pen& pen, std::uint64_t frame) {
    Dice dice(frame);
    const Place place{{}, dice.within(20, 70)};
    if (dice.oneOf(2) == 0) {
        const Line line = regularShape(place, dice);
        pen.sewPath(line, dice.within(1.5, 3.5));
    } else {
        sewPetals(pen, place, dice);
    }
    return {{}, place.reach * 0.6};
}

/// A few stitches around a place.
void sewMark(Pen& pen, const Place& place, Dice& dice) {
    const double angle = dice.within(0, 2 * pi);
    const Place mark{at(place, angle, dice.within(0.2, 1)), 3};
    const int stitches = dice.between(3, 12);
    for (int stitch = 0; stitch <= stitches; ++stitch) {
        const double direction = dice.within(0, 2 * pi);
        const DesignPoint point = at(mark, direction, dice.within(0.3, 1));
        if (stitch == 0)
            pen.jumpTo(point);
        else
            pen.sewTo(point, 7);
    }
}

void sewBlocks(Pen& pen, const Place& place, Dice& dice) {
    const int blocks = dice.oneOf(3) == 0 ? 1 : dice.between(2, 6);
    for (int block = 0; block < blocks; ++block) {
        if (block > 0) pen.changeThread(threads[dice.oneOf(threads.size())]);
        const int count = dice.between(1, 3);
        for (int part = 0; part < count; ++part) sewPart(pen, partOf(place, dice), dice);
    }
}

/// A design in a frame: another one within, or only a mark that was made before or after it.
void sewFramed(Pen& pen, Dice& dice) {
    const std::uint64_t frame = dice.oneOf(frames);
    const Place outside{{}, 20};
    switch (dice.oneOf(8)) {
        case 0:
            sewMark(pen, outside, dice);
            sewFrame(pen, frame);
            break;
        case 1:
            sewMark(pen, sewFrame(pen, frame), dice);
            break;
        default: {
            const Place inside = sewFrame(pen, frame);
            sewBlocks(pen, inside, dice);
        }
    }
}

}  // namespace

VLMDesign generatedDesign(std::uint64_t seed) {
    Dice dice(seed * 0xD1342543DE82EF95U + 1);
    Pen pen(threads[dice.oneOf(threads.size())]);
    if (seed % framedSeeds == 0) {
        sewFramed(pen, dice);
    } else {
        const bool isLarge = dice.oneOf(4) == 0;
        const Place place{{}, isLarge ? dice.within(40, 125) : dice.within(5, 50)};
        sewPart(pen, place, dice);  // a single ring is like any other: there is more than one part
        sewBlocks(pen, place, dice);
    }
    return pen.takeDesign();
}

}  // namespace velamo
