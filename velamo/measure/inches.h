#pragma once

#include <cmath>
#include <cstdint>
#include <limits>

namespace velamo {

inline constexpr double millimetresPerInch = 25.4;
inline constexpr char inchMark = '"';

/// The number without its fraction; the nearest there is when it does not fit, 0 for not-a-number.
[[nodiscard]] inline std::int32_t integerOf(double number) noexcept {
    using Limits = std::numeric_limits<std::int32_t>;
    if (std::isnan(number)) return 0;
    if (number >= Limits::max()) return Limits::max();
    if (number <= Limits::min()) return Limits::min();
    return static_cast<std::int32_t>(number);
}

}  // namespace velamo
