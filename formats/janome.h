#pragma once

#include <cstdint>
#include <span>

#include "model/design.h"

namespace velamo {

/// What the formats of Janome machines share. Their stitches are pairs of signed bytes, moves dx dy in tenths of a
/// millimetre, y upward. 0x80 in place of dx is an escape and its second byte tells what follows:
///   0x01 dx dy   colour change
///   0x02 dx dy   jump; in JEF and JPX files 0x04 too
///   0x10         the end
/// After another second byte nothing follows: it is read as a stitch on the spot.

/// The two dialects of the stitch stream. A SEW file's colour change does not move, whatever stands behind it.
enum class JanomeDialect { jef, sew };

/// Appends the stitches of the stream and widens the reset bounds. An escape that the stream cuts short ends it, as the
/// end mark does. The number of colour changes.
std::size_t readJanomeStitches(VLMDesign& design, std::span<const std::uint8_t> stream, JanomeDialect dialect);

/// The thread of an index in a Janome file; one without a key when the index stands for none.
[[nodiscard]] VLMThread janomeThread(std::int64_t index);

/// The same, but thread "220" where the palette has no colour for the index.
[[nodiscard]] VLMThread janomeThreadOrUsual(std::int64_t index);

/// Appends the threads of two tables of `count` 32-bit numbers that stand one behind the other: indices, then tensions.
void readJanomeThreads(VLMDesign& design, std::span<const std::uint8_t> tables, std::size_t count);

}  // namespace velamo
