#include "velamo/analysis/needle_path.h"

#include <algorithm>
#include <cmath>

namespace velamo {
namespace {

double squareOf(DesignPoint way) noexcept {
    return way.x * way.x + way.y * way.y;
}

double squareOf(const NeedlePoint& one, const NeedlePoint& other) noexcept {
    return squareOf({other.x - one.x, other.y - one.y});
}

DesignPoint moveOf(const VLMStitch& stitch) noexcept {
    if (!std::isfinite(stitch.deltaX()) || !std::isfinite(stitch.deltaY())) return {};
    return {stitch.deltaX(), stitch.deltaY()};
}

bool isSewn(const VLMStitch& stitch, DesignPoint move) noexcept {
    return !stitch.isJumpStitch() && !stitch.isColorChange() && move != DesignPoint{};
}

/// Whether the move goes on in the direction of the way before it.
bool goesOn(DesignPoint way, DesignPoint move) noexcept {
    const double aside = std::abs(way.x * move.y - way.y * move.x);
    return way.x * move.x + way.y * move.y > 0 && aside <= leadInTolerance * std::sqrt(squareOf(way));
}

/// Whether the first stitch is but the last piece of the way to where sewing begins: some converters sew it. Without a
/// jump before it, the first stitch is such a way if a stitch on the spot follows, which is where sewing begins then.
bool startsWithLeadIn(const std::vector<VLMStitch>& stitches) noexcept {
    DesignPoint way;
    for (std::size_t i = 0; i < stitches.size(); ++i) {
        const DesignPoint move = moveOf(stitches[i]);
        if (isSewn(stitches[i], move)) {
            if (way != DesignPoint{}) return goesOn(way, move);
            return i + 1 < stitches.size() && stitches[i + 1].isNullStitch();
        }
        way = {way.x + move.x, way.y + move.y};
    }
    return false;
}

/// A PCS file that we write does not come back whole: its count of stitches leaves out the colour changes.
std::size_t lostStitchesOf(const VLMDesign& design, std::size_t blocks) {
    return design.designType() == "PCS" ? blocks + 1 : 0;
}

/// Turns moves into points.
class PathMaker {
public:
    PathMaker(std::size_t stitches, bool hasLeadIn) : startsAtEnd_(hasLeadIn) { path_.points.reserve(stitches + 1); }
    void take(const VLMStitch& stitch) {
        const DesignPoint move = moveOf(stitch);
        const bool sews = isSewn(stitch, move);
        if (stitch.isColorChange()) isNewBlock_ = true;
        if (sews) beginSewing();
        position_ = {position_.x + move.x, position_.y + move.y};
        if (sews)
            append(false);
        else if (stitch.isJumpStitch() || stitch.isColorChange())
            isAway_ = true;
    }
    [[nodiscard]] NeedlePath take() && { return std::move(path_); }

private:
    void beginSewing() {
        if (isNewBlock_) ++path_.blocks;
        isNewBlock_ = false;
        if (isAway_ && !startsAtEnd_) append(!path_.points.empty());
        isAway_ = false;
        startsAtEnd_ = false;
    }
    void append(bool isConnected) {
        const NeedlePoint point{position_.x, position_.y, isConnected};
        if (!path_.points.empty() && squareOf(path_.points.back(), point) < pointDistance * pointDistance) return;
        path_.points.push_back(point);
        if (isConnected) ++path_.connections;
    }

