#include "velamo/model/failure.h"

#include <cerrno>
#include <filesystem>
#include <new>
#include <stdexcept>
#include <system_error>

#include "velamo/platform/text/resources.h"

namespace velamo {
namespace {

int systemCodeOf(const std::exception_ptr& exception) noexcept {
    try {
        std::rethrow_exception(exception);
    } catch (const std::bad_alloc&) {
        return ENOMEM;
    } catch (const std::length_error&) {
        return ENOMEM;
    } catch (const std::system_error& failure) {
        return failure.code().value();
    } catch (...) {
        return EIO;
    }
}

std::string_view englishText(std::span<const ErrorText> texts, int code) noexcept {
    for (const ErrorText& text : texts)
        if (text.code == code) return text.text;
    return {};
}

/// In the user's language; in English where that cannot be read, which must not hide what failed first.
std::string messageOf(int code, std::string_view english) {
    try {
        return localizedText("ERROR_" + std::to_string(code), "VLMDesign", english);
    } catch (const std::system_error&) {
        return std::string(english);
    }
}

}  // namespace

std::string VLMError::message() const {
    if (!recoverySuggestion.empty()) return recoverySuggestion;
    if (!failureReason.empty()) return failureReason;
    return std::generic_category().message(code);
}

bool fail(std::span<const ErrorText> texts, int code, VLMError* error, ErrorTextKey key) {
    if (error == nullptr) return false;
    *error = {.domain = designErrorDomain, .code = code, .recoverySuggestion = {}, .failureReason = {}};
    std::string& text = key == ErrorTextKey::failureReason ? error->failureReason : error->recoverySuggestion;
    text = messageOf(code, englishText(texts, code));
    return false;
}

bool failWithSystemError(int code, VLMError* error) noexcept {
    if (error != nullptr)
        *error = {.domain = systemErrorDomain, .code = code, .recoverySuggestion = {}, .failureReason = {}};
    return false;
}

void reportUnexpected(const std::exception_ptr& exception, VLMError* error) noexcept {
    failWithSystemError(systemCodeOf(exception), error);
}

}  // namespace velamo
