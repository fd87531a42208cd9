#pragma once

#include <string>

#include "tests/support/bytes.h"

namespace velamo::test {

inline Bytes dstHeader() {
    const std::string tags =
        "LA:rose            \rST:      3\rCO:  0\r+X:    1\r-X:    1\r+Y:    1\r-Y:    1\rAX:+    0\rAY:+    0\r";
    return bytes(tags, repeated(512 - tags.size(), ' '));
}

inline const Bytes dstEnd = bytes(0, 0, 0xF3);

/// A DST file of the records, which end with the end mark.
inline Bytes dstFile(const Bytes& records) {
    return bytes(dstHeader(), records, dstEnd);
}

}  // namespace velamo::test
