#pragma once

#include <cairo.h>

#include <cstdint>
#include <vector>

namespace velamo {

/// Takes the bytes that cairo writes; `closure` is the vector that they are appended to. No exception may pass cairo.
inline cairo_status_t appendBytes(void* closure, const unsigned char* bytes, unsigned int count) noexcept {
    auto& whole = *static_cast<std::vector<std::uint8_t>*>(closure);
    try {
        whole.insert(whole.end(), bytes, bytes + count);
    } catch (...) {
        return CAIRO_STATUS_NO_MEMORY;
    }
    return CAIRO_STATUS_SUCCESS;
}

}  // namespace velamo
