// Makes the sample designs: velamo_make_samples FOLDER
#include <array>
#include <cmath>
#include <cstdio>
#include <numbers>

#include "samples/pen.h"
#include "velamo/formats/export.h"
#include "velamo/formats/format.h"

namespace velamo {
namespace {

using std::numbers::pi;

DesignPoint onCircle(double radius, double angle, DesignPoint center = {}) {
    return {center.x + radius * std::cos(angle), center.y + radius * std::sin(angle)};
}

/// The points of a closed curve, from a function of the turn (0 to 1).
template <class Curve>
std::vector<DesignPoint> closedCurve(int points, Curve curve) {
    std::vector<DesignPoint> path;
    for (int i = 0; i <= points; ++i) path.push_back(curve(static_cast<double>(i) / points));
    return path;
}

/// A rose curve of five petals, sewn in shrinking rounds, on a satin stem with two leaves.
VLMDesign rose() {
    constexpr std::array<const char*, 3> petalThreads{"085", "086", "807"};  // pinks, from the outside inward
    Pen pen("507");
    pen.satin({0, -44}, {0, -3}, 2);
    pen.jumpTo({0, -34});
    for (const double side : {-1.0, 1.0})
        for (int row = 0; row < 12; ++row) {
            const double width = 5 * std::sin(pi * (row + 1) / 13);
            pen.sewTo({side * (1 + row), -34 + row * 0.6 - width / 2});
            pen.sewTo({side * (1 + row), -34 + row * 0.6 + width / 2});
        }
    for (std::size_t color = 0; color < petalThreads.size(); ++color) {
        pen.changeThread(petalThreads[color]);
        for (int round = 0; round < 6; ++round) {
            const double size = 20 - static_cast<double>(color) * 6 - round;
            pen.sewPath(closedCurve(360, [size](double turn) {
                const double angle = turn * 2 * pi;
                return onCircle(size * std::sqrt(std::abs(std::cos(2.5 * angle))), angle + pi / 2);
            }));
        }
    }
    pen.changeThread("205");
    pen.sewPath(closedCurve(200, [](double turn) { return onCircle(4 * (1 - turn), turn * 10 * 2 * pi); }), 1.5);
    return pen.takeDesign();
}

/// Four hypotrochoids, each turned a little further and sewn in its own colour.
VLMDesign spirograph() {
    constexpr std::array<const char*, 4> threads{"420", "017", "612", "810"};
    Pen pen(threads[0]);
    for (std::size_t i = 0; i < threads.size(); ++i) {
        if (i > 0) pen.changeThread(threads[i]);
        const double shift = static_cast<double>(i) * pi / 20;
        pen.sewPath(closedCurve(1500, [shift](double turn) {
            constexpr double fixedWheel = 36;
            constexpr double rollingWheel = 13.5;
            constexpr double penArm = 17;
            const double angle = turn * 3 * 2 * pi;
            const DesignPoint wheel = onCircle(fixedWheel - rollingWheel, angle + shift);
            return onCircle(penArm, -angle * (fixedWheel - rollingWheel) / rollingWheel + shift, wheel);
        }));
    }
    return pen.takeDesign();
}

/// The letter F of three satin columns.
VLMDesign letter() {
    Pen pen("406");
    pen.satin({-8, -20}, {-8, 20}, 6);
    pen.satin({-5, 17}, {12, 17}, 6);
    pen.satin({-5, 1}, {7, 1}, 6);
    return pen.takeDesign();
}

/// Seeds in the order in which a sunflower sets them, inside a ring of petals.
VLMDesign sunflower() {
    constexpr double goldenAngle = 2.399963229728653;
    Pen pen("206");
    pen.jumpTo(onCircle(23, 0));
    for (int petal = 0; petal < 24; ++petal) {
        const double angle = petal * 2 * pi / 24;
        for (int row = 0; row < 16; ++row) {
            const double width = 2.2 * std::sin(pi * (row + 1) / 17) / (23 + row);
            pen.sewTo(onCircle(23 + row, angle - width));
            pen.sewTo(onCircle(23 + row, angle + width));
        }
        pen.jumpTo(onCircle(22, angle + 2 * pi / 24));
    }
    pen.changeThread("058");
    for (int seed = 0; seed < 320; ++seed) {
        const DesignPoint center = onCircle(1.2 * std::sqrt(seed + 1), seed * goldenAngle);
        pen.jumpTo(center);
        for (int ray = 0; ray < 5; ++ray) pen.sewTo(onCircle(0.7, ray * 4 * pi / 5, center));
    }
    return pen.takeDesign();
}

/// Hearts inside each other, with a satin-like edge in a lighter red.
VLMDesign heart() {
    const auto edge = [](double turn) {
        const double angle = turn * 2 * pi;
        return DesignPoint{24 * std::pow(std::sin(angle), 3), 19.5 * std::cos(angle) - 7.5 * std::cos(2 * angle) -
                                                                  3 * std::cos(3 * angle) - 1.5 * std::cos(4 * angle)};
    };
    Pen pen("800");
    constexpr int hearts = 33;
    for (int inner = 0; inner < hearts; ++inner) {
        const double size = 1 - static_cast<double>(inner) / hearts;
        pen.sewPath(closedCurve(240,
                                [&](double turn) {
                                    return DesignPoint{edge(turn).x * size, edge(turn).y * size};
                                }),
                    3);
    }
    pen.changeThread("807");
    pen.jumpTo(edge(0));
    for (int row = 0; row <= 600; ++row) {
        const DesignPoint point = edge(row / 600.0);
        const double reach = row % 2 == 0 ? 1.05 : 0.96;
        pen.sewTo({point.x * reach, point.y * reach}, 12);
    }
    return pen.takeDesign();
}

/// Writes the design with its thread side file.
bool save(VLMDesign design, const std::filesystem::path& file) {
    design.setDesignLocation(file);
    design.setUseThreadFile(true);
    VLMError error;
    if (exportDesignToURLerror(design, file, &error, {.dateText = "20260101000000"})) return true;
    std::fprintf(stderr, "velamo_make_samples: %s: %s\n", file.c_str(), error.message().c_str());
    return false;
}

bool saveInEveryFormat(const VLMDesign& design, const std::filesystem::path& folder, const std::string& name) {
    bool isSaved = true;
    for (const Format& format : allFormats())
        if (format.writer != nullptr)
            isSaved = save(design.copy(), folder / (name + "." + std::string(format.extension))) && isSaved;
    return isSaved;
}

bool saveAll(const std::filesystem::path& folder) {
    return save(rose(), folder / "rose.dst") && save(spirograph(), folder / "spirograph.dst") &&
           save(sunflower(), folder / "sunflower.dst") && save(heart(), folder / "heart.dst") &&
           saveInEveryFormat(letter(), folder, "letter-f");
}

}  // namespace
}  // namespace velamo

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fputs("usage: velamo_make_samples FOLDER\n", stderr);
        return 2;
    }
    return velamo::saveAll(argv[1]) ? 0 : 1;
}
