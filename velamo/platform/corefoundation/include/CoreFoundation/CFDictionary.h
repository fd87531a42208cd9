#ifndef VELAMO_CFDICTIONARY_H
#define VELAMO_CFDICTIONARY_H

#include <CoreFoundation/CFBase.h>

typedef const struct CFDictionaryObject* CFDictionaryRef;
typedef struct CFDictionaryObject* CFMutableDictionaryRef;

/* How a dictionary owns, tells apart and describes what it holds. Where a function is null, or the whole table, it
   takes the pointers as they are. */
typedef const void* (*CFDictionaryRetainCallBack)(CFAllocatorRef allocator, const void* value);
typedef void (*CFDictionaryReleaseCallBack)(CFAllocatorRef allocator, const void* value);
typedef CFStringRef (*CFDictionaryCopyDescriptionCallBack)(const void* value);
typedef Boolean (*CFDictionaryEqualCallBack)(const void* one, const void* other);
typedef CFHashCode (*CFDictionaryHashCallBack)(const void* value);

typedef struct {
    CFIndex version;
    CFDictionaryRetainCallBack retain;
    CFDictionaryReleaseCallBack release;
    CFDictionaryCopyDescriptionCallBack copyDescription;
    CFDictionaryEqualCallBack equal;
    CFDictionaryHashCallBack hash;
} CFDictionaryKeyCallBacks;

typedef struct {
    CFIndex version;
    CFDictionaryRetainCallBack retain;
    CFDictionaryReleaseCallBack release;
    CFDictionaryCopyDescriptionCallBack copyDescription;
    CFDictionaryEqualCallBack equal;
} CFDictionaryValueCallBacks;

CF_EXTERN_C_BEGIN

/* For keys and values that are objects: retained while they are held, compared by CFEqual. */
extern const CFDictionaryKeyCallBacks kCFTypeDictionaryKeyCallBacks;
extern const CFDictionaryValueCallBacks kCFTypeDictionaryValueCallBacks;

CFTypeID CFDictionaryGetTypeID(void);
/* One thread changes a dictionary at a time. The capacity is a hint. */
CFMutableDictionaryRef CFDictionaryCreateMutable(CFAllocatorRef allocator, CFIndex capacity,
                                                 const CFDictionaryKeyCallBacks* keyCallBacks,
                                                 const CFDictionaryValueCallBacks* valueCallBacks);
CFIndex CFDictionaryGetCount(CFDictionaryRef dictionary);
/* The value of the key, lent, or null. */
const void* CFDictionaryGetValue(CFDictionaryRef dictionary, const void* key);
/* Adds the key, or gives it another value. (Which of two equal key objects it then holds, Apple's leaves open.) When
   memory lacks the dictionary stays as it is. */
void CFDictionarySetValue(CFMutableDictionaryRef dictionary, const void* key, const void* value);
/* Takes the key and its value out, if it is there. */
void CFDictionaryRemoveValue(CFMutableDictionaryRef dictionary, const void* key);

CF_EXTERN_C_END

#endif
