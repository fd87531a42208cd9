#include <cmath>

#include "fuzz/claims.h"
#include "fuzz/input_file.h"
#include "velamo/measure/value_transformer.h"
#include "velamo/platform/plist/property_list.h"
#include "velamo/platform/system/files.h"

namespace velamo::fuzz {
namespace {

void checkPreferences(Input bytes) {
    const auto file = inputFile("preferences.plist", bytes);
    const std::int32_t unit = measurementUnitIn(file);
    claim(unit == 0 || parsePropertyList(bytes), "what cannot be read names no unit");
    if (unit != 0)
        claim(VLMValueTransformer("en_US", [unit] { return unit; }).transformedValue(1).has_value(),
              "any unit will do");
}

/// How far a length may be from the text that was made of it: half a place, or the 32nd that it is cut to.
double precisionOf(MeasurementUnit unit) {
    if (unit == MeasurementUnit::millimetres) return 0.05;
    return unit == MeasurementUnit::decimalInches ? 0.005 * 25.4 : 25.4 / 32;
}

void checkLength(const std::string& text, const char* locale, MeasurementUnit unit) {
    const VLMValueTransformer transformer(locale, [unit] { return static_cast<std::int32_t>(unit); });
    const auto length = transformer.reverseTransformedValue(text).number();
    claim(length.has_value(), "a text states a number");
    auto shown = transformer.transformedValue(*length);
    claim(shown && !shown->empty(), "every number can be shown");
    // A denominator with the inch mark is none; the unit is the same without.
    if (unit == MeasurementUnit::fractionalInches) shown->pop_back();
    constexpr double mostWithoutGroups = 999;
    if (!(std::abs(*length) < mostWithoutGroups)) return;
    const auto again = transformer.reverseTransformedValue(*shown).number();
    claim(again && std::abs(*again - *length) < precisionOf(unit) + 1e-3, "what is shown states the same length");
}

}  // namespace
}  // namespace velamo::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace velamo;
    using enum MeasurementUnit;
    fuzz::checkPreferences({data, size});
    const std::string text(fuzz::textOf({data, size}));
    for (const char* locale : {"en_US", "de_DE"})
        for (const auto unit : {millimetres, decimalInches, fractionalInches}) fuzz::checkLength(text, locale, unit);
    return 0;
}
