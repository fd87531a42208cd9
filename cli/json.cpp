#include "cli/json.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <ostream>
#include <sstream>

#include "velamo/platform/text/harmless_text.h"
#include "velamo/platform/text/plain_number.h"

namespace velamo {
namespace {

Json nonFinite(double number) {
    if (std::isnan(number)) return "nan";
    return number < 0 ? "-inf" : "inf";
}

/// 0.1F as 0.1, where widening alone would give 0.10000000149011612.
double shortestDouble(float number) {
    std::array<char, 32> digits{};
    const auto written = std::to_chars(digits.data(), digits.data() + digits.size(), number);
    const auto shortest = plainNumber<double>({digits.data(), written.ptr});
    return shortest && static_cast<float>(*shortest) == number ? *shortest : double{number};
}

}  // namespace

Json jsonNumber(float number) {
    return std::isfinite(number) ? Json(shortestDouble(number)) : nonFinite(double{number});
}

Json jsonNumber(double number) {
    return std::isfinite(number) ? Json(number) : nonFinite(number);
}

Json jsonCount(float count) {
    constexpr float everyIntegerBelow = 9.0e18F;
    const bool isWhole = std::trunc(count) == count && std::abs(count) < everyIntegerBelow;
    return isWhole ? Json(static_cast<std::int64_t>(count)) : jsonNumber(count);
}

Json jsonText(const Text& text) {
    return text ? Json(*text) : Json();
}

std::string colorText(std::uint32_t number) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string text = "#";
    for (unsigned digit = 6; digit-- > 0;) text += digits[number >> 4 * digit & 0xFU];
    return text;
}

std::string textOf(const Json& json) {
    return harmlessJson(json.dump(-1, ' ', false, Json::error_handler_t::replace));
}

std::string listTextOf(const Json& list) {
    std::ostringstream text;
    {
        JsonListWriter writer(text);
        for (const Json& element : list) writer.next() << textOf(element);
    }
    return text.str();
}

std::ostream& JsonListWriter::next() {
    out_ << (isEmpty_ ? "[\n  " : ",\n  ");
    isEmpty_ = false;
    return out_;
}

JsonListWriter::~JsonListWriter() {
    out_ << (isEmpty_ ? "[]\n" : "\n]\n");
}

}  // namespace velamo
