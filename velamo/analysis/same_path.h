#pragma once

#include <cstddef>
#include <optional>

#include "velamo/analysis/fingerprint.h"
#include "velamo/analysis/needle_path.h"
#include "velamo/private_api.h"

namespace velamo {

enum class SamePathKind { twin, size };

/// How the second of two designs that sew the same path comes of the first.
struct SamePath {
    SamePathKind kind = SamePathKind::twin;
    int quarterTurns = 0;  // counter-clockwise, 0 to 3
    double scale = 1;      // its size as a part of the first one's
};

/// How near points of two paths have to come to be one, in tenths of a millimetre of the smaller design. The paths are
/// laid upon each other the better the more of their points are known to be one, hence the several passes.
inline constexpr double passTolerances[] = {5, 3, 2, 2};
/// A scale that differs from 1 by no more is that of twins.
inline constexpr double twinScale = 0.005;
/// Larger designs are no sizes of smaller ones.
inline constexpr double largestScale = 2.8;
/// Tiny designs say too little: a circle of thirty stitches is any other circle at another size. So many corners a
/// path must have at least to be known again at its size, turned, and at another size.
inline constexpr std::size_t cornersOfTwins = 20;
inline constexpr std::size_t cornersOfTurnedTwins = 100;
inline constexpr std::size_t cornersOfSizes = 120;

/// One path may have points that the other lacks, as ties and what other programs add. A point is far when it lies
/// further than this from the line between those around that both paths have.
inline constexpr double farDistance = 10;
/// So many points may be skipped at a place where one of them is far.
inline constexpr std::size_t farPointsSkipped = 4;
/// So many points in a row may be skipped at all.
inline constexpr std::size_t pointsSkipped = 12;
/// So many may be skipped at the beginning by one path, or each path; any number that lie on one line by one path.
inline constexpr std::size_t headPointsSkipped = 4;
inline constexpr std::size_t headPointsSkippedByBoth = 2;
/// So many may be missing at the end of one path.
inline constexpr std::size_t tailPointsSkipped = 2;
/// Of one of the paths so many points at most may be but pieces of the other one's lines. Where both have more, each
/// was sewn along the same lines in its own way: rings of one size, in stitches of two lengths.
inline constexpr double partInPieces = 0.35;
/// What is sewn at skipped points may have this part of the path's length, and this length, once and for each
/// connection.
inline constexpr double partSkipped = 0.02;
inline constexpr double lengthSkipped = 30;

/// Whether two designs sew the same path, after one of the turns given, wherever they lie and at whatever size; nothing
/// when they do not. It takes time in proportion to their points, and very little where they differ from the first
/// stitches on. May throw std::bad_alloc.
[[nodiscard]] VELAMO_PRIVATE_API std::optional<SamePath> samePathOf(const NeedlePath& one, const NeedlePath& other,
                                                                    QuarterTurns turns);

}  // namespace velamo
