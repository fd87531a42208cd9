#include "velamo/platform/text/plain_number.h"

#include <stdlib.h>  // strtod_l

#include <algorithm>
#include <array>
#include <cmath>
#include <string>

#include "velamo/platform/text/plain_locale.h"
#include "velamo/platform/text/text.h"

namespace velamo {
namespace {

bool isDigit(char letter) noexcept {
    return letter >= '0' && letter <= '9';
}

std::size_t countDigits(std::string_view text) noexcept {
    return static_cast<std::size_t>(std::find_if_not(text.begin(), text.end(), isDigit) - text.begin());
}

bool startsWithWord(std::string_view text, std::string_view word) noexcept {
    return text.size() >= word.size() && std::equal(word.begin(), word.end(), text.begin(),
                                                    [](char one, char other) { return one == lowerCase(other); });
}

/// The length of "nan" and what may stand behind it, "(...)".
std::size_t lengthOfNan(std::string_view text) noexcept {
    constexpr std::size_t word = 3;
    if (text.substr(word, 1) != "(") return word;
    const auto isInside = [](char letter) {
        return isDigit(letter) || letter == '_' || (lowerCase(letter) >= 'a' && lowerCase(letter) <= 'z');
    };
    const auto end = std::find_if_not(text.begin() + word + 1, text.end(), isInside);
    return end != text.end() && *end == ')' ? static_cast<std::size_t>(end - text.begin()) + 1 : word;
}

/// The length of the number without its sign; 0 where there is none.
std::size_t lengthOfNumber(std::string_view text) noexcept {
    for (const std::string_view word : {"infinity", "inf"})
        if (startsWithWord(text, word)) return word.size();
    if (startsWithWord(text, "nan")) return lengthOfNan(text);
    const std::size_t whole = countDigits(text);
    std::size_t length = whole;
    if (text.substr(whole, 1) == ".") {
        const std::size_t decimals = countDigits(text.substr(whole + 1));
        if (whole + decimals > 0) length += 1 + decimals;
    }
    const bool hasExponent = length > 0 && length < text.size() && lowerCase(text[length]) == 'e';
    if (!hasExponent) return length;
    std::size_t exponent = length + 1;
    const auto sign = text.substr(exponent, 1);
    if (sign == "+" || sign == "-") ++exponent;
    const std::size_t digits = countDigits(text.substr(exponent));
    return digits == 0 ? length : exponent + digits;
}

/// Whether the digits say another number than 0.
bool hasValue(std::string_view number) noexcept {
    const auto digits = number.substr(0, number.find_first_of("eE"));
    return std::any_of(digits.begin(), digits.end(), [](char letter) { return letter >= '1' && letter <= '9'; });
}

/// What the library's function makes of the digits, behind which it wants a zero.
template <class Number>
Number converted(std::string_view digits, Number (*convert)(const char*, char**, locale_t)) {
    std::array<char, 64> room{};
    if (digits.size() >= room.size()) return convert(std::string(digits).c_str(), nullptr, plainLocale());
    std::copy(digits.begin(), digits.end(), room.begin());
    return convert(room.data(), nullptr, plainLocale());
}

template <class Number>
std::optional<ScannedNumber<Number>> scan(std::string_view text, Number (*convert)(const char*, char**, locale_t)) {
    const std::size_t sign = text.starts_with('-') ? 1 : 0;
    const std::size_t length = lengthOfNumber(text.substr(sign));
    if (length == 0) return std::nullopt;
    const auto number = text.substr(0, sign + length);
    ScannedNumber<Number> scanned{.value = converted(number, convert), .length = number.size()};
    const bool isWord = !isDigit(number[sign]) && number[sign] != '.';
    scanned.fits = isWord || (!std::isinf(scanned.value) && (scanned.value != 0 || !hasValue(number)));
    return scanned;
}

/// Without memory for a very long number there is none.
template <class Number>
std::optional<ScannedNumber<Number>> scanSafely(std::string_view text,
                                                Number (*convert)(const char*, char**, locale_t)) noexcept {
    try {
        return scan(text, convert);
    } catch (...) {
        return std::nullopt;
    }
}

}  // namespace

std::optional<ScannedNumber<float>> scanFloat(std::string_view text) noexcept {
    return scanSafely<float>(text, ::strtof_l);
}

std::optional<ScannedNumber<double>> scanDouble(std::string_view text) noexcept {
    return scanSafely<double>(text, ::strtod_l);
}

}  // namespace velamo
