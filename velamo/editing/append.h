#pragma once

#include "velamo/api.h"
#include "velamo/model/design.h"

namespace velamo {

/// Sews the other design behind this one: its origin comes to lie 1 mm right of and below this design's. Its threads
/// are recoloured to this design's palette, in the other design as well, and its selected stitches stay selected.
/// False, with both designs unchanged, when a move becomes too large (error 71) or without memory. A design may be
/// appended to itself.
[[nodiscard]] VELAMO_API bool appendDesignerror(VLMDesign& design, VLMDesign& other, VLMError* error) noexcept;

}  // namespace velamo
