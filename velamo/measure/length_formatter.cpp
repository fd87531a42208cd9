#include "velamo/measure/length_formatter.h"

#include <cmath>
#include <cstdlib>

#include "velamo/measure/inches.h"
#include "velamo/platform/system/user.h"

namespace velamo {
namespace {

/// How numbers in the unit are written; of 32nds, those alone that are not finite.
const char* patternFor(MeasurementUnit unit) noexcept {
    if (unit == MeasurementUnit::decimalInches) return "#,##0.00";
    return unit == MeasurementUnit::fractionalInches ? "0" : "#,##0.0";
}

/// A count of 32nds above 0 in lowest terms: "15/32", "1/2".
std::string reducedThirtySeconds(std::int32_t count) {
    std::int32_t denominator = 32;
    while (count % 2 == 0) {
        count /= 2;
        denominator /= 2;
    }
    return std::to_string(count) + '/' + std::to_string(denominator);
}

}  // namespace

LengthFormatter::LengthFormatter(MeasurementUnit unit, const std::string& locale)
    : unit_(unit), numbers_(patternFor(unit), locale) {}

LengthFormatter LengthFormatter::ofUser() {
    return {static_cast<MeasurementUnit>(measurementUnitOfUser()), numberLocaleOfUser()};
}

std::string LengthFormatter::text(float millimetres) const {
    // The quotient is made in double precision and only then narrowed: it decides which 32nd a length is cut to.
    const auto inches = static_cast<float>(millimetres / millimetresPerInch);
    switch (unit_) {
        case MeasurementUnit::decimalInches:
            return numbers_.format(inches) + inchMark;
        case MeasurementUnit::fractionalInches:
            return textInThirtySeconds(inches) + inchMark;
        default:
            return numbers_.format(millimetres) + " mm";
    }
}

std::string LengthFormatter::textInThirtySeconds(float inches) const {
    if (!std::isfinite(inches)) return numbers_.format(inches);
    const std::int32_t whole = integerOf(inches);
    const float fraction = inches - std::trunc(inches);
    const std::int32_t thirtySeconds = std::abs(integerOf(fraction * 32));
    std::string text;
    if (whole != 0 || fraction == 0) text = std::to_string(whole);
    if (thirtySeconds == 0) return text;
    if (whole != 0) text += ' ';
    if (whole == 0 && fraction < 0) text += '-';
    return text + reducedThirtySeconds(thirtySeconds);
}

}  // namespace velamo
