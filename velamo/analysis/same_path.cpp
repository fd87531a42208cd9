#include "velamo/analysis/same_path.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <span>
#include <utility>
#include <vector>

namespace velamo {
namespace {

using Points = std::vector<NeedlePoint>;

NeedlePoint turned(const NeedlePoint& point, int quarterTurns) noexcept {
    switch (quarterTurns) {
        case 1:
            return {-point.y, point.x, point.isConnected};
        case 2:
            return {-point.x, -point.y, point.isConnected};
        case 3:
            return {point.y, -point.x, point.isConnected};
        default:
            return point;
    }
}

/// The points from the path's centroid, turned.
Points centered(const NeedlePath& path, int quarterTurns) {
    Points points;
    points.reserve(path.points.size());
    const DesignPoint& middle = path.measure.centroid;
    for (const NeedlePoint& point : path.points)
        points.push_back(turned({point.x - middle.x, point.y - middle.y, point.isConnected}, quarterTurns));
    return points;
}

/// How points of the larger path come to lie upon those of the smaller one.
struct Fit {
    double scale = 1;
    DesignPoint shift;
    [[nodiscard]] NeedlePoint operator()(const NeedlePoint& point) const noexcept {
        return {point.x * scale + shift.x, point.y * scale + shift.y, point.isConnected};
    }
};

/// Where a point lies beside a line from one point to another.
struct Beside {
    double along = 0;  // from 0 at the line's start to 1 at its end
    double distance = 0;
};

Beside besideLine(const NeedlePoint& point, const NeedlePoint& start, const NeedlePoint& end) noexcept {
    const double x = end.x - start.x;
    const double y = end.y - start.y;
    const double square = x * x + y * y;
    const double along = square > 0 ? ((point.x - start.x) * x + (point.y - start.y) * y) / square : 0;
    const double nearest = std::clamp(along, 0.0, 1.0);
    return {nearest, distanceOf(point, {start.x + nearest * x, start.y + nearest * y})};
}

/// One of two paths that are walked side by side.
struct Walker {
    const Points* points = nullptr;
    std::size_t next = 0;
    double along = 0;  // the line to the next point, as far as points of the other path were found on it

