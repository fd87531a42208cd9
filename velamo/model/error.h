#pragma once

#include <string>
#include <string_view>

#include "velamo/api.h"

namespace velamo {

/// Failures of this library.
inline constexpr std::string_view designErrorDomain = "de.velamo.vlmdesign.ErrorDomain";
/// Failures of the operating system; codes are its errno numbers.
inline constexpr std::string_view systemErrorDomain = "NSPOSIXErrorDomain";

/// Why an operation failed.
struct VELAMO_API VLMError {
    std::string_view domain;  // always one of the constants above
    int code = 0;             // 0: no error
    std::string recoverySuggestion;
    std::string failureReason;

    /// The text for a person: whichever text is set, else the system's own words for its code.
    [[nodiscard]] std::string message() const;
};

}  // namespace velamo
