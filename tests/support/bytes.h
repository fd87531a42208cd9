#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace velamo::test {

using Bytes = std::vector<std::uint8_t>;

inline void append(Bytes& to, int byte) {
    to.push_back(static_cast<std::uint8_t>(byte));
}
inline void append(Bytes& to, std::string_view text) {
    to.insert(to.end(), text.begin(), text.end());
}
inline void append(Bytes& to, const Bytes& more) {
    to.insert(to.end(), more.begin(), more.end());
}

/// A file's bytes from single bytes (of which the low eight bits count), texts and other bytes.
template <class... Pieces>
Bytes bytes(const Pieces&... pieces) {
    Bytes whole;
    (append(whole, pieces), ...);
    return whole;
}

/// The same byte several times.
inline Bytes repeated(std::size_t count, int byte) {
    return Bytes(count, static_cast<std::uint8_t>(byte));
}

}  // namespace velamo::test
