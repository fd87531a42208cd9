#ifndef VELAMO_CFUUID_H
#define VELAMO_CFUUID_H

#include <CoreFoundation/CFBase.h>

typedef const struct CFUUIDObject* CFUUIDRef;

typedef struct {
    UInt8 byte0;
    UInt8 byte1;
    UInt8 byte2;
    UInt8 byte3;
    UInt8 byte4;
    UInt8 byte5;
    UInt8 byte6;
    UInt8 byte7;
    UInt8 byte8;
    UInt8 byte9;
    UInt8 byte10;
    UInt8 byte11;
    UInt8 byte12;
    UInt8 byte13;
    UInt8 byte14;
    UInt8 byte15;
} CFUUIDBytes;

CF_EXTERN_C_BEGIN

CFTypeID CFUUIDGetTypeID(void);
CFUUIDRef CFUUIDCreateFromUUIDBytes(CFAllocatorRef allocator, CFUUIDBytes bytes);
/* From "8B08C4BF-415B-11D8-B3F9-0003936726FC", letters in any case; null for any other shape. (Apple's takes
   some of those as well.) */
CFUUIDRef CFUUIDCreateFromString(CFAllocatorRef allocator, CFStringRef text);
CFUUIDBytes CFUUIDGetUUIDBytes(CFUUIDRef uuid);
/* One constant object for each value, the same every time. (Apple's may share it with those that are created.) */
CFUUIDRef CFUUIDGetConstantUUIDWithBytes(CFAllocatorRef allocator, UInt8 byte0, UInt8 byte1, UInt8 byte2, UInt8 byte3,
                                         UInt8 byte4, UInt8 byte5, UInt8 byte6, UInt8 byte7, UInt8 byte8, UInt8 byte9,
                                         UInt8 byte10, UInt8 byte11, UInt8 byte12, UInt8 byte13, UInt8 byte14,
                                         UInt8 byte15);

CF_EXTERN_C_END

#endif
