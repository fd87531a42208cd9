#ifndef VELAMO_CFNUMBER_H
#define VELAMO_CFNUMBER_H

#include <CoreFoundation/CFBase.h>

typedef const struct CFNumberObject* CFNumberRef;
typedef CFIndex CFNumberType;
enum { kCFNumberFloat32Type = 5, kCFNumberFloat64Type = 6 };

CF_EXTERN_C_BEGIN

CFTypeID CFNumberGetTypeID(void);
/* Null for a type other than those above. */
CFNumberRef CFNumberCreate(CFAllocatorRef allocator, CFNumberType type, const void* value);
CFNumberType CFNumberGetType(CFNumberRef number);
/* Writes the value in the type asked for; false when that loses something. */
Boolean CFNumberGetValue(CFNumberRef number, CFNumberType type, void* value);

CF_EXTERN_C_END

#endif
