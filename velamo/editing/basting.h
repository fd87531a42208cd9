#pragma once

#include "velamo/api.h"
#include "velamo/model/design.h"

namespace velamo {

/// Sews a frame of long stitches around the design before anything else, to hold the fabric: `length` is that of its
/// stitches at most, `distance` its distance from the design, both in millimetres. It has a black thread of its own, of
/// the design's palette (which may have no black, then its nearest colour), with the tension, length and visibility of
/// the first thread. False, with the design unchanged: 72 (the design has no thread), 73 (the length is not positive,
/// or the frame has no size or would take too many stitches) or 71 (moves too large) in `error`.
[[nodiscard]] VELAMO_API bool addBastingWithLengthinDistanceerror(VLMDesign& design, float length, float distance,
                                                                  VLMError* error) noexcept;

}  // namespace velamo
