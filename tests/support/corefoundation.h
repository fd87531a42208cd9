#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <gtest/gtest.h>

#include <array>

#include "plugin/owned.h"

namespace velamo::test {

/// Null where the bytes are no UTF-8.
inline Owned<CFStringRef> text(const char* bytes) {
    return Owned<CFStringRef>(CFStringCreateWithCString(kCFAllocatorDefault, bytes, kCFStringEncodingUTF8));
}

inline Owned<CFNumberRef> number(Float32 value) {
    return own(CFNumberCreate(kCFAllocatorDefault, kCFNumberFloat32Type, &value));
}

/// Null where the text has another shape.
inline Owned<CFUUIDRef> uuid(const char* bytes) {
    return Owned<CFUUIDRef>(CFUUIDCreateFromString(kCFAllocatorDefault, text(bytes).get()));
}

inline Owned<CFMutableDictionaryRef> emptyDictionary() {
    return own(CFDictionaryCreateMutable(kCFAllocatorDefault, 0, &kCFTypeDictionaryKeyCallBacks,
                                         &kCFTypeDictionaryValueCallBacks));
}

struct EncodingRow {
    const char* name;
    const char* bytes;
    bool isUtf8;
};

/// Bytes that are UTF-8 make a text that gives them back; others make none.
inline void expectText(const EncodingRow& row) {
    const auto string = text(row.bytes);
    ASSERT_EQ(string != nullptr, row.isUtf8);
    if (!string) return;
    std::array<char, 32> buffer{};
    EXPECT_TRUE(CFStringGetCString(string.get(), buffer.data(), buffer.size(), kCFStringEncodingUTF8));
    EXPECT_STREQ(buffer.data(), row.bytes);
}

}  // namespace velamo::test
