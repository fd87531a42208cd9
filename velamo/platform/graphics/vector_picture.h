#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "velamo/api.h"
#include "velamo/platform/graphics/painter.h"
#include "velamo/platform/system/byte_sink.h"

namespace velamo {

/// Pictures of lines and areas in true size. `painter` draws in millimetres, the origin being the lower left corner; it
/// is asked twice and has to draw the same both times. The same drawing gives the same bytes: no date is in them.
///
/// Shapes are there in their order, with these liberties, none of which can be seen: places are true to a hundredth of
/// a millimetre, exact where all lie on tenths or their halves; of a shape that is soon drawn again on the same place,
/// the latter remains. A line of no width is as wide as a pixel of a common printer, 1/300 inch.
///
/// The bytes go into the sink as they come, and memory does not grow with the drawing, but for its inks. False when the
/// sink refuses, memory ran out or a side is not above 0 and up to 1,000 km; part of the bytes may have gone then.
[[nodiscard]] VELAMO_API bool writeSvgPicture(double widthInMillimetres, double heightInMillimetres,
                                              const Painter& painter, const ByteSink& sink);
[[nodiscard]] VELAMO_API bool writePdfPicture(double widthInMillimetres, double heightInMillimetres,
                                              const Painter& painter, const ByteSink& sink);

/// The same in memory. Nothing on failure.
[[nodiscard]] VELAMO_API std::optional<std::vector<std::uint8_t>> svgPicture(double widthInMillimetres,
                                                                             double heightInMillimetres,
                                                                             const Painter& painter);
[[nodiscard]] VELAMO_API std::optional<std::vector<std::uint8_t>> pdfPicture(double widthInMillimetres,
                                                                             double heightInMillimetres,
                                                                             const Painter& painter);

}  // namespace velamo
