#pragma once

#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <string>
#include <string_view>

namespace velamo {

/// Appends `value` divided by ten to the power of `decimals`, without any needless digit: ".5", "-12", "3.07".
inline void appendDecimal(std::string& text, std::int64_t value, int decimals) {
    if (value < 0) text += '-';
    std::array<char, 24> digits{};
    const auto written = std::to_chars(digits.data(), digits.data() + digits.size(), value < 0 ? -value : value);
    std::string_view all(digits.data(), static_cast<std::size_t>(written.ptr - digits.data()));
    if (decimals == 0 || value == 0) {
        text += all;
        return;
    }
    const auto places = static_cast<std::size_t>(decimals);
    if (all.size() > places) text += all.substr(0, all.size() - places);
    const std::string_view behind = all.size() > places ? all.substr(all.size() - places) : all;
    const std::size_t lastDigit = behind.find_last_not_of('0');
    if (lastDigit == std::string_view::npos) return;
    text += '.';
    text.append(places - behind.size(), '0');
    text += behind.substr(0, lastDigit + 1);
}

/// The same of a real number, rounded to so many decimals.
inline void appendRounded(std::string& text, double value, int decimals) {
    appendDecimal(text, std::llround(value * std::pow(10, decimals)), decimals);
}

inline std::string roundedText(double value, int decimals) {
    std::string text;
    appendRounded(text, value, decimals);
    return text;
}

}  // namespace velamo
