#pragma once

#include <CoreFoundation/CFUUID.h>

#include <array>
#include <bit>
#include <functional>
#include <string_view>

#include "velamo/platform/corefoundation/object.h"

namespace velamo::corefoundation {
using UuidBytes = std::array<UInt8, 16>;
}

struct CFUUIDObject final : velamo::corefoundation::Object {
    explicit CFUUIDObject(const velamo::corefoundation::UuidBytes& sixteen)
        : Object(velamo::corefoundation::Type::uuid), bytes(sixteen) {}

    [[nodiscard]] bool equals(const Object& other) const noexcept override {
        return bytes == static_cast<const CFUUIDObject&>(other).bytes;
    }
    [[nodiscard]] CFHashCode hash() const noexcept override {
        const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
        return std::hash<std::string_view>()(text);
    }

    const velamo::corefoundation::UuidBytes bytes;
};
