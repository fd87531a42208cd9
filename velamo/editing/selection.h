#pragma once

#include <cstdint>

#include "velamo/api.h"
#include "velamo/model/design.h"

namespace velamo {

/// A stitch is the way from where the needle stood before it (the origin for the first one) to where it stands after
/// it. Places are in tenths of a millimetre. Operations that take `unselectMode` take the stitches they hit out of the
/// selection when it is true, and put them into it when it is false. All but deselectAll leave the other stitches'
/// flags alone, and each sets the design's selectionActive anew: true when a stitch is selected.

/// The bounds of the selected stitches, both of whose ends count; those of the design while selectionActive is false.
/// When it is true but no stitch is selected, the inverted box (65536, 65536, -131072, -131072).
[[nodiscard]] VELAMO_API VLMRect selectionRect(const VLMDesign& design) noexcept;

/// Sets selectionActive even in a design without stitches.
VELAMO_API void selectAll(VLMDesign& design) noexcept;
VELAMO_API void deselectAll(VLMDesign& design) noexcept;
VELAMO_API void invertAll(VLMDesign& design) noexcept;

/// Hits the stitches that lie in the rectangle with both ends; its far edges are outside.
VELAMO_API void selectInRectunselectMode(VLMDesign& design, const VLMRect& rect, bool unselectMode) noexcept;

/// The index of the last stitch in sewing order whose squared distance from the point is less than `tolerance` (so 4
/// reaches 0.2 mm); -1 when there is none. Stitches of no length are never hit. Where the point lies before the start
/// of a stitch the distance is measured to its end, and to its start where it lies past the end: so clicks beyond the
/// ends of a stitch usually miss it.
[[nodiscard]] VELAMO_API std::int32_t indexOfStitchAtwithTolerance(const VLMDesign& design, VLMPoint point,
                                                                   float tolerance) noexcept;
/// Whether a stitch is hit and it is selected.
[[nodiscard]] VELAMO_API bool isSelectedAtwithTolerance(const VLMDesign& design, VLMPoint point,
                                                        float tolerance) noexcept;
/// The thread of the stitch that is hit: the number of colour changes up to it, itself included; -1 when none is hit.
[[nodiscard]] VELAMO_API std::int32_t indexOfThreadAtwithTolerance(const VLMDesign& design, VLMPoint point,
                                                                   float tolerance) noexcept;

VELAMO_API void selectStitchAtwithToleranceunselectMode(VLMDesign& design, VLMPoint point, float tolerance,
                                                        bool unselectMode) noexcept;
/// Hits the whole run of stitches that are neither jumps nor colour changes. A click on a jump or a colour change hits
/// the run behind it, not that stitch itself.
VELAMO_API void selectBlockAtwithToleranceunselectMode(VLMDesign& design, VLMPoint point, float tolerance,
                                                       bool unselectMode) noexcept;

}  // namespace velamo
