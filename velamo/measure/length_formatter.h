#pragma once

#include <string>

#include "velamo/measure/value_transformer.h"
#include "velamo/platform/text/number_format.h"
#include "velamo/private_api.h"

namespace velamo {

/// Writes lengths in one unit and locale. It asks nothing when it writes, as a table of many rows needs it.
class VELAMO_PRIVATE_API LengthFormatter {
public:
    LengthFormatter(MeasurementUnit unit, const std::string& locale);
    /// In the unit of the user's preference file, as it is now, and the user's locale.
    [[nodiscard]] static LengthFormatter ofUser();

    /// As VLMValueTransformer::transformedValue writes it.
    [[nodiscard]] std::string text(float millimetres) const;

private:
    [[nodiscard]] std::string textInThirtySeconds(float inches) const;

    MeasurementUnit unit_;
    PatternNumberFormatter numbers_;
};

}  // namespace velamo
