#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace velamo::test {

using Bytes = std::vector<std::uint8_t>;

// Not inlined: g++ 12 -O3 mistakes insertions for writing past the end when it sees the whole of them.
[[gnu::noinline]] inline void append(Bytes& to, int byte) {
    to.push_back(static_cast<std::uint8_t>(byte));
}
[[gnu::noinline]] inline void append(Bytes& to, std::string_view text) {
    to.insert(to.end(), text.begin(), text.end());
}
[[gnu::noinline]] inline void append(Bytes& to, const Bytes& more) {
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

/// The bytes of a number, the lowest first.
inline Bytes littleEndian(std::int64_t number, int width) {
    Bytes inOrder;
    for (int i = 0; i < width; ++i) inOrder.push_back(static_cast<std::uint8_t>(number >> 8 * i));
    return inOrder;
}
inline Bytes le16(std::int64_t number) {
    return littleEndian(number, 2);
}
inline Bytes le24(std::int64_t number) {
    return littleEndian(number, 3);
}
inline Bytes le32(std::int64_t number) {
    return littleEndian(number, 4);
}
/// The same, the highest first.
inline Bytes be16(std::int64_t number) {
    return bytes(static_cast<int>(number >> 8), static_cast<int>(number));
}
inline Bytes be32(std::int64_t number) {
    return bytes(be16(number >> 16), be16(number));
}

}  // namespace velamo::test
