#include <CLI/CLI.hpp>
#include <array>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <memory>
#include <ostream>
#include <utility>

#include "cli/commands.h"
#include "cli/length.h"
#include "velamo/platform/system/user.h"
#include "velamo/platform/text/number_format.h"

namespace velamo {
namespace {

constexpr std::string_view inchMark = "\"";

/// The text with a single blank between its words, where the transformer would take two for a missing number.
std::string withSingleBlanks(std::string_view text) {
    constexpr std::string_view blanks = " \t";
    std::string words;
    for (const char letter : text) {
        const bool isBlank = blanks.find(letter) != blanks.npos;
        if (!isBlank || !words.ends_with(' ')) words += isBlank ? ' ' : letter;
    }
    return words;
}

/// What a person writes: the number, and the unit that stands behind it, if it is one of these. The transformer would
/// take the unit for a part of a fraction's last number.
struct Length {
    std::string number;
    std::optional<std::int32_t> unit;
};

Length lengthIn(std::string_view text) {
    constexpr auto inches = static_cast<std::int32_t>(MeasurementUnit::decimalInches);
    constexpr auto millimetres = static_cast<std::int32_t>(MeasurementUnit::millimetres);
    text = withoutWhiteSpaceAround(text);
    for (const auto& [end, unit] : {std::pair{inchMark, inches}, std::pair{std::string_view("in"), inches},
                                    std::pair{std::string_view("mm"), millimetres}}) {
        if (!text.ends_with(end)) continue;
        // A length below 1/32 inch is printed as the mark alone.
        if (text == inchMark) return {"0", unit};
        text.remove_suffix(end.size());
        return {std::string(withoutWhiteSpaceAround(text)), unit};
    }
    return {std::string(text), std::nullopt};
}

/// Whether the transformer finds a number where it looks for one; else it takes 0.
bool hasNumber(const std::string& text) {
    const PlainNumberFormatter formatter(numberLocaleOfUser());
    const std::size_t slash = text.find('/');
    if (slash == text.npos) return scanNumber(text, formatter.marks()).has_value();
    const std::string_view whole = withoutWhiteSpaceAround(std::string_view(text).substr(0, slash));
    const std::size_t blank = whole.find(' ');
    return formatter.parse(whole.substr(0, blank)) && (blank == whole.npos || formatter.parse(whole.substr(blank + 1)));
}

}  // namespace

ExitStatus parseLength(const std::string& text, std::optional<std::int32_t> unit, const Console& console) {
    const Length length = lengthIn(withSingleBlanks(text));
    const VLMValueTransformer transformer = transformerFor(length.unit ? length.unit : unit);
    const double millimetres = transformer.reverseTransformedValue(length.number).number().value_or(0);
    if (!hasNumber(length.number) || !std::isfinite(millimetres)) {
        reportProblem(console, "'" + text + "'", "There is no number in this.", EINVAL);
        return ExitStatus::failure;
    }
    std::array<char, 32> digits{};
    const auto written = std::to_chars(digits.data(), digits.data() + digits.size(), millimetres);
    console.out << std::string_view(digits.data(), static_cast<std::size_t>(written.ptr - digits.data())) << '\n';
    return ExitStatus::success;
}

void describeParseLength(CLI::App& program, Action& chosen) {
    struct Options {
        std::string text;
        std::optional<std::int32_t> unit;
    };
    auto* command = program.add_subcommand("parse-length", "Read a length such as '0.5 in' and print its millimetres");
    const auto options = std::make_shared<Options>();
    command->add_option("TEXT", options->text, "The length; without a unit of its own it is in the user's")->required();
    describeUnit(*command, options->unit);
    command->callback([&chosen, options] {
        chosen = [options](const Console& console) { return parseLength(options->text, options->unit, console); };
    });
}

}  // namespace velamo
