#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "cli/console.h"
#include "velamo/measure/value_transformer.h"

namespace CLI {
class App;
}

namespace velamo {

/// The transformer for the unit, or for the unit of the user's preferences.
[[nodiscard]] inline VLMValueTransformer transformerFor(std::optional<std::int32_t> unit) {
    return unit ? VLMValueTransformer(static_cast<MeasurementUnit>(*unit)) : VLMValueTransformer();
}

/// Adds the option "--unit" to a subcommand.
void describeUnit(CLI::App& command, std::optional<std::int32_t>& unit);

/// Prints a length in millimetres as text in the unit.
[[nodiscard]] ExitStatus formatLength(double millimetres, std::optional<std::int32_t> unit, const Console& console);

/// Prints the length that a text states in millimetres, with enough digits to be read back exactly: whatever
/// formatLength prints, and more. A text without a number is a failure.
[[nodiscard]] ExitStatus parseLength(const std::string& text, std::optional<std::int32_t> unit, const Console& console);

}  // namespace velamo