    NeedlePath path_;
    DesignPoint position_;
    bool isNewBlock_ = true;
    bool isAway_ = true;  // the needle came here without sewing
    bool startsAtEnd_;    // of the first stitch
};

double crossOf(DesignPoint one, DesignPoint other) noexcept {
    return one.x * other.y - one.y * other.x;
}

/// Finds the corners of a path in one walk: a stretch goes on as long as one line from its start passes all its points
/// near enough and does not turn back.
class CornerFinder {
public:
    explicit CornerFinder(const std::vector<NeedlePoint>& points) noexcept : points_(points) {}
    /// Sets the corners of the path; its two ends are none.
    void find(NeedlePath& path) noexcept {
        for (std::size_t i = 1; i < points_.size(); ++i)
            if (!goesOnTo(i)) {
                begin(i - 1);
                if (path.corners++ == 0) path.firstCorner = i - 1;
                static_cast<void>(goesOnTo(i));
            }
        if (path.corners == 0) path.firstCorner = points_.size() - 1;
    }

private:
    void begin(std::size_t start) noexcept {
        start_ = start;
        reachSquare_ = 0;
        hasCone_ = false;
    }
    [[nodiscard]] bool goesOnTo(std::size_t index) noexcept {
        const DesignPoint way{points_[index].x - points_[start_].x, points_[index].y - points_[start_].y};
        const double square = squareOf(way);
        if (square < reachSquare_ && std::sqrt(square) + straightTolerance < std::sqrt(reachSquare_)) return false;
        if (square <= straightTolerance * straightTolerance) return true;
        if (hasCone_ && (crossOf(right_, way) < 0 || crossOf(way, left_) < 0)) return false;
        narrow(way, square);
        reachSquare_ = std::max(reachSquare_, square);
        return true;
    }
    /// Leaves the directions that pass the end of the way near enough.
    void narrow(DesignPoint way, double square) noexcept {
        const double aside = straightTolerance;
        const double ahead = std::sqrt(square - aside * aside);
        const DesignPoint left{way.x * ahead - way.y * aside, way.x * aside + way.y * ahead};
        const DesignPoint right{way.x * ahead + way.y * aside, way.y * ahead - way.x * aside};
        if (!hasCone_ || crossOf(left, left_) > 0) left_ = left;
        if (!hasCone_ || crossOf(right_, right) > 0) right_ = right;
        hasCone_ = true;
    }

    const std::vector<NeedlePoint>& points_;
    std::size_t start_ = 0;
    double reachSquare_ = 0;  // how far the stretch has come
    bool hasCone_ = false;
    DesignPoint left_;
    DesignPoint right_;
};

}  // namespace

double distanceOf(const NeedlePoint& one, const NeedlePoint& other) noexcept {
    return std::sqrt(squareOf(one, other));  // sums of finite single numbers: their squares fit
}

PathMeasure measureOf(std::span<const NeedlePoint> points) noexcept {
    PathMeasure measure;
    if (points.size() < 2) return measure;
    // From the first point on: so far from the origin that a design lies, so many digits would be lost.
    const NeedlePoint& first = points.front();
    DesignPoint sum;
    double squares = 0;
    DesignPoint start;
    for (const NeedlePoint& point : points.subspan(1)) {
        const DesignPoint end{point.x - first.x, point.y - first.y};
        const double x = end.x - start.x;
        const double y = end.y - start.y;
        const double length = std::sqrt(x * x + y * y);
        measure.length += length;
        sum.x += length * (start.x + end.x);
        sum.y += length * (start.y + end.y);
        squares += length * (start.x * start.x + start.x * end.x + end.x * end.x + start.y * start.y + start.y * end.y +
                             end.y * end.y);
        start = end;
    }
    const DesignPoint middle{sum.x / (2 * measure.length), sum.y / (2 * measure.length)};
    const double square = squares / (3 * measure.length) - middle.x * middle.x - middle.y * middle.y;
    measure.radius = std::sqrt(std::max(square, 0.0));
    measure.centroid = {first.x + middle.x, first.y + middle.y};
    return measure;
}

NeedlePath needlePathOf(const VLMDesign& design) {
    const std::vector<VLMStitch>& stitches = design.stitches().all();
    PathMaker maker(stitches.size(), startsWithLeadIn(stitches));
    for (const VLMStitch& stitch : stitches) maker.take(stitch);
    NeedlePath path = std::move(maker).take();
    path.measure = measureOf(path.points);
    if (path.points.size() > 1) CornerFinder(path.points).find(path);
    path.lostPoints = lostStitchesOf(design, path.blocks);
    return path;
}

}  // namespace velamo
