#pragma once

#include "velamo/api.h"
#include "velamo/model/design.h"

namespace velamo {

/// Sews a frame of long stitches around the design before anything else, to hold the fabric. `length` is the greatest
/// length of these stitches, `distance` the distance of the frame from the design, both in millimetres. The frame has a
/// thread of its own: black, or the colour nearest to black in the design's palette, with the tension, length and
/// visibility of the first thread.
///
/// Returns false and leaves the design unchanged on failure. `error` then holds 71 (a move becomes too large), 72 (the
/// design has no thread), 73 (the length is not positive, or the frame has no size or needs too many stitches) or the
/// system's error.
[[nodiscard]] VELAMO_API bool addBastingWithLengthinDistanceerror(VLMDesign& design, float length, float distance,
                                                                  VLMError* error) noexcept;

}  // namespace velamo
