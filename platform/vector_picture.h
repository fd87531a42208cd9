#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "platform/painter.h"

namespace velamo {

/// Pictures of lines and areas in true size. `painter` draws in millimetres, the origin being the lower left corner.
/// Nothing when memory ran out or the size is not positive and finite.
[[nodiscard]] std::optional<std::vector<std::uint8_t>> svgPicture(double widthInMillimetres, double heightInMillimetres,
                                                                  const Painter& painter);
[[nodiscard]] std::optional<std::vector<std::uint8_t>> pdfPicture(double widthInMillimetres, double heightInMillimetres,
                                                                  const Painter& painter);

}  // namespace velamo
