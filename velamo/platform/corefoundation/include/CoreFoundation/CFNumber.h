#ifndef VELAMO_CFNUMBER_H
#define VELAMO_CFNUMBER_H

#include <CoreFoundation/CFBase.h>

typedef const struct CFNumberObject* CFNumberRef;
/* A type of its own, as Apple's, where the language has such. */
#ifdef __cplusplus
enum CFNumberType : CFIndex
#else
typedef CFIndex CFNumberType;
enum
#endif
{
    kCFNumberSInt32Type = 3,
    kCFNumberFloat32Type = 5,
    kCFNumberFloat64Type = 6
};

CF_EXTERN_C_BEGIN

CFTypeID CFNumberGetTypeID(void);
/* Null for a type other than the two of floats. */
CFNumberRef CFNumberCreate(CFAllocatorRef allocator, CFNumberType type, const void* value);
/* The type that it was made with. (Apple's may keep the value in another one.) */
CFNumberType CFNumberGetType(CFNumberRef number);
/* Writes the value in the type asked for; false when that loses something. */
Boolean CFNumberGetValue(CFNumberRef number, CFNumberType type, void* value);

CF_EXTERN_C_END

#endif
