#pragma once

#include "tests/support/bytes.h"

namespace velamo::test {

/// The low bytes of a number, lowest first.
inline Bytes littleEndian(std::size_t size, std::int64_t number) {
    Bytes whole;
    for (std::size_t i = 0; i < size; ++i) append(whole, static_cast<int>(number >> (8 * i) & 0xFF));
    return whole;
}

/// The low bytes of a number, highest first.
inline Bytes bigEndian(std::size_t size, std::int64_t number) {
    const Bytes turned = littleEndian(size, number);
    return {turned.rbegin(), turned.rend()};
}

inline Bytes u16(std::int64_t number) {
    return littleEndian(2, number);
}
inline Bytes u24(std::int64_t number) {
    return littleEndian(3, number);
}
inline Bytes u32(std::int64_t number) {
    return littleEndian(4, number);
}
inline Bytes u16be(std::int64_t number) {
    return bigEndian(2, number);
}
inline Bytes u32be(std::int64_t number) {
    return bigEndian(4, number);
}

}  // namespace velamo::test
