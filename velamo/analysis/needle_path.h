#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "velamo/model/design.h"
#include "velamo/private_api.h"

namespace velamo {

/// A place of the needle in tenths of a millimetre, y upward, from where the design starts.
struct NeedlePoint {
    double x = 0;
    double y = 0;
    bool isConnected = false;  // no stitch leads here from the point before, but a jump or a colour change
    friend bool operator==(const NeedlePoint&, const NeedlePoint&) = default;
};

/// A length, the middle of all thread along it, and how far the thread lies from there: integrals along the lines from
/// point to point, so that a point more on a line changes nothing.
struct PathMeasure {
    double length = 0;
    DesignPoint centroid;
    double radius = 0;  // the root mean square of the distance from the centroid
};

/// What a design sews, whatever file it comes from: the straight lines from needle point to needle point. One format
/// writes a long move as a stitch, another one as several, a third one as jumps; so the lines that no stitch follows
/// belong to the path, too. Colours, names and trims do not.
struct NeedlePath {
    std::vector<NeedlePoint> points;  // neighbours are pointDistance apart at least
    PathMeasure measure;
    std::size_t connections = 0;  // points that no stitch leads to
    std::size_t blocks = 0;       // of one thread, those without stitches left out
    std::size_t corners = 0;      // see straightTolerance
    std::size_t firstCorner = 0;  // the index of the point where the first straight stretch ends
    std::size_t lostPoints = 0;   // as many may be missing at the end (see lostStitchesOf in the source)
};

/// A point nearer than this to the one before it is left out. The coarsest grid of a format is 1.67.
inline constexpr double pointDistance = 0.6;
/// Points no further than this from the line between two others do not count as corners. What remains tells how much a
/// design has to say for itself, however its lines are split into stitches.
inline constexpr double straightTolerance = 2;
/// A first stitch that leaves the way from the origin by no more than this is the last piece of that way.
inline constexpr double leadInTolerance = 1.5;

/// The path of the design's needle from its first to its last stitch; without points when it sews nothing. A move that
/// is not finite counts as none. One walk over the stitches, one over the points. May throw std::bad_alloc.
[[nodiscard]] VELAMO_PRIVATE_API NeedlePath needlePathOf(const VLMDesign& design);

/// The measure of the points' lines; all zero for less than two points.
[[nodiscard]] PathMeasure measureOf(std::span<const NeedlePoint> points) noexcept;

/// The distance of two points.
[[nodiscard]] double distanceOf(const NeedlePoint& one, const NeedlePoint& other) noexcept;

}  // namespace velamo
