#include "velamo/analysis/fingerprint.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <span>
#include <type_traits>

#include "velamo/analysis/same_path.h"

namespace velamo {
namespace {

constexpr std::size_t windows = Fingerprint::windows;

/// Adds up where the lines of a path lie, window by window.
class WindowMeans {
public:
    explicit WindowMeans(const PathMeasure& measure) noexcept
        : measure_(measure), windowLength_(measure.length / windows), room_(windowLength_) {}
    void take(const NeedlePoint& start, const NeedlePoint& end) noexcept {
        const double length = distanceOf(start, end);
        if (length <= room_) {
            add(start, end, 0.5, length);
            room_ -= length;
        } else {
            cut(start, end, length);
        }
    }
    [[nodiscard]] std::int8_t x(std::size_t window) const noexcept { return stepsTo(sums_[window].x); }
    [[nodiscard]] std::int8_t y(std::size_t window) const noexcept { return stepsTo(sums_[window].y); }

private:
    /// Takes a line that ends in another window than it begins; the last window takes all that is left.
    void cut(const NeedlePoint& start, const NeedlePoint& end, double length) noexcept {
        double from = 0;
        while (length - from > room_ && window_ + 1 < windows) {
            add(start, end, (from + room_ / 2) / length, room_);
            from += room_;
            ++window_;
            room_ = windowLength_;
        }
        add(start, end, (from + length) / 2 / length, length - from);
        room_ -= length - from;
    }
    /// Adds a part of the line that has the length, and its middle there.
    void add(const NeedlePoint& start, const NeedlePoint& end, double middle, double length) noexcept {
        sums_[window_].x += length * (start.x - measure_.centroid.x + middle * (end.x - start.x));
        sums_[window_].y += length * (start.y - measure_.centroid.y + middle * (end.y - start.y));
    }
    [[nodiscard]] std::int8_t stepsTo(double sum) const noexcept {
        constexpr double most = std::numeric_limits<std::int8_t>::max();
        const double steps = sum / windowLength_ / measure_.radius * stepsOfRadius;
        // Halves go away from zero, so that turned designs have turned fingerprints.
        return static_cast<std::int8_t>(std::round(std::clamp(steps, -most, most)));
    }

