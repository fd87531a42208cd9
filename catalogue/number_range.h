#pragma once

#include <optional>
#include <string_view>

namespace velamo {

/// The numbers from `least` to `most`, both included; a missing end is open.
struct NumberRange {
    std::optional<double> least = {};
    std::optional<double> most = {};
    friend bool operator==(const NumberRange&, const NumberRange&) = default;
};

/// What parseRange reads, in words for a person.
inline constexpr std::string_view rangeForms = "a number such as 50, or a range such as 50..100, ..100 or 50..";

/// Reads "50..100", "..100", "50.." and "50" (that number alone). Numbers are plain decimals without sign ("12.5").
/// Nothing for any other text, and for a range whose end lies before its start.
[[nodiscard]] std::optional<NumberRange> parseRange(std::string_view text);

}  // namespace velamo