    [[nodiscard]] bool isAtEnd() const noexcept { return next == points->size(); }
    [[nodiscard]] std::size_t left() const noexcept { return points->size() - next; }
    [[nodiscard]] const NeedlePoint& point(std::size_t ahead = 0) const noexcept { return (*points)[next + ahead]; }
    void goOn(std::size_t count = 1) noexcept {
        next += count;
        along = 0;
    }
    /// Whether the point is but a piece of the line to the next point, not behind the pieces found before.
    [[nodiscard]] bool takesPiece(const NeedlePoint& piece, double tolerance) noexcept {
        if (next == 0) return false;
        const Beside beside = besideLine(piece, (*points)[next - 1], point());
        if (beside.distance > tolerance || beside.along < along) return false;
        along = beside.along;
        return true;
    }
};

/// What one path has and the other has not, between two points of both.
struct Skip {
    std::size_t one = 0;
    std::size_t other = 0;
};

/// The places from the last one walked to the one that is `skipped` points ahead.
std::span<const NeedlePoint> stretchOf(const Walker& walker, std::size_t skipped) noexcept {
    return std::span(*walker.points).subspan(walker.next - 1, skipped + 2);
}

double sewnLengthOf(std::span<const NeedlePoint> skipped) noexcept {
    double length = 0;
    for (std::size_t i = 1; i + 1 < skipped.size(); ++i)
        if (!skipped[i].isConnected) length += distanceOf(skipped[i - 1], skipped[i]);
    return length;
}

/// Whether a point between the ends of one stretch is far from the other one.
bool isFarFrom(std::span<const NeedlePoint> stretch, std::span<const NeedlePoint> other) noexcept {
    for (std::size_t i = 1; i + 1 < stretch.size(); ++i) {
        double distance = HUGE_VAL;
        for (std::size_t j = 1; j < other.size(); ++j)
            distance = std::min(distance, besideLine(stretch[i], other[j - 1], other[j]).distance);
        if (distance > farDistance) return true;
    }
    return false;
}

/// Walks along two paths and finds the points that both have.
class Walk {
public:
    Walk(const Points& one, const Points& other, double tolerance,
         std::vector<std::pair<std::size_t, std::size_t>>& pairs)
        : one_{&one}, other_{&other}, tolerance_(tolerance), pairs_(pairs) {
        pairs_.clear();
    }
    /// Walks to the end of one of the paths; false when they part.
    [[nodiscard]] bool go() {
        while (!one_.isAtEnd() && !other_.isAtEnd())
            if (!takePair() && !takePiece() && !takeSkip()) return false;
        return true;
    }
    [[nodiscard]] const Skip& head() const noexcept { return head_; }
    [[nodiscard]] const Skip& pieces() const noexcept { return pieces_; }
    [[nodiscard]] Skip tail() const noexcept { return {one_.left(), other_.left()}; }
    [[nodiscard]] bool hasFarSkip() const noexcept { return hasFarSkip_; }
    [[nodiscard]] double skippedLength() const noexcept { return skippedLength_; }

private:
    [[nodiscard]] bool areNear(std::size_t one, std::size_t other) const noexcept {
        const NeedlePoint& first = one_.point(one);
        const NeedlePoint& second = other_.point(other);
        const double x = second.x - first.x;
        const double y = second.y - first.y;
        return x * x + y * y <= tolerance_ * tolerance_;
    }
    [[nodiscard]] bool takePair() {
        if (!areNear(0, 0)) return false;
        pairs_.emplace_back(one_.next, other_.next);
        one_.goOn();
        other_.goOn();
        return true;
    }
    [[nodiscard]] bool takePiece() noexcept {
        if (one_.takesPiece(other_.point(), tolerance_)) {
            ++pieces_.other;
            other_.goOn();
            return true;
        }
        if (other_.takesPiece(one_.point(), tolerance_)) {
            ++pieces_.one;
            one_.goOn();
            return true;
        }
        return false;
    }
    /// Whether the point is a piece of the walker's line that begins so many points ahead.
    [[nodiscard]] bool isOnWay(const NeedlePoint& point, const Walker& walker, std::size_t ahead) const noexcept {
        return besideLine(point, walker.point(ahead), walker.point(ahead + 1)).distance <= tolerance_;
    }
    /// Whether both paths go on together after the skip.
    [[nodiscard]] bool goOnAfter(std::size_t one, std::size_t other) const noexcept {
        if (one >= one_.left() || other >= other_.left() || !areNear(one, other)) return false;
        if (one + 1 == one_.left() || other + 1 == other_.left()) return true;
        if (areNear(one + 1, other + 1)) return true;
        // At the beginning pieces of a first stitch may be skipped, and one path may well go on in pieces.
        return pairs_.empty() &&
               (isOnWay(other_.point(other + 1), one_, one) || isOnWay(one_.point(one + 1), other_, other));
    }
    [[nodiscard]] bool takeSkip() {
        for (std::size_t count = 1; count <= 2 * pointsSkipped; ++count)
            for (std::size_t one = count - std::min(count, pointsSkipped); one <= std::min(count, pointsSkipped); ++one)
                if (goOnAfter(one, count - one)) {
                    skip({one, count - one});
                    return true;
                }
        return false;
    }
    void skip(const Skip& skipped) {
        if (pairs_.empty())
            head_ = skipped;
        else
            judge(skipped);
        one_.goOn(skipped.one);
        other_.goOn(skipped.other);
    }
    void judge(const Skip& skip) noexcept {
        const auto one = stretchOf(one_, skip.one);
        const auto other = stretchOf(other_, skip.other);
        skippedLength_ += std::max(sewnLengthOf(one), sewnLengthOf(other));
        const bool isOneFar = isFarFrom(one, other);
        const bool isOtherFar = isFarFrom(other, one);
        if (isOneFar && isOtherFar) hasFarSkip_ = true;
        if ((isOneFar || isOtherFar) && skip.one + skip.other > farPointsSkipped) hasFarSkip_ = true;
    }

