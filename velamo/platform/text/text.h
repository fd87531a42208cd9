#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "velamo/platform/text/optional_text.h"
#include "velamo/private_api.h"

namespace velamo {

/// The letter of the Latin alphabet as a capital; any other character as it is.
[[nodiscard]] constexpr char upperCase(char letter) noexcept {
    return letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 'a' + 'A') : letter;
}

/// The letter as a small one.
[[nodiscard]] constexpr char lowerCase(char letter) noexcept {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

/// What fills a place in a pattern.
using PatternArgument = std::variant<Text, std::int64_t, double>;

/// Fills a message pattern: "%@" takes a text (absent: "(null)"), "%i" and "%d" a whole number, "%W.Pf" a real number,
/// "%%" is a percent sign, and "%2$@" names its argument, so that a translation may change the order. Patterns come
/// from files: a place without an argument stays as it stands, a number in a text's place is written out, and a real
/// number in a whole number's place is rounded.
[[nodiscard]] VELAMO_PRIVATE_API std::string fillPattern(std::string_view pattern,
                                                         const std::vector<PatternArgument>& arguments);

/// ISO Latin-1 bytes as UTF-8.
[[nodiscard]] std::string textFromLatin1(std::span<const std::uint8_t> bytes);

/// "1 design", "2 designs"; the word for many is that for one with an "s" where none is given.
[[nodiscard]] VELAMO_PRIVATE_API std::string counted(std::int64_t count, std::string_view one,
                                                     std::string_view many = {});

/// The text with every byte that is no UTF-8 replaced by U+FFFD.
[[nodiscard]] std::string validUtf8(std::string_view text);

}  // namespace velamo
