#pragma once

#include <cstdint>
#include <string>

#include "velamo/formats/design_attributes.h"

namespace velamo {

/// A count, or a length in whole units, as hosts search it; halves are rounded away from zero.
[[nodiscard]] std::int64_t nearestWhole(float number) noexcept;

/// "123.4", whatever the user's language: people search for it as a word.
[[nodiscard]] std::string withOneDecimal(float number);

/// "5120 stitches", "1 stitch"; never fewer than none, which a file of more threads than stitches would have.
[[nodiscard]] std::string stitchesInWords(const DesignAttributes& design);
/// "7 colours", "1 colour".
[[nodiscard]] std::string colorsInWords(const DesignAttributes& design);

/// "123.4 x 56.7 mm, 5120 stitches, 7 colours".
[[nodiscard]] std::string attributesInWords(const DesignAttributes& design);

}  // namespace velamo