    const PathMeasure& measure_;
    double windowLength_;
    double room_;
    std::size_t window_ = 0;
    std::array<DesignPoint, windows> sums_{};
};

/// How many of the next points are a tie: a few small stitches that come back to where they begin, as sewing begins or
/// ends.
std::size_t tieAfter(std::span<const NeedlePoint> points, std::size_t start) noexcept {
    const bool isBeginning = start == 0 || points[start].isConnected;
    double length = 0;
    for (std::size_t i = start + 1; i < points.size() && !points[i].isConnected; ++i) {
        const double distance = distanceOf(points[start], points[i]);
        if (distance > tieReach) return 0;
        length += distanceOf(points[i - 1], points[i]);
        if (length > tieLength) return 0;
        const bool isEnding = i + 1 == points.size() || points[i + 1].isConnected;
        if (distance <= tieReturn && (isBeginning || isEnding)) return i - start;
    }
    return 0;
}

/// The points without ties; converters, machines and owners add them and take them away, and each would shift all
/// windows behind it. Empty when there are none to leave out.
std::vector<NeedlePoint> withoutTies(std::span<const NeedlePoint> points) {
    std::vector<NeedlePoint> kept;
    std::size_t begin = 0;  // of what is not copied yet
    for (std::size_t i = 0; i < points.size(); ++i)
        if (const std::size_t tie = tieAfter(points, i); tie > 0) {
            kept.insert(kept.end(), points.data() + begin, points.data() + i + 1);
            i += tie;
            begin = i + 1;
        }
    if (begin > 0) kept.insert(kept.end(), points.data() + begin, points.data() + points.size());
    return kept;
}

template <class Number>
Number atMostLargest(std::size_t count) noexcept {
    return static_cast<Number>(std::min<std::size_t>(count, std::numeric_limits<Number>::max()));
}

/// Of the points, which are some of the path, and their measure; none when they have no length.
std::optional<Fingerprint> fingerprintOf(const NeedlePath& path, std::span<const NeedlePoint> points,
                                         const PathMeasure& measure) {
    if (!(measure.radius > 0)) return std::nullopt;
    WindowMeans means(measure);
    for (std::size_t i = 1; i < points.size(); ++i) means.take(points[i - 1], points[i]);
    Fingerprint fingerprint;
    for (std::size_t window = 0; window < windows; ++window) {
        fingerprint.x[window] = means.x(window);
        fingerprint.y[window] = means.y(window);
    }
    fingerprint.logOfLength = static_cast<float>(std::log(measure.length / measure.radius));
    fingerprint.radius = static_cast<float>(measure.radius);
    fingerprint.points = atMostLargest<std::uint32_t>(points.size());
    fingerprint.corners = atMostLargest<std::uint16_t>(path.corners);
    fingerprint.blocks = atMostLargest<std::uint16_t>(path.blocks);
    return fingerprint;
}

/// Whether the path begins with a straight stretch that may be but the way to where sewing begins.
bool mayHaveLeadIn(const NeedlePath& path) noexcept {
    return distanceOf(path.points.front(), path.points[path.firstCorner]) > leadInPart * path.measure.length;
}

std::optional<Fingerprint> withoutLeadIn(const NeedlePath& path) {
    const auto rest = std::span(path.points).subspan(path.firstCorner);
    const std::vector<NeedlePoint> untied = withoutTies(rest);
    return untied.empty() ? fingerprintOf(path, rest, measureOf(rest)) : fingerprintOf(path, untied, measureOf(untied));
}

// Bytes.

template <class Number>
using BitsOf = std::conditional_t<sizeof(Number) == 1, std::uint8_t,
                                  std::conditional_t<sizeof(Number) == 2, std::uint16_t, std::uint32_t>>;

/// Calls `take` with each number of the fingerprint, in the order of the bytes.
template <class AFingerprint, class Take>
void forEachNumber(AFingerprint& fingerprint, Take take) {
    for (auto& x : fingerprint.x) take(x);
    for (auto& y : fingerprint.y) take(y);
    take(fingerprint.logOfLength);
    take(fingerprint.radius);
    take(fingerprint.points);
    take(fingerprint.corners);
    take(fingerprint.blocks);
}

int wide(std::int8_t steps) noexcept {
    return steps;
}

// Turns. A quarter turn makes (-y, x) of (x, y).

struct Means {
    std::array<int, windows> x{};
    std::array<int, windows> y{};
};

Means turned(const Fingerprint& fingerprint, std::size_t turns) noexcept {
    Means means;
    for (std::size_t i = 0; i < windows; ++i) {
        const int x = wide(fingerprint.x[i]);
        const int y = wide(fingerprint.y[i]);
        const std::array<int, 4> around{x, -y, -x, y};
        means.x[i] = around[turns];
        means.y[i] = around[(turns + 3) % 4];
    }
    return means;
}

bool areNear(const Means& one, const Fingerprint& other) noexcept {
    for (std::size_t i = 0; i < windows; ++i)
        if (std::abs(one.x[i] - other.x[i]) > candidateSteps || std::abs(one.y[i] - other.y[i]) > candidateSteps)
            return false;
    return true;
}

bool mayBeScaled(const Fingerprint& one, const Fingerprint& other) noexcept {
    constexpr auto largest = static_cast<float>(largestScale);
    return one.radius <= other.radius * largest && other.radius <= one.radius * largest &&
           std::abs(double{one.logOfLength} - double{other.logOfLength}) <= candidateLogOfLength &&
           std::min(one.corners, other.corners) >= cornersOfTwins;
}

// Cells of the index: windows joined by fours, and the logarithm of the length.

constexpr std::size_t joined = 4;
constexpr std::size_t joints = windows / joined;
constexpr std::size_t dimensions = 2 * joints + 1;
constexpr int cellSteps = 64;  // of the sum of joined windows: 0.4 radii
constexpr int nearSteps = 10;  // of that sum: 0.06 radii
constexpr int cellOffset = 8;  // of the smallest sum, so that numbers are not negative
constexpr std::int64_t cellsOfSums = 17;
constexpr double cellLogOfLength = 0.4;
constexpr double largestLogOfLength = 1000;

struct Cells {
    std::int64_t first = 0;
    std::int64_t last = 0;
};

/// The cells within `reach` of the sum. Zero is in the middle of a cell: many designs go around their centre.
Cells cellsOfSum(int sum, int reach) noexcept {
    const auto cell = [](int steps) {
        return (steps + cellSteps / 2 + cellOffset * cellSteps) / cellSteps;  // what is divided is not negative
    };
    return {cell(std::max(sum - reach, -cellOffset * cellSteps)), cell(std::min(sum + reach, cellOffset * cellSteps))};
}

Cells cellsOfLog(double log, double reach) noexcept {
    const auto cell = [](double value) {
        if (!(value > 0)) return std::int64_t{0};
        return static_cast<std::int64_t>(std::min(value, largestLogOfLength) / cellLogOfLength);
    };
    return {cell(log - reach), cell(log + reach)};
}

std::array<Cells, dimensions> cellsNear(const Means& means, float log, int reach, double logReach) noexcept {
    std::array<Cells, dimensions> cells;
    for (std::size_t joint = 0; joint < joints; ++joint) {
        int x = 0;
        int y = 0;
        for (std::size_t i = joint * joined; i < (joint + 1) * joined; ++i) {
            x += means.x[i];
            y += means.y[i];
        }
        cells[2 * joint] = cellsOfSum(x, reach);
        cells[2 * joint + 1] = cellsOfSum(y, reach);
    }
    cells.back() = cellsOfLog(log, logReach);
    return cells;
}

/// Appends the keys of all combinations of the cells.
void appendKeys(const std::array<Cells, dimensions>& cells, std::vector<std::int64_t>& keys) {
    const std::size_t before = keys.size();
    for (std::int64_t log = cells.back().first; log <= cells.back().last; ++log) keys.push_back(log);
    for (std::size_t dimension = 0; dimension + 1 < dimensions; ++dimension) {
        const std::size_t end = keys.size();
        for (std::size_t i = before; i < end; ++i) {
            const std::int64_t key = keys[i] * cellsOfSums;
            keys[i] = key + cells[dimension].first;
            for (std::int64_t cell = cells[dimension].first + 1; cell <= cells[dimension].last; ++cell)
                keys.push_back(key + cell);
        }
    }
}

}  // namespace

std::optional<Fingerprints> fingerprintsOf(const NeedlePath& path) {
    const std::vector<NeedlePoint> untied = withoutTies(path.points);
    const auto whole = untied.empty() ? fingerprintOf(path, path.points, path.measure)
                                      : fingerprintOf(path, untied, measureOf(untied));
    if (!whole) return std::nullopt;
    Fingerprints fingerprints{.whole = *whole, .withoutLeadIn = {}};
    if (mayHaveLeadIn(path)) fingerprints.withoutLeadIn = withoutLeadIn(path);
    return fingerprints;
}

FingerprintBytes bytesOf(const Fingerprint& fingerprint) noexcept {
    FingerprintBytes bytes{};
    std::size_t place = 0;
    forEachNumber(fingerprint, [&](auto number) {
        const auto bits = std::bit_cast<BitsOf<decltype(number)>>(number);
        for (std::size_t i = 0; i < sizeof bits; ++i) bytes[place++] = static_cast<std::byte>(bits >> (8 * i) & 0xFFU);
    });
    return bytes;
}

Fingerprint fingerprintOf(const FingerprintBytes& bytes) noexcept {
    Fingerprint fingerprint;
    std::size_t place = 0;
    forEachNumber(fingerprint, [&](auto& number) {
        using Number = std::remove_reference_t<decltype(number)>;
        std::uint32_t bits = 0;
        for (std::size_t i = 0; i < sizeof(Number); ++i)
            bits |= std::to_integer<std::uint32_t>(bytes[place++]) << (8 * i);
        number = std::bit_cast<Number>(static_cast<BitsOf<Number>>(bits));
    });
    return fingerprint;
}

QuarterTurns candidateTurns(const Fingerprint& one, const Fingerprint& other) noexcept {
    QuarterTurns turns;
    if (!mayBeScaled(one, other)) return turns;
    for (std::size_t turn = 0; turn < turns.size(); ++turn) turns[turn] = areNear(turned(one, turn), other);
    return turns;
}

QuarterTurns candidateTurns(const Fingerprints& one, const Fingerprints& other) noexcept {
    QuarterTurns turns = candidateTurns(one.whole, other.whole);
    if (one.withoutLeadIn) turns |= candidateTurns(*one.withoutLeadIn, other.whole);
    if (other.withoutLeadIn) turns |= candidateTurns(one.whole, *other.withoutLeadIn);
    if (one.withoutLeadIn && other.withoutLeadIn) turns |= candidateTurns(*one.withoutLeadIn, *other.withoutLeadIn);
    return turns;
}

std::int64_t indexKeyOf(const Fingerprint& fingerprint) noexcept {
    const auto cells = cellsNear(turned(fingerprint, 0), fingerprint.logOfLength, 0, 0);
    std::int64_t key = cells.back().first;
    for (std::size_t dimension = 0; dimension + 1 < dimensions; ++dimension)
        key = key * cellsOfSums + cells[dimension].first;
    return key;
}

std::vector<std::int64_t> keysNear(const Fingerprint& fingerprint) {
    std::vector<std::int64_t> keys;
    for (std::size_t turn = 0; turn < QuarterTurns().size(); ++turn)
        appendKeys(cellsNear(turned(fingerprint, turn), fingerprint.logOfLength, nearSteps, candidateLogOfLength),
                   keys);
    std::sort(keys.begin(), keys.end());
    keys.erase(std::unique(keys.begin(), keys.end()), keys.end());
    return keys;
}

Likeness likenessOf(const Fingerprint& one, const Fingerprint& other) noexcept {
    int squares = 0;
    int alongX = 0;
    int alongY = 0;
    int across = 0;
    int back = 0;
    for (std::size_t i = 0; i < windows; ++i) {
        const int oneX = wide(one.x[i]);
        const int oneY = wide(one.y[i]);
        const int otherX = wide(other.x[i]);
        const int otherY = wide(other.y[i]);
        squares += oneX * oneX + oneY * oneY + otherX * otherX + otherY * otherY;
        alongX += oneX * otherX;
        alongY += oneY * otherY;
        across += oneX * otherY;
        back += oneY * otherX;
    }
    // A turn changes nothing but which products of the coordinates meet, and their signs.
    const int straight = std::max(std::abs(alongX + alongY), std::abs(across - back));
    const int mirrored = std::max(std::abs(alongX - alongY), std::abs(across + back));
    const double square = squares - 2 * std::max(straight, mirrored);
    return {std::sqrt(square / (2 * windows)) / stepsOfRadius, mirrored > straight};
}

}  // namespace velamo
