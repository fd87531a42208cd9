#pragma once

#include <cstdint>
#include <span>

#include "velamo/model/design.h"

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
/// end mark does. Returns the number of colour changes.
std::size_t readJanomeStitches(VLMDesign& design, std::span<const std::uint8_t> stream, JanomeDialect dialect);

/// The thread of an index in a Janome file; one without a key when the index stands for none.
[[nodiscard]] VLMThread janomeThread(std::int64_t index);

/// The same, but thread "220" where the palette has no colour for the index.
[[nodiscard]] VLMThread janomeThreadOrUsual(std::int64_t index);

/// Whether a file is large enough for `threads` by the test of the machines' software, threads * sizeEach + sizeBesides
/// in 32-bit arithmetic, which wraps around: a senseless number of threads may pass it.
[[nodiscard]] bool passesSizeTest(std::int32_t threads, std::uint32_t sizeEach, std::uint32_t sizeBesides,
                                  std::size_t fileSize) noexcept;

/// Whether a stitch, or the end mark and two more bytes, fits in the file from the offset on.
[[nodiscard]] bool isStitchOffset(std::int32_t offset, std::size_t fileSize) noexcept;

/// Appends the threads of two tables of 32-bit numbers that stand one behind the other from the offset on: an index for
/// each of the threads, then their tensions. A negative number of threads counts as 0. Returns false and appends
/// nothing when the file ends within the tables.
[[nodiscard]] bool readJanomeThreads(VLMDesign& design, std::span<const std::uint8_t> file, std::int64_t offset,
                                     std::int32_t threads);

}  // namespace velamo
