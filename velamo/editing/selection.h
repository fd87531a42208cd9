#pragma once

#include <cstdint>

#include "velamo/api.h"
#include "velamo/model/design.h"

namespace velamo {

/// A stitch is the way from where the needle stood before it (the origin, for the first stitch) to where the needle
/// stands after it. Positions are in tenths of a millimetre. An operation with the parameter `unselectMode` deselects
/// the stitches that it hits when that is true, and selects them when it is false. All operations but selectAll,
/// deselectAll and invertAll leave the flags of the other stitches alone. Each operation that changes flags also sets
/// the design's selectionActive to whether any stitch is selected now.

/// Returns the bounds of both ends of all selected stitches, or the design's bounds while selectionActive is false.
/// When selectionActive is true although no stitch is selected, returns the inverted box (65536, 65536, -131072,
/// -131072).
[[nodiscard]] VELAMO_API DesignRect selectionRect(const VLMDesign& design) noexcept;

/// Selects all stitches. Sets selectionActive to true even if the design has no stitches.
VELAMO_API void selectAll(VLMDesign& design) noexcept;
/// Deselects all stitches.
VELAMO_API void deselectAll(VLMDesign& design) noexcept;
/// Selects the stitches that are not selected, and deselects the others.
VELAMO_API void invertAll(VLMDesign& design) noexcept;

/// Hits the stitches whose two ends both lie in the rectangle; points on its far edges count as outside.
VELAMO_API void selectInRectunselectMode(VLMDesign& design, const DesignRect& rect, bool unselectMode) noexcept;

/// Returns the index of the last stitch in sewing order whose squared distance from the point is less than `tolerance`
/// (so that 4 reaches 0.2 mm), or -1 when there is none. Stitches of length zero are never hit. When the point lies
/// before the start of a stitch, the distance is measured to the stitch's end; when it lies past the end, to the start.
/// Clicks beyond the ends of a stitch therefore usually miss it.
[[nodiscard]] VELAMO_API std::int32_t indexOfStitchAtwithTolerance(const VLMDesign& design, DesignPoint point,
                                                                   float tolerance) noexcept;
/// Returns whether the stitch that indexOfStitchAtwithTolerance finds exists and is selected.
[[nodiscard]] VELAMO_API bool isSelectedAtwithTolerance(const VLMDesign& design, DesignPoint point,
                                                        float tolerance) noexcept;
/// Returns the index of the thread of the stitch that indexOfStitchAtwithTolerance finds: the number of colour changes
/// up to and including that stitch. Returns -1 when no stitch is hit. The design may have no thread with that index.
[[nodiscard]] VELAMO_API std::int32_t indexOfThreadAtwithTolerance(const VLMDesign& design, DesignPoint point,
                                                                   float tolerance) noexcept;

/// Hits the stitch that indexOfStitchAtwithTolerance finds.
VELAMO_API void selectStitchAtwithToleranceunselectMode(VLMDesign& design, DesignPoint point, float tolerance,
                                                        bool unselectMode) noexcept;
/// Hits the run of stitches, neither jumps nor colour changes, around the stitch that indexOfStitchAtwithTolerance
/// finds. If that stitch is a jump or a colour change, hits the run after it, but not that stitch itself.
VELAMO_API void selectBlockAtwithToleranceunselectMode(VLMDesign& design, DesignPoint point, float tolerance,
                                                       bool unselectMode) noexcept;

}  // namespace velamo
