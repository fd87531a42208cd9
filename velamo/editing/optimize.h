#pragma once

#include <string_view>

#include "velamo/api.h"
#include "velamo/model/design.h"

namespace velamo {

/// Brings the stitches into the form that machines of a design type ("DST", "PES", ...) take. Runs of jumps and colour
/// changes become one jump and a colour change on the spot for each; a jump at the very end goes; moves longer than a
/// record of the type holds are cut into pieces along their way (other types than those we write have no such limit);
/// a colour change that moves gives its move to a stitch of its own. Then the bounds are computed anew, jumps are
/// trimmed off the ends of the selection and the display range covers all stitches.
///
/// A merged move keeps the selection of its first stitch; new colour changes are not selected.
///
/// Takes time and memory in proportion to the stitches before and after. False, with nothing changed, when the moves
/// cannot be cut: one is not finite, is so large that taking the limit away from it changes nothing, or the list would
/// grow beyond four times its length and 2^19 stitches more; also when there is no memory for the new list.
VELAMO_API bool optimizeJumpsFor(VLMDesign& design, std::string_view designType) noexcept;

/// Takes jumps and colour changes at the beginning and the end of the selection out of it: from the first selected
/// stitch on, while stitches are selected jumps or colour changes, and the same backward from the last. True when any
/// was taken out. selectionActive stays as it is.
VELAMO_API bool trimSelectedJumps(VLMDesign& design) noexcept;

}  // namespace velamo
