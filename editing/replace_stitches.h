#pragma once

#include <span>
#include <string_view>

#include "model/design.h"

namespace velamo {

/// Gives the design the stitches of an edited list, optimised for the design type: what optimizeJumpsFor does, from
/// another list than the design's own. Nothing is changed where it gives false, or throws for want of memory. The list
/// may be the design's own.
[[nodiscard]] bool replaceStitches(VLMDesign& design, std::span<const VLMStitch> stitches, std::string_view designType);

/// The same for the design's own type, as every edit ends; `error` says why it is false.
[[nodiscard]] bool finishEdit(VLMDesign& design, std::span<const VLMStitch> stitches, VLMError* error);

}  // namespace velamo
