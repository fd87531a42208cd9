#include "catalogue/number_range.h"

#include <algorithm>

#include "velamo/platform/text/plain_number.h"

namespace velamo {
namespace {

std::optional<double> parseDecimal(std::string_view text) {
    const auto isPartOfDecimal = [](char letter) { return letter == '.' || (letter >= '0' && letter <= '9'); };
    if (!std::all_of(text.begin(), text.end(), isPartOfDecimal)) return std::nullopt;
    return plainNumber<double>(text);
}

/// Whether the text is an end of a range that can be read; an empty one leaves `number` open.
bool readEnd(std::string_view text, std::optional<double>& number) {
    if (!text.empty()) number = parseDecimal(text);
    return text.empty() || number.has_value();
}

}  // namespace

std::optional<NumberRange> parseRange(std::string_view text) {
    constexpr std::string_view separator = "..";
    const auto split = text.find(separator);
    if (split == std::string_view::npos) {
        const auto number = parseDecimal(text);
        return number ? std::optional(NumberRange{number, number}) : std::nullopt;
    }
    NumberRange range;
    if (text == separator || !readEnd(text.substr(0, split), range.least) ||
        !readEnd(text.substr(split + separator.size()), range.most))
        return std::nullopt;
    if (range.least && range.most && *range.least > *range.most) return std::nullopt;
    return range;
}

}  // namespace velamo
