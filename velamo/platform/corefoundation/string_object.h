#pragma once

#include <CoreFoundation/CFString.h>

#include <string>
#include <string_view>

#include "velamo/platform/corefoundation/object.h"

/// Text in UTF-8, or a path in whatever bytes the file system has.
struct CFStringObject final : velamo::corefoundation::Object {
    explicit CFStringObject(std::string_view text) : Object(velamo::corefoundation::Type::string), bytes(text) {}

    [[nodiscard]] bool equals(const Object& other) const noexcept override {
        return bytes == static_cast<const CFStringObject&>(other).bytes;
    }
    [[nodiscard]] CFHashCode hash() const noexcept override { return std::hash<std::string>()(bytes); }

    const std::string bytes;
};
