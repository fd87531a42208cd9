#pragma once

#include <exception>
#include <span>
#include <string_view>
#include <utility>

#include "velamo/model/error.h"
#include "velamo/private_api.h"

namespace velamo {

/// The English text of an error code; other languages stand in the string table "VLMDesign" under "ERROR_<code>".
struct ErrorText {
    int code;
    std::string_view text;
};

/// Which text of the error carries the message.
enum class ErrorTextKey { recoverySuggestion, failureReason };

/// Fills the slot, if there is one, with the code and its text in the user's language. Always returns false.
bool fail(std::span<const ErrorText> texts, int code, VLMError* error,
          ErrorTextKey key = ErrorTextKey::recoverySuggestion);

/// Fills the slot with a failure of the operating system. Always returns false.
VELAMO_PRIVATE_API bool failWithSystemError(int code, VLMError* error) noexcept;

/// Fills the slot from a caught exception (lack of memory becomes ENOMEM). Needs no memory.
VELAMO_PRIVATE_API void reportUnexpected(const std::exception_ptr& exception, VLMError* error) noexcept;

/// Runs the body of an operation; whatever it throws becomes false and an error.
template <class Body>
[[nodiscard]] bool operation(VLMError* error, Body&& body) noexcept {
    try {
        return std::forward<Body>(body)();
    } catch (...) {
        reportUnexpected(std::current_exception(), error);
        return false;
    }
}

}  // namespace velamo
