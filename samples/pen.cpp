#include "samples/pen.h"

#include <algorithm>
#include <cmath>

namespace velamo {
namespace {

constexpr double satinSpacing = 0.4;

VLMThread threadOf(const std::string& key) {
    return VLMThread::initWithKeyofPalette(key, "Brother");
}

DesignPoint between(DesignPoint from, DesignPoint to, double part) {
    return {from.x + (to.x - from.x) * part, from.y + (to.y - from.y) * part};
}

int roundedUp(double number) {
    return static_cast<int>(std::ceil(number));
}

double distance(DesignPoint from, DesignPoint to) {
    return std::hypot(to.x - from.x, to.y - from.y);
}

}  // namespace

Pen::Pen(const std::string& threadKey) {
    design_.threads().push_back(threadOf(threadKey));
}

void Pen::jumpTo(DesignPoint target) {
    moveTo(target, true);
}

void Pen::sewTo(DesignPoint target, double stitchLength) {
    const DesignPoint start{position_.x / 10, position_.y / 10};
    const int count = std::max(1, roundedUp(distance(start, target) / stitchLength));
    for (int stitch = 1; stitch <= count; ++stitch)
        moveTo(between(start, target, static_cast<double>(stitch) / count), false);
}

void Pen::sewPath(const std::vector<DesignPoint>& points, double stitchLength) {
    jumpTo(points.front());
    for (const DesignPoint& point : points) sewTo(point, stitchLength);
}

void Pen::satin(DesignPoint from, DesignPoint to, double width) {
    const double length = distance(from, to);
    const DesignPoint across{-(to.y - from.y) / length * width / 2, (to.x - from.x) / length * width / 2};
    jumpTo(from);
    sewTo(to);  // the underlay, which keeps the column from sinking in
    const int count = roundedUp(length / satinSpacing);
    for (int row = 0; row <= count; ++row) {
        const DesignPoint middle = between(to, from, static_cast<double>(row) / count);
        const double side = row % 2 == 0 ? 1 : -1;
        moveTo({middle.x + across.x * side, middle.y + across.y * side}, false);
    }
}

void Pen::changeThread(const std::string& threadKey) {
    design_.threads().push_back(threadOf(threadKey));
    design_.stitches().push_back({0, 0, false, true});
}

void Pen::moveTo(DesignPoint target, bool isJump) {
    const DesignPoint end{std::round(target.x * 10), std::round(target.y * 10)};
    const DesignPoint way{end.x - position_.x, end.y - position_.y};
    if (way == DesignPoint()) return;
    design_.stitches().push_back({static_cast<float>(way.x), static_cast<float>(way.y), isJump, false});
    position_ = end;
}

}  // namespace velamo
