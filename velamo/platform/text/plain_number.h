#pragma once

#include <charconv>
#include <concepts>
#include <cstddef>
#include <optional>
#include <string_view>
#include <system_error>

#include "velamo/private_api.h"

namespace velamo {

/// A number that a text starts with.
template <class Number>
struct ScannedNumber {
    Number value{};          // infinite or 0 where it does not fit; a whole number is 0 then
    std::size_t length = 0;  // in the text
    bool fits = true;        // false: larger than the type holds, or closer to 0 though it is not 0
};

/// The number at the start of a text, as the C locale writes it, whatever locale the program is in: a minus or nothing,
/// digits with or without a point, and an exponent; or "inf", "infinity", "nan", in any case. No space, no plus, no
/// hexadecimal digits. Rounded once, to the nearest number of the type. Returns nullopt when the text does not start
/// with a number. Not every system's library has std::from_chars for such numbers.
[[nodiscard]] VELAMO_PRIVATE_API std::optional<ScannedNumber<float>> scanFloat(std::string_view text) noexcept;
[[nodiscard]] VELAMO_PRIVATE_API std::optional<ScannedNumber<double>> scanDouble(std::string_view text) noexcept;

template <std::integral Number>
[[nodiscard]] std::optional<ScannedNumber<Number>> scanPlainNumber(std::string_view text) noexcept {
    ScannedNumber<Number> scanned;
    const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), scanned.value);
    if (failure == std::errc::invalid_argument) return std::nullopt;
    scanned.length = static_cast<std::size_t>(end - text.data());
    scanned.fits = failure == std::errc();
    return scanned;
}
template <std::same_as<float> Number>
[[nodiscard]] std::optional<ScannedNumber<float>> scanPlainNumber(std::string_view text) noexcept {
    return scanFloat(text);
}
template <std::same_as<double> Number>
[[nodiscard]] std::optional<ScannedNumber<double>> scanPlainNumber(std::string_view text) noexcept {
    return scanDouble(text);
}

/// The number that the whole text is, or nullopt when it is not a number.
template <class Number>
[[nodiscard]] std::optional<Number> plainNumber(std::string_view text) noexcept {
    const auto scanned = scanPlainNumber<Number>(text);
    const bool isWhole = scanned && scanned->fits && scanned->length == text.size();
    return isWhole ? std::optional(scanned->value) : std::nullopt;
}

}  // namespace velamo
