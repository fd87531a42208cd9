#pragma once

#include <any>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <typeinfo>

#include "platform/number_format.h"
#include "platform/text.h"

namespace velamo {

/// The unit in which a person wants to see lengths.
enum class MeasurementUnit : std::int32_t { millimetres = 0, decimalInches = 1, fractionalInches = 2 };

/// The preference file of the user's editor, "~/Library/Preferences/de.velamo.app.plist".
[[nodiscard]] std::filesystem::path preferenceFile();

/// The integer under the key "MeasurementUnit" of the preference file, read anew on every call; 0 when the file or the key is missing.
[[nodiscard]] std::int32_t measurementUnitOfUser();

}  // namespace velamo
