/* The interface of metadata importers. */
#ifndef VELAMO_CORESERVICES_H
#define VELAMO_CORESERVICES_H

#include <CoreFoundation/CFPlugInCOM.h>
#include <CoreFoundation/CoreFoundation.h>

/* What a metadata importer's factory is asked for: 8B08C4BF-415B-11D8-B3F9-0003936726FC. */
#define kMDImporterTypeID                                                                                           \
    CFUUIDGetConstantUUIDWithBytes(kCFAllocatorDefault, 0x8B, 0x08, 0xC4, 0xBF, 0x41, 0x5B, 0x11, 0xD8, 0xB3, 0xF9, \
                                   0x00, 0x03, 0x93, 0x67, 0x26, 0xFC)

/* What its instance is asked for: 6EBC27C4-899C-11D8-84AE-0003936726FC. */
#define kMDImporterInterfaceID                                                                                      \
    CFUUIDGetConstantUUIDWithBytes(kCFAllocatorDefault, 0x6E, 0xBC, 0x27, 0xC4, 0x89, 0x9C, 0x11, 0xD8, 0x84, 0xAE, \
                                   0x00, 0x03, 0x93, 0x67, 0x26, 0xFC)

typedef struct {
    IUNKNOWN_C_GUTS;
    Boolean (*ImporterImportData)(void* thisInterface, CFMutableDictionaryRef attributes, CFStringRef contentTypeUTI,
                                  CFStringRef pathToFile);
} MDImporterInterfaceStruct;

#endif
