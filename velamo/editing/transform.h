#pragma once

#include <cstdint>
#include <string_view>

#include "velamo/api.h"
#include "velamo/model/design.h"

namespace velamo {

/// Transforms of the selected stitches. A jump before each run of selected stitches takes the needle to where the run
/// begins now, and a jump after the run takes it back, so that all other stitches stay where they are; a run at the end
/// of the design needs no way back. Then the stitches are optimised for the design's type (see optimizeJumpsFor).
/// Selection flags and selectionActive are kept. The middle of the selection is the middle of selectionRect.
///
/// Each transform returns false and leaves the design unchanged when a move becomes too large or is not finite (error
/// 71) or when memory runs out.

/// Moves the whole design, selected or not, so that the middle of its bounds is the origin. Because of rounding this
/// takes several passes, ten at most, and may leave a remainder. If a later pass fails, the design keeps the passes
/// made so far.
[[nodiscard]] VELAMO_API bool centerDesign(VLMDesign& design, VLMError* error = nullptr) noexcept;

/// Moves the selection by `vector`, in tenths of a millimetre.
[[nodiscard]] VELAMO_API bool moveSelectionByVectorerror(VLMDesign& design, DesignPoint vector,
                                                         VLMError* error) noexcept;

/// Rotates the selection counter-clockwise about its middle.
[[nodiscard]] VELAMO_API bool rotateSelectionByDegreeserror(VLMDesign& design, std::int32_t degrees,
                                                            VLMError* error) noexcept;

/// Scales the selection about its middle. In spite of its name, `percent` is the factor itself: 1.5 makes the selection
/// larger by half.
[[nodiscard]] VELAMO_API bool resizeSelectionByPercenterror(VLMDesign& design, float percent, VLMError* error) noexcept;

/// Mirrors the selection about the vertical line ("V") or the horizontal line ("H") through its middle. Any other
/// orientation fails with error 70.
[[nodiscard]] VELAMO_API bool flipSelectionerror(VLMDesign& design, std::string_view orientation,
                                                 VLMError* error) noexcept;

}  // namespace velamo
