#include <CLI/CLI.hpp>
#include <memory>
#include <ostream>

#include "cli/commands.h"
#include "cli/length.h"

namespace velamo {

void describeUnit(CLI::App& command, std::optional<std::int32_t>& unit) {
    command
        .add_option("--unit", unit,
                    "0 millimetres, 1 decimal inches, 2 fractional inches; without it, the preference file decides")
        ->check(CLI::IsMember({0, 1, 2}));
}

ExitStatus formatLength(double millimetres, std::optional<std::int32_t> unit, const Console& console) {
    console.out << transformerFor(unit).transformedValue(millimetres).value_or("") << '\n';
    return ExitStatus::success;
}

void describeFormatLength(CLI::App& program, Action& chosen) {
    struct Options {
        double millimetres = 0;
        std::optional<std::int32_t> unit;
    };
    auto* command = program.add_subcommand("format-length", "Write a length in the user's measurement unit");
    const auto options = std::make_shared<Options>();
    command->add_option("MM", options->millimetres, "The length in millimetres")->required();
    describeUnit(*command, options->unit);
    command->callback([&chosen, options] {
        chosen = [options](const Console& console) {
            return formatLength(options->millimetres, options->unit, console);
        };
    });
}

}  // namespace velamo