    Walker one_;
    Walker other_;
    double tolerance_;
    std::vector<std::pair<std::size_t, std::size_t>>& pairs_;
    Skip head_;
    Skip pieces_;
    bool hasFarSkip_ = false;
    double skippedLength_ = 0;
};

bool isHeadOf(const NeedlePath& one, const NeedlePath& other, const Skip& head) noexcept {
    if (head.other == 0) return head.one <= headPointsSkipped || head.one <= one.firstCorner;
    if (head.one == 0) return head.other <= headPointsSkipped || head.other <= other.firstCorner;
    return std::max(head.one, head.other) <= headPointsSkippedByBoth;
}

bool isTailOf(const NeedlePath& one, const NeedlePath& other, const Skip& tail) noexcept {
    if (tail.other == 0) return tail.one <= std::max(tailPointsSkipped, other.lostPoints);
    return tail.one == 0 && tail.other <= std::max(tailPointsSkipped, one.lostPoints);
}

struct Box {
    DesignPoint least{HUGE_VAL, HUGE_VAL};
    DesignPoint most{-HUGE_VAL, -HUGE_VAL};
    [[nodiscard]] DesignPoint middle() const noexcept { return {(least.x + most.x) / 2, (least.y + most.y) / 2}; }
    [[nodiscard]] double size() const noexcept { return most.x - least.x + most.y - least.y; }
};

Box boxOf(const Points& points) noexcept {
    Box box;
    for (const NeedlePoint& point : points) {
        box.least = {std::min(box.least.x, point.x), std::min(box.least.y, point.y)};
        box.most = {std::max(box.most.x, point.x), std::max(box.most.y, point.y)};
    }
    return box;
}

/// A smaller path and a larger one, which is turned already.
class Comparison {
public:
    Comparison(const NeedlePath& smaller, const NeedlePath& larger, int quarterTurns)
        : smaller_(smaller),
          larger_(larger),
          smallerPoints_(centered(smaller, 0)),
          largerPoints_(centered(larger, quarterTurns)) {}
    /// The smaller path's size as a part of the larger one's, if they are the same.
    [[nodiscard]] std::optional<double> scale() {
        for (const Fit& guess : guesses())
            if (const auto fit = fitFrom(guess)) return fit->scale;
        return std::nullopt;
    }

private:
    /// A stretch at one end that only one path has changes all measures but the place of the other end.
    [[nodiscard]] std::array<Fit, 6> guesses() const noexcept {
        const Box one = boxOf(smallerPoints_);
        const Box other = boxOf(largerPoints_);
        const double byRadius = likely(smaller_.measure.radius / larger_.measure.radius);
        const NeedlePoint oneMiddle{one.middle().x, one.middle().y};
        const NeedlePoint otherMiddle{other.middle().x, other.middle().y};
        return {Fit{byRadius, {}},
                guessAt(oneMiddle, otherMiddle, likely(one.size() / other.size())),
                guessAt(smallerPoints_.front(), largerPoints_.front(), byRadius),
                guessAt(smallerPoints_.back(), largerPoints_.back(), byRadius),
                guessAt(smallerPoints_.front(), largerPoints_.front(), 1),
                guessAt(smallerPoints_.back(), largerPoints_.back(), 1)};
    }
    /// Noise changes a scale of 1 a little.
    static double likely(double scale) noexcept {
        constexpr double noise = 0.004;
        return std::abs(scale - 1) <= noise ? 1 : scale;
    }
    static Fit guessAt(const NeedlePoint& one, const NeedlePoint& other, double scale) noexcept {
        return {scale, {one.x - other.x * scale, one.y - other.y * scale}};
    }
    [[nodiscard]] std::optional<Fit> fitFrom(Fit fit) {
        for (std::size_t pass = 0; pass < std::size(passTolerances); ++pass) {
            place(fit);
            Walk walk(smallerPoints_, placed_, passTolerances[pass], pairs_);
            if (!walk.go()) return std::nullopt;
            const bool isLast = pass + 1 == std::size(passTolerances);
            if (isLast && !isSame(walk)) return std::nullopt;
            if (!isLast && !improve(fit)) return std::nullopt;
        }
        return fit;
    }
    void place(const Fit& fit) {
        placed_.clear();
        for (const NeedlePoint& point : largerPoints_) placed_.push_back(fit(point));
    }
    /// Brings the points that were found to be one as near to each other as can be.
    [[nodiscard]] bool improve(Fit& fit) const noexcept {
        const auto count = static_cast<double>(pairs_.size());
        DesignPoint one;
        DesignPoint other;
        double products = 0;
        double squares = 0;
        for (const auto& [smaller, larger] : pairs_) {
            const NeedlePoint& first = smallerPoints_[smaller];
            const NeedlePoint& second = largerPoints_[larger];
            one = {one.x + first.x, one.y + first.y};
            other = {other.x + second.x, other.y + second.y};
            products += first.x * second.x + first.y * second.y;
            squares += second.x * second.x + second.y * second.y;
        }
        squares -= (other.x * other.x + other.y * other.y) / count;
        products -= (one.x * other.x + one.y * other.y) / count;
        if (!(squares > 0) || !(products > 0)) return false;
        fit.scale = products / squares;
        fit.shift = {(one.x - other.x * fit.scale) / count, (one.y - other.y * fit.scale) / count};
        return std::max(fit.scale, 1 / fit.scale) <= largestScale;
    }
    /// Whether the paths have points in common, not lines alone.
    [[nodiscard]] bool hasPoints(const Skip& pieces) const noexcept {
        return static_cast<double>(pieces.one) <= partInPieces * static_cast<double>(smallerPoints_.size()) ||
               static_cast<double>(pieces.other) <= partInPieces * static_cast<double>(largerPoints_.size());
    }
    [[nodiscard]] bool isSame(const Walk& walk) const noexcept {
        const auto connections = static_cast<double>(std::max(smaller_.connections, larger_.connections));
        return !walk.hasFarSkip() && hasPoints(walk.pieces()) && isHeadOf(smaller_, larger_, walk.head()) &&
               isTailOf(smaller_, larger_, walk.tail()) &&
               walk.skippedLength() <= partSkipped * smaller_.measure.length + lengthSkipped * (1 + connections);
    }

