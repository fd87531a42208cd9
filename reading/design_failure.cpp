#include "reading/design_failure.h"

#include "velamo/model/failure.h"

namespace velamo {

DesignFailure failureOf(const VLMError& error) {
    return {.domain = std::string(error.domain), .code = error.code, .message = error.message()};
}

VLMError errorOf(const DesignFailure& failure) {
    VLMError error;
    failWithSystemError(failure.code, &error);
    if (failure.domain == designErrorDomain) error.domain = designErrorDomain;
    error.failureReason = failure.message;
    return error;
}

}  // namespace velamo
