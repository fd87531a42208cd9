#pragma once

#include <cstdint>

#include "velamo/api.h"
#include "velamo/model/design.h"

namespace velamo {

/// Edits of the stitches and of the colour blocks. Stitches that an edit does not concern stay where they are: jumps
/// bridge what was taken out. Every edit but insertJump ends with optimizeJumpsFor the design's type. An index out of
/// range changes nothing and is not a failure.
///
/// An edit that returns bool returns false and leaves the design unchanged when a move becomes too large or is not
/// finite (error 71) or when memory runs out.

/// Inserts a jump by `vector` (tenths of a millimetre) before the stitch at `index`. If sewing would otherwise go
/// straight from the stitch before it into a stitch that moves, a stitch on the spot follows the jump to tie the
/// thread; it is selected if the stitch at `index` is. Bounds and display range stay as they are. Returns the new index
/// of the stitch that was at `index`, or `index` itself when nothing was inserted (index out of range, or no memory).
VELAMO_API std::int32_t insertJumpatIndex(VLMDesign& design, DesignPoint vector, std::int32_t index) noexcept;

/// Removes the selected stitches. Their colour changes stay, on the spot. Colour blocks in which nothing is sewn any
/// more disappear together with their threads. A design that loses its last stitch loses all its threads; its bounds
/// become a square of 20 mm around the origin, so that there is an area to draw on. selectionActive stays as it is.
[[nodiscard]] VELAMO_API bool deleteSelection(VLMDesign& design, VLMError* error = nullptr) noexcept;

/// Turns the selected stitches into jumps, or back into stitches when `toJumps` is false.
[[nodiscard]] VELAMO_API bool switchSelectionToJumpserror(VLMDesign& design, bool toJumps, VLMError* error) noexcept;

/// Starts a new block at the first selected stitch, with a copy of the thread of the block that it splits. Does nothing
/// while selectionActive is false. Fails with error 72 when that block has no thread.
[[nodiscard]] VELAMO_API bool insertThreadBeforeSelection(VLMDesign& design, VLMError* error = nullptr) noexcept;

/// Removes the thread and joins its block to the one before. When the first thread is removed, the colour changes stay
/// and every block takes the thread of the next one. A thread without a block is not removed.
[[nodiscard]] VELAMO_API bool deleteThreadAtIndexerror(VLMDesign& design, std::int32_t index, VLMError* error) noexcept;

/// Moves a colour block with its thread to another place in the sewing order, so that it becomes block `to`. Its
/// stitches stay where they are on the cloth, with two exceptions: its first stitch, and the design's first stitch when
/// the block is put before that one, become colour changes and pass their move on to the jump before them. A block
/// without stitches is not moved.
[[nodiscard]] VELAMO_API bool moveThreadFromIndextoIndexerror(VLMDesign& design, std::int32_t from, std::int32_t to,
                                                              VLMError* error) noexcept;

}  // namespace velamo
