#ifndef VELAMO_CFSTRING_H
#define VELAMO_CFSTRING_H

#include <CoreFoundation/CFBase.h>

typedef UInt32 CFStringEncoding;
enum { kCFStringEncodingUTF8 = 0x08000100 };

CF_EXTERN_C_BEGIN

CFTypeID CFStringGetTypeID(void);

/* Null when the bytes are no text in the encoding, or the encoding is not UTF-8. */
CFStringRef CFStringCreateWithCString(CFAllocatorRef allocator, const char* text, CFStringEncoding encoding);
/* False when the text with its final zero does not fit, is no UTF-8, or the encoding is not UTF-8. */
Boolean CFStringGetCString(CFStringRef string, char* buffer, CFIndex size, CFStringEncoding encoding);

/* A path as the file system has it. Here any bytes survive, whether they are text or not. */
CFStringRef CFStringCreateWithFileSystemRepresentation(CFAllocatorRef allocator, const char* path);
CFIndex CFStringGetMaximumSizeOfFileSystemRepresentation(CFStringRef string);
/* False when the path with its final zero does not fit. */
Boolean CFStringGetFileSystemRepresentation(CFStringRef string, char* buffer, CFIndex size);

/* What CFSTR stands for: one constant object for each text, the same every time. */
CFStringRef CFStringConstant(const char* text);

CF_EXTERN_C_END

#define CFSTR(literal) CFStringConstant("" literal "")

#endif
