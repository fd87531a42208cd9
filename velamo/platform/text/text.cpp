#include "velamo/platform/text/text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>

#include "velamo/platform/text/utf16.h"
#include "velamo/platform/text/utf8_characters.h"

namespace velamo {
namespace {

constexpr std::string_view absentText = "(null)";
constexpr std::string_view replacement = "\xEF\xBF\xBD";

bool isDigit(char character) noexcept {
    return character >= '0' && character <= '9';
}

/// Reads a run of digits and moves past it; numbers beyond any sensible width count as too large.
std::size_t takeNumber(std::string_view& text) noexcept {
    constexpr std::size_t tooLarge = 1000;
    std::size_t number = 0;
    while (!text.empty() && isDigit(text.front())) {
        number = std::min(number * 10 + static_cast<std::size_t>(text.front() - '0'), tooLarge);
        text.remove_prefix(1);
    }
    return number;
}

/// One place of a pattern, as in "%2$@", "%i" or "%1.2f".
struct Place {
    std::size_t position = 0;  // 1-based; 0: the next argument
    std::size_t width = 0;
    std::size_t precision = 6;
    char kind = 0;  // 0: no place at all
};

/// Reads the place whose percent sign has just been passed, and moves past it.
Place takePlace(std::string_view& rest) noexcept {
    Place place;
    place.width = takeNumber(rest);
    if (rest.substr(0, 1) == "$") {
        rest.remove_prefix(1);
        place.position = place.width;
        place.width = takeNumber(rest);
    }
    if (rest.substr(0, 1) == ".") {
        rest.remove_prefix(1);
        place.precision = takeNumber(rest);
    }
    if (rest.empty()) return place;
    place.kind = rest.front();
    rest.remove_prefix(1);
    return place;
}

std::string fixed(double value, std::size_t precision) {
    if (std::isnan(value)) return "nan";
    if (std::isinf(value)) return value < 0 ? "-inf" : "inf";
    std::array<char, 400> digits{};  // the largest double has 309 digits before the point
    constexpr std::size_t mostDecimals = 60;
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value, std::chars_format::fixed,
                                   static_cast<int>(std::min(precision, mostDecimals)));
    return {digits.data(), end.ptr};
}

struct TextOfArgument {
    const Place& place;
    std::string operator()(const Text& text) const { return text ? *text : std::string(absentText); }
    std::string operator()(std::int64_t number) const {
        return place.kind == 'f' ? fixed(static_cast<double>(number), place.precision) : std::to_string(number);
    }
    std::string operator()(double number) const { return fixed(number, place.kind == 'f' ? place.precision : 0); }
};

std::string filled(const Place& place, const PatternArgument& argument) {
    std::string text = std::visit(TextOfArgument{place}, argument);
    if (text.size() < place.width) text.insert(0, place.width - text.size(), ' ');
    return text;
}

bool isArgumentKind(char kind) noexcept {
    return kind == '@' || kind == 'i' || kind == 'd' || kind == 'f';
}

}  // namespace

std::string fillPattern(std::string_view pattern, const std::vector<PatternArgument>& arguments) {
    std::string text;
    std::size_t next = 0;
    while (!pattern.empty()) {
        const auto percent = std::min(pattern.find('%'), pattern.size());
        text += pattern.substr(0, percent);
        pattern.remove_prefix(percent);
        if (pattern.empty()) break;
        std::string_view rest = pattern.substr(1);
        const Place place = takePlace(rest);
        const std::size_t index = place.position > 0 ? place.position - 1 : next;
        if (place.kind == '%') {
            text += '%';
        } else if (isArgumentKind(place.kind) && index < arguments.size()) {
            text += filled(place, arguments[index]);
            if (place.position == 0) ++next;
        } else {
            text += pattern.substr(0, pattern.size() - rest.size());
        }
        pattern = rest;
    }
    return text;
}

std::string textFromLatin1(std::span<const std::uint8_t> bytes) {
    std::string text;
    text.reserve(bytes.size());
    for (const std::uint8_t byte : bytes) static_cast<void>(appendCodePoint(text, byte));
    return text;
}

std::string counted(std::int64_t count, std::string_view one, std::string_view many) {
    std::string text = std::to_string(count) + ' ';
    if (count == 1 || many.empty()) text += one;
    if (count != 1) text += many.empty() ? "s" : many;
    return text;
}

std::string validUtf8(std::string_view text) {
    std::string valid;
    valid.reserve(text.size());
    while (!text.empty()) {
        const auto character = takeCharacter(text);
        if (character.code >= 0)
            valid += character.bytes;
        else
            for (std::size_t i = 0; i < character.bytes.size(); ++i) valid += replacement;
    }
    return valid;
}

}  // namespace velamo
