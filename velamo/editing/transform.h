#pragma once

#include <cstdint>
#include <string_view>

#include "velamo/api.h"
#include "velamo/model/design.h"

namespace velamo {

/// Transforms of the selected stitches. A jump before each run of selected stitches carries the needle to where the run
/// begins now, and one behind it back, so that all other stitches keep their places; a run at the end of the design
/// needs no way back. Then the stitches are optimised for the design's type. Selection flags stay; so does
/// selectionActive. The middle is that of selectionRect.
///
/// Each is false, with the design unchanged, when a move becomes too large or not finite (error 71), or without memory.

/// Moves the whole design, selected or not, until its middle is the origin. Rounding may leave a remainder: it is tried
/// ten times at most. Where memory runs out between two times, the design stays as far as it was moved.
[[nodiscard]] VELAMO_API bool centerDesign(VLMDesign& design, VLMError* error = nullptr) noexcept;

/// `vector` in tenths of a millimetre.
[[nodiscard]] VELAMO_API bool moveSelectionByVectorerror(VLMDesign& design, VLMPoint vector, VLMError* error) noexcept;

/// Counter-clockwise about the middle of the selection.
[[nodiscard]] VELAMO_API bool rotateSelectionByDegreeserror(VLMDesign& design, std::int32_t degrees,
                                                            VLMError* error) noexcept;

/// `percent` is the factor itself, 1.5 makes the selection larger by half: the name is older than this meaning.
[[nodiscard]] VELAMO_API bool resizeSelectionByPercenterror(VLMDesign& design, float percent, VLMError* error) noexcept;

/// "V" mirrors about the vertical line through the middle of the selection, "H" about the horizontal one. Anything else
/// is error 70.
[[nodiscard]] VELAMO_API bool flipSelectionerror(VLMDesign& design, std::string_view orientation,
                                                 VLMError* error) noexcept;

}  // namespace velamo
