#include <CLI/CLI.hpp>
#include <array>
#include <charconv>
#include <memory>
#include <ostream>

#include "cli/commands.h"
#include "cli/length.h"

namespace velamo {

ExitStatus parseLength(const std::string& text, std::optional<std::int32_t> unit, const Console& console) {
    const auto millimetres = transformerFor(unit).reverseTransformedValue(text).number().value_or(0);
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