    const NeedlePath& smaller_;
    const NeedlePath& larger_;
    Points smallerPoints_;
    Points largerPoints_;
    Points placed_;
    std::vector<std::pair<std::size_t, std::size_t>> pairs_;
};

/// Whether so many corners say enough.
std::optional<SamePathKind> kindOf(const SamePath& same, std::size_t corners) noexcept {
    if (std::abs(same.scale - 1) > twinScale)
        return corners >= cornersOfSizes ? std::optional(SamePathKind::size) : std::nullopt;
    const std::size_t needed = same.quarterTurns == 0 ? cornersOfTwins : cornersOfTurnedTwins;
    return corners >= needed ? std::optional(SamePathKind::twin) : std::nullopt;
}

std::optional<SamePath> samePathAt(const NeedlePath& one, const NeedlePath& other, int quarterTurns) {
    const bool grows = one.measure.radius <= other.measure.radius;
    // Noise shrinks with the design: the larger one is brought to the size of the smaller.
    Comparison comparison(grows ? one : other, grows ? other : one, grows ? (4 - quarterTurns) % 4 : quarterTurns);
    const auto scale = comparison.scale();
    if (!scale) return std::nullopt;
    SamePath same{.quarterTurns = quarterTurns, .scale = grows ? 1 / *scale : *scale};
    const auto kind = kindOf(same, std::min(one.corners, other.corners));
    if (!kind) return std::nullopt;
    same.kind = *kind;
    return same;
}

bool maySayEnough(const NeedlePath& one, const NeedlePath& other) noexcept {
    return std::min(one.corners, other.corners) >= cornersOfTwins && one.measure.radius > 0 && other.measure.radius > 0;
}

}  // namespace

std::optional<SamePath> samePathOf(const NeedlePath& one, const NeedlePath& other, QuarterTurns turns) {
    if (!maySayEnough(one, other)) return std::nullopt;
    for (int turn = 0; turn < static_cast<int>(turns.size()); ++turn)
        if (turns[static_cast<std::size_t>(turn)])
            if (const auto same = samePathAt(one, other, turn)) return same;
    return std::nullopt;
}

}  // namespace velamo
