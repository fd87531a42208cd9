#pragma once

#include <string>
#include <string_view>

#include "velamo/api.h"

namespace velamo {

/// The domain of failures that this library finds; each operation lists its codes.
inline constexpr std::string_view designErrorDomain = "de.velamo.vlmdesign.ErrorDomain";
/// The domain of failures of the operating system; its codes are the errno numbers.
inline constexpr std::string_view systemErrorDomain = "NSPOSIXErrorDomain";

/// Why an operation failed.
struct VELAMO_API VLMError {
    std::string_view domain;  // always one of the constants above
    int code = 0;             // 0: no error
    std::string recoverySuggestion;
    std::string failureReason;

    /// Returns the text to show to a person: recoverySuggestion, else failureReason, else the system's own words for
    /// the code.
    [[nodiscard]] std::string message() const;
};

}  // namespace velamo
