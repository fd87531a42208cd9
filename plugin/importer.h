#pragma once

#include <CoreFoundation/CFPlugInCOM.h>
#include <CoreFoundation/CoreFoundation.h>
#include <CoreServices/CoreServices.h>

/// What the importer module exports, and nothing else. Plug-in interfaces are C: no exception leaves these functions.

/// An instance of the plug-in. A pointer to it is also a pointer to an interface pointer, since the table comes first.
/// One thread uses an instance at a time: its references are counted without a lock.
struct MetadataImporterPluginType {
    const MDImporterInterfaceStruct* interfaceTable;
    CFUUIDRef factoryID;  // retained; null when the instance belongs to no factory
    UInt32 referenceCount;
};

extern "C" {

/// The instance for a host that asks for the importer type, with one reference which is the caller's. Null for any
/// other type, and when memory lacks.
void* MetadataImporterPluginFactory(CFAllocatorRef allocator, CFUUIDRef typeID) noexcept;

/// A new instance with one reference, registered with the host for the factory. Null when memory lacks.
MetadataImporterPluginType* AllocMetadataImporterPluginType(CFUUIDRef factoryID) noexcept;
/// Frees the instance, whatever its references, and takes it from the host's registry.
void DeallocMetadataImporterPluginType(MetadataImporterPluginType* instance) noexcept;

/// Stores the instance, with one reference more, in `interface` when `iid` is the importer interface or the base
/// interface, and returns S_OK. Otherwise clears `interface` and returns E_NOINTERFACE.
HRESULT MetadataImporterQueryInterface(void* instance, REFIID iid, LPVOID* interface) noexcept;
/// One reference more; the new count.
ULONG MetadataImporterPluginAddRef(void* instance) noexcept;
/// One reference less; the new count. The instance goes with its last reference.
ULONG MetadataImporterPluginRelease(void* instance) noexcept;

/// Reads the design file and stores its four attributes (see attributes.h) as 32-bit floats; other entries of the
/// dictionary stay. False, with the dictionary untouched, when the file holds no design that can be read. Keeps
/// nothing, so any number of threads may call it. Instance and content type are not used: the file's extension decides.
Boolean GetMetadataForFile(void* instance, CFMutableDictionaryRef attributes, CFStringRef contentTypeUTI,
                           CFStringRef pathToFile) noexcept;
}
