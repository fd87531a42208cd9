#pragma once

#include <string_view>

#include "velamo/api.h"
#include "velamo/model/design.h"

namespace velamo {

/// Brings the stitches into the form that machines of a design type ("DST", "PES", ...) accept:
///
/// - A run of jumps and colour changes becomes one jump, followed by its colour changes on the spot.
/// - A jump at the very end is removed.
/// - A move longer than a record of the type holds is cut into pieces along its way. A type that we do not write has no
///   such record; its limit is 999999 tenths of a millimetre.
/// - A colour change that moves passes its move on to a stitch of its own.
///
/// A merged move is selected if its first stitch was; new colour changes are not selected. Afterwards the bounds are
/// computed anew, the selection is trimmed (see trimSelectedJumps) and the display range covers all stitches.
///
/// Time and memory are proportional to the number of stitches before and after. Returns false and changes nothing when
/// a move is not finite, when a move is so large that subtracting the limit does not change it, when n stitches would
/// become more than n + min(3n, 3 * 2^20) + 2^19, or when memory runs out.
VELAMO_API bool optimizeJumpsFor(VLMDesign& design, std::string_view designType) noexcept;

/// Deselects the jumps and colour changes at the beginning and at the end of the selection: from the first selected
/// stitch onward as long as the stitches are selected jumps or colour changes, and likewise backward from the last one.
/// Returns whether any stitch was deselected. Does not change selectionActive.
VELAMO_API bool trimSelectedJumps(VLMDesign& design) noexcept;

}  // namespace velamo
