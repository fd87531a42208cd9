#pragma once

#include <stdexcept>

#include "platform/shared_module.h"
#include "plugin/attributes.h"
#include "plugin/host.h"
#include "plugin/importer.h"
#include "tests/support/dst.h"

namespace velamo::test {

/// The functions of the built module, found by name as a host finds them.
struct ImporterModule {
    SharedModule module{PluginHost::findModule()};
    decltype(&MetadataImporterPluginFactory) factory = function(factory, "MetadataImporterPluginFactory");
    decltype(&AllocMetadataImporterPluginType) alloc = function(alloc, "AllocMetadataImporterPluginType");
    decltype(&DeallocMetadataImporterPluginType) dealloc = function(dealloc, "DeallocMetadataImporterPluginType");
    decltype(&MetadataImporterQueryInterface) query = function(query, "MetadataImporterQueryInterface");
    decltype(&MetadataImporterPluginAddRef) addRef = function(addRef, "MetadataImporterPluginAddRef");
    decltype(&MetadataImporterPluginRelease) release = function(release, "MetadataImporterPluginRelease");
    decltype(&GetMetadataForFile) getMetadata = function(getMetadata, "GetMetadataForFile");

private:
    template <class Function>
    Function function(Function, const char* name) const {
        void* found = module.symbol(name);
        if (found == nullptr) throw std::runtime_error(name);
        return reinterpret_cast<Function>(found);
    }
};

inline Owned<CFMutableDictionaryRef> emptyDictionary() {
    return own(CFDictionaryCreateMutable(kCFAllocatorDefault, 0, &kCFTypeDictionaryKeyCallBacks,
                                         &kCFTypeDictionaryValueCallBacks));
}

inline Owned<CFStringRef> pathText(const std::filesystem::path& path) {
    return own(CFStringCreateWithFileSystemRepresentation(kCFAllocatorDefault, path.c_str()));
}

/// A DST file of one stitch, one tenth of a millimetre to the right, and a second one upward: 0.0 by 0.1 mm.
inline Bytes smallDst() {
    return dstFile(bytes(0x01, 0, 0x03, 0x80, 0, 0x03));
}

}  // namespace velamo::test
