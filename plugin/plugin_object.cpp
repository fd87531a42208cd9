#include <cstdlib>
#include <memory>

#include "plugin/importer.h"
#include "plugin/owned.h"

namespace {

static_assert(sizeof(void*) != 8 || sizeof(MetadataImporterPluginType) == 24, "hosts know the size of the record");

using velamo::Owned;

MetadataImporterPluginType* pluginAt(void* instance) noexcept {
    return static_cast<MetadataImporterPluginType*>(instance);
}

const MDImporterInterfaceStruct importerInterface{nullptr, MetadataImporterQueryInterface, MetadataImporterPluginAddRef,
                                                  MetadataImporterPluginRelease, GetMetadataForFile};

/// Ours alone; the bundle's description names it as well.
CFUUIDRef createFactoryID() noexcept {
    return CFUUIDCreateFromString(kCFAllocatorDefault, CFSTR("C20CFE66-83A9-45E7-AF23-7190DE4548C4"));
}

bool isServed(CFUUIDRef interface) noexcept {
    return CFEqual(interface, kMDImporterInterfaceID) || CFEqual(interface, IUnknownUUID);
}

}  // namespace

MetadataImporterPluginType* AllocMetadataImporterPluginType(CFUUIDRef factoryID) noexcept {
    void* memory = std::malloc(sizeof(MetadataImporterPluginType));
    if (memory == nullptr) return nullptr;
    if (factoryID != nullptr) {
        CFRetain(factoryID);
        CFPlugInAddInstanceForFactory(factoryID);
    }
    return new (memory) MetadataImporterPluginType{&importerInterface, factoryID, 1};
}

void DeallocMetadataImporterPluginType(MetadataImporterPluginType* instance) noexcept {
    const CFUUIDRef factoryID = instance->factoryID;
    std::free(instance);
    if (factoryID == nullptr) return;
    CFPlugInRemoveInstanceForFactory(factoryID);
    CFRelease(factoryID);
}

HRESULT MetadataImporterQueryInterface(void* instance, REFIID iid, LPVOID* interface) noexcept {
    const Owned<CFUUIDRef> asked(CFUUIDCreateFromUUIDBytes(kCFAllocatorDefault, iid));
    if (!asked || !isServed(asked.get())) {
        *interface = nullptr;
        return E_NOINTERFACE;
    }
    pluginAt(instance)->interfaceTable->AddRef(instance);
    *interface = instance;
    return S_OK;
}

ULONG MetadataImporterPluginAddRef(void* instance) noexcept {
    return ++pluginAt(instance)->referenceCount;
}

ULONG MetadataImporterPluginRelease(void* instance) noexcept {
    const ULONG left = --pluginAt(instance)->referenceCount;
    if (left == 0) DeallocMetadataImporterPluginType(pluginAt(instance));
    return left;
}

void* MetadataImporterPluginFactory(CFAllocatorRef, CFUUIDRef typeID) noexcept {
    if (typeID == nullptr || !CFEqual(typeID, kMDImporterTypeID)) return nullptr;
    const Owned<CFUUIDRef> factoryID(createFactoryID());
    return factoryID ? AllocMetadataImporterPluginType(factoryID.get()) : nullptr;
}
