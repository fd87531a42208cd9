#pragma once

#include <cstdint>
#include <string>

#include "velamo/api.h"

namespace velamo {

/// An immutable RGB colour. Its components are fractions of full intensity (0.0 to 1.0) and are not clamped.
class VELAMO_API VLMColor {
public:
    /// Light grey, 0.8 in each component.
    constexpr VLMColor() noexcept = default;
    [[nodiscard]] static constexpr VLMColor initWithRedgreenblue(double red, double green, double blue) noexcept {
        return {red, green, blue};
    }

    [[nodiscard]] constexpr double red() const noexcept { return red_; }
    [[nodiscard]] constexpr double green() const noexcept { return green_; }
    [[nodiscard]] constexpr double blue() const noexcept { return blue_; }

    /// Exact equality of the three components, without tolerance.
    [[nodiscard]] constexpr bool isEqual(const VLMColor& other) const noexcept { return *this == other; }
    /// Returns 1000000 times red plus 1000 times green plus blue, each component times 255, so that pure red gives
    /// 255000000.
    [[nodiscard]] std::uint64_t hash() const noexcept;
    /// Returns a text such as "RGB color (255 / 0 / 0)".
    [[nodiscard]] std::string description() const;
    [[nodiscard]] constexpr VLMColor copy() const noexcept { return *this; }

    friend constexpr bool operator==(const VLMColor&, const VLMColor&) = default;

private:
    constexpr VLMColor(double red, double green, double blue) noexcept : red_(red), green_(green), blue_(blue) {}
    double red_ = 0.8;
    double green_ = 0.8;
    double blue_ = 0.8;
};

}  // namespace velamo
