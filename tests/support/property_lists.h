#pragma once

#include <cstdint>
#include <string>
#include <utility>

#include "velamo/platform/plist/property_list.h"

namespace velamo::test {

inline PropertyList integer(std::int64_t value) {
    return PropertyList(value);
}
inline PropertyList real(double value) {
    return PropertyList(value);
}
inline PropertyList text(std::string value) {
    return PropertyList(std::move(value));
}

}  // namespace velamo::test
