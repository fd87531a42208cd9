#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "velamo/api.h"
#include "velamo/platform/graphics/painter.h"
#include "velamo/platform/system/byte_sink.h"

namespace velamo {

/// Writes a picture of lines and areas in true size. `painter` draws in millimetres, from an origin in the lower left
/// corner; it is called twice and must draw the same both times. The same drawing gives the same bytes, without a date.
///
/// Shapes keep their order, with these liberties, none of which can be seen: positions are true to a hundredth of a
/// millimetre, and exact when all of them lie on tenths of a millimetre or on their halves; of a shape that is soon
/// drawn again in the same place only the later one remains. A line of width 0 is as wide as a pixel of a common
/// printer, 1/300 inch.
///
/// The bytes go into the sink as they are made, so memory grows with the number of colours but not with the drawing.
/// Returns false when the sink refuses, memory ran out while drawing, or a side is not above 0 and at most 1,000 km;
/// some bytes may have gone into the sink by then. May throw std::bad_alloc and whatever `painter` and `sink` throw.
[[nodiscard]] VELAMO_API bool writeSvgPicture(double widthInMillimetres, double heightInMillimetres,
                                              const Painter& painter, const ByteSink& sink);
[[nodiscard]] VELAMO_API bool writePdfPicture(double widthInMillimetres, double heightInMillimetres,
                                              const Painter& painter, const ByteSink& sink);

/// The same in memory. Returns nullopt on failure.
[[nodiscard]] VELAMO_API std::optional<std::vector<std::uint8_t>> svgPicture(double widthInMillimetres,
                                                                             double heightInMillimetres,
                                                                             const Painter& painter);
[[nodiscard]] VELAMO_API std::optional<std::vector<std::uint8_t>> pdfPicture(double widthInMillimetres,
                                                                             double heightInMillimetres,
                                                                             const Painter& painter);

}  // namespace velamo
