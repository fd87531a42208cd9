#pragma once

#include <cstdint>

#include "velamo/api.h"
#include "velamo/model/design.h"

namespace velamo {

/// Edits of the stitches and of the colour blocks. Stitches that an edit does not touch keep their places: jumps bridge
/// what is taken out. All but insertJump end with the optimisation for the design's type. An index out of range changes
/// nothing and is no failure.
///
/// Each is false, with the design unchanged, when a move becomes too large or not finite (error 71), or without memory.

/// Inserts a jump before the stitch with the index and, where sewing would go straight from the stitch before into one
/// that moves, a tie on the spot behind it, selected as that stitch is. The new index of the stitch that was at
/// `index`; `index` itself where nothing was inserted.
VELAMO_API std::int32_t insertJumpatIndex(VLMDesign& design, VLMPoint vector, std::int32_t index) noexcept;

/// Takes the selected stitches out; colour changes stay, on the spot. Colour blocks in which nothing is sewn any more
/// go, with their threads. A design that loses its last stitch loses all threads, and has a square of 20 mm about the
/// origin as its bounds, so that there is something to draw on. selectionActive stays as it is.
[[nodiscard]] VELAMO_API bool deleteSelection(VLMDesign& design, VLMError* error = nullptr) noexcept;

/// Makes the selected stitches jumps, or jumps stitches.
[[nodiscard]] VELAMO_API bool switchSelectionToJumpserror(VLMDesign& design, bool toJumps, VLMError* error) noexcept;

/// Lets a new block begin at the first selected stitch, in the thread of the block that it cuts. Does nothing while
/// selectionActive is false. Error 72 when the block has no thread.
[[nodiscard]] VELAMO_API bool insertThreadBeforeSelection(VLMDesign& design, VLMError* error = nullptr) noexcept;

/// Removes the thread and lets its block join the one before. Without the first thread, every block takes the thread of
/// the next one: the colour changes stay.
[[nodiscard]] VELAMO_API bool deleteThreadAtIndexerror(VLMDesign& design, std::int32_t index, VLMError* error) noexcept;

/// Moves a colour block, with its thread, to another place in the sewing order; it is sewn where it was, but for its
/// first stitch, and the first of the design where a block is put before it: they become the colour change and give
/// their move to the jump before. A block without stitches is not moved.
[[nodiscard]] VELAMO_API bool moveThreadFromIndextoIndexerror(VLMDesign& design, std::int32_t from, std::int32_t to,
                                                              VLMError* error) noexcept;

}  // namespace velamo
