#pragma once

#include <cstdint>

namespace velamo {

/// A colour as the eye sees it (CIE L*a*b*, white of D50): how light, how red rather than green, how yellow rather than
/// blue.
struct LabColor {
    double lightness = 0;  // 0 to 100
    double redness = 0;
    double yellowness = 0;
};

/// The colour that a screen shows for 0xRRGGBB (sRGB).
[[nodiscard]] LabColor labColor(std::uint32_t color);

/// How different two colours look (CIEDE2000): 1 is what an eye can just tell, black and white are 100 apart.
[[nodiscard]] double colorDifference(const LabColor& one, const LabColor& other);

}  // namespace velamo
