#pragma once

#include "velamo/api.h"
#include "velamo/model/design.h"

namespace velamo {

/// Appends the other design, to be sewn after this one: its origin comes to lie 1 mm to the right of this design's
/// origin and 1 mm below it. Its threads are recoloured to this design's palette, in `other` as well; its selected
/// stitches stay selected. A design may be appended to itself.
///
/// Returns false and leaves both designs unchanged when a move becomes too large (error 71) or memory runs out.
[[nodiscard]] VELAMO_API bool appendDesignerror(VLMDesign& design, VLMDesign& other, VLMError* error) noexcept;

}  // namespace velamo
