/* The part of the CoreFoundation types that the importer's interface uses, for systems without Apple's: the same names
   and the same meaning, so that the same source builds on both. Objects count their references atomically and do not
   change once made (dictionaries apart), so they may be used from many threads. */
#ifndef VELAMO_CFBASE_H
#define VELAMO_CFBASE_H

#include <stdint.h>

#ifdef __cplusplus
#define CF_EXTERN_C_BEGIN extern "C" {
#define CF_EXTERN_C_END }
#else
#define CF_EXTERN_C_BEGIN
#define CF_EXTERN_C_END
#endif

typedef unsigned char Boolean;
typedef uint8_t UInt8;
typedef int32_t SInt32;
typedef uint32_t UInt32;
typedef float Float32;
typedef double Float64;

typedef long CFIndex;
typedef unsigned long CFTypeID;
typedef unsigned long CFHashCode;

typedef const void* CFTypeRef;
typedef const struct CFAllocatorObject* CFAllocatorRef;
typedef const struct CFStringObject* CFStringRef;

CF_EXTERN_C_BEGIN

/* The only allocator there is; functions take one because Apple's do. */
extern const CFAllocatorRef kCFAllocatorDefault;

/* Functions with Create in their names give a reference that the caller releases, or null when memory lacks; others
   lend one. Constant objects are never freed, whatever the balance of calls. */
CFTypeRef CFRetain(CFTypeRef object);
void CFRelease(CFTypeRef object);
/* Of a constant object a number that is larger than any number of references. */
CFIndex CFGetRetainCount(CFTypeRef object);
CFTypeID CFGetTypeID(CFTypeRef object);
/* Objects of different types are never equal. */
Boolean CFEqual(CFTypeRef one, CFTypeRef other);
CFHashCode CFHash(CFTypeRef object);

CF_EXTERN_C_END

#endif
