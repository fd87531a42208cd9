#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "velamo/model/design.h"
#include "velamo/private_api.h"

namespace velamo {

/// What one thread does between two colour changes.
struct BlockFigures {
    std::size_t thread = 0;     // the index of the block's thread, which a design may lack
    std::int64_t stitches = 0;  // moves that are neither jumps nor colour changes
    double sewnLength = 0;      // of thread on the cloth, in tenths of a millimetre
    friend bool operator==(const BlockFigures&, const BlockFigures&) = default;
};

/// What sewing a design takes.
struct SewingFigures {
    std::int64_t jumps = 0;            // that are not colour changes
    std::int64_t trims = 0;            // see jumpsOfTrim
    std::vector<BlockFigures> blocks;  // those with stitches, in the order of sewing
    double sewnLength = 0;             // of all blocks
    friend bool operator==(const SewingFigures&, const SewingFigures&) = default;
};

/// So many jumps in a row, with sewing in the same block before and after them, make a machine cut the thread. (Most
/// machines let the owner choose the number; this is how they leave the factory.)
inline constexpr std::int64_t jumpsOfTrim = 3;

/// The figures of a design, in one walk over its stitches. Moves that are not finite have no length. May throw
/// std::bad_alloc.
[[nodiscard]] VELAMO_PRIVATE_API SewingFigures sewingFiguresOf(const VLMDesign& design);

}  // namespace velamo
