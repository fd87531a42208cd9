#pragma once

#include <CoreFoundation/CoreFoundation.h>

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

}  // namespace velamo::test
