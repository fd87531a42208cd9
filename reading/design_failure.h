#pragma once

#include <string>

#include "velamo/model/error.h"

namespace velamo {

/// Why a file could not be read as a design.
struct DesignFailure {
    std::string domain;
    int code = 0;
    std::string message;
    friend bool operator==(const DesignFailure&, const DesignFailure&) = default;
};

/// What is kept of an error.
[[nodiscard]] DesignFailure failureOf(const VLMError& error);

/// The error again.
[[nodiscard]] VLMError errorOf(const DesignFailure& failure);

}  // namespace velamo
