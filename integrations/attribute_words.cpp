#include "integrations/attribute_words.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

#include "velamo/platform/text/text.h"

namespace velamo {

std::int64_t nearestWhole(float number) noexcept {
    return std::llround(number);
}

std::string withOneDecimal(float number) {
    std::array<char, 64> digits{};  // the greatest float has 39 before its point
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number, std::chars_format::fixed, 1);
    return {digits.data(), end.ptr};
}

std::string stitchesInWords(const DesignAttributes& design) {
    return counted(nearestWhole(std::max(design.stitches, 0.0F)), "stitch", "stitches");
}

std::string colorsInWords(const DesignAttributes& design) {
    return counted(nearestWhole(design.colors), "colour", "colours");
}

std::string attributesInWords(const DesignAttributes& design) {
    return withOneDecimal(design.widthInMillimetres) + " x " + withOneDecimal(design.heightInMillimetres) + " mm, " +
           stitchesInWords(design) + ", " + colorsInWords(design);
}

}  // namespace velamo
