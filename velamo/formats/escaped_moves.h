#pragma once

#include <cstdint>

#include "velamo/formats/byte_writer.h"
#include "velamo/formats/whole_moves.h"
#include "velamo/model/design.h"

namespace velamo {

/// Appends the design's stitches as EXP and JEF files have them: pairs of signed bytes, with escapes before jumps and
/// colour changes. The two formats differ in a colour change that is no jump: in JEF files its move follows the escape
/// at once (`changeSize` 2), in EXP files as a pair of its own behind two bytes that mean nothing (4).
inline void writeEscapedMoves(ByteWriter& out, const VLMDesign& design, std::size_t changeSize) {
    constexpr std::uint64_t change = 0x0180;
    constexpr std::uint64_t jump = 0x0280;
    constexpr std::uint64_t changeAndJump = jump << 32 | change;
    WholePairs moves;
    out.records(std::span(design.stitches().all()), [&](const VLMStitch& stitch) -> ByteRecord {
        const std::uint64_t move = byteMove(moves.take(stitch.deltaX(), stitch.deltaY()));
        if (!stitch.isJumpStitch() && !stitch.isColorChange()) return {move, 2};
        if (!stitch.isColorChange()) return {move << 16 | jump, 4};
        if (stitch.isJumpStitch()) return {move << 48 | changeAndJump, 8};
        return {move << 8 * changeSize | change, changeSize + 2};
    });
}

}  // namespace velamo
