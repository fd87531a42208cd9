#include "velamo/model/color.h"

#include "velamo/platform/text/text.h"

namespace velamo {
namespace {

/// Truncation toward zero into 64 bits; what has no place there (negative beyond a signed number, or no number) becomes
/// 2^63.
std::uint64_t truncated(double value) noexcept {
    constexpr double twoTo63 = 9223372036854775808.0;
    constexpr std::uint64_t topBit = std::uint64_t{1} << 63;
    if (value >= twoTo63) return value < 2 * twoTo63 ? static_cast<std::uint64_t>(value - twoTo63) | topBit : topBit;
    if (value >= -twoTo63) return static_cast<std::uint64_t>(static_cast<std::int64_t>(value));
    return topBit;
}

}  // namespace

std::uint64_t VLMColor::hash() const noexcept {
    double sum = red_ * 255 * 1000000;
    sum += green_ * 255 * 1000;
    sum += blue_ * 255;
    return truncated(sum);
}

std::string VLMColor::description() const {
    return fillPattern("RGB color (%1.0f / %1.0f / %1.0f)", {red_ * 255, green_ * 255, blue_ * 255});
}

}  // namespace velamo
