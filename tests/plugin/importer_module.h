#pragma once

#include <stdexcept>

#include "plugin/attributes.h"
#include "plugin/host.h"
#include "plugin/importer.h"
#include "tests/support/corefoundation.h"
#include "tests/support/dst.h"
#include "velamo/platform/system/shared_module.h"

namespace velamo::test {

/// A function of a module, of whatever type it is wanted as.
struct Symbol {
    void* address;
    template <class Function>
    operator Function*() const {  // NOLINT(google-explicit-constructor): only the receiver knows the type
        return reinterpret_cast<Function*>(address);
    }
};

/// The functions of the built module, found by name as a host finds them.
struct ImporterModule {
    SharedModule module{PluginHost::findModule()};
    decltype(&MetadataImporterPluginFactory) factory = symbol("MetadataImporterPluginFactory");
    decltype(&AllocMetadataImporterPluginType) alloc = symbol("AllocMetadataImporterPluginType");
    decltype(&DeallocMetadataImporterPluginType) dealloc = symbol("DeallocMetadataImporterPluginType");
    decltype(&MetadataImporterQueryInterface) query = symbol("MetadataImporterQueryInterface");
    decltype(&MetadataImporterPluginAddRef) addRef = symbol("MetadataImporterPluginAddRef");
    decltype(&MetadataImporterPluginRelease) release = symbol("MetadataImporterPluginRelease");
    decltype(&GetMetadataForFile) getMetadata = symbol("GetMetadataForFile");

private:
    [[nodiscard]] Symbol symbol(const char* name) const {
        void* found = module.symbol(name);
        if (found == nullptr) throw std::runtime_error(name);
        return {found};
    }
};

inline Owned<CFStringRef> pathText(const std::filesystem::path& path) {
    return own(CFStringCreateWithFileSystemRepresentation(kCFAllocatorDefault, path.c_str()));
}

/// A DST file of one stitch, one tenth of a millimetre to the right, and a second one upward: 0.0 by 0.1 mm.
inline Bytes smallDst() {
    return dstFile(bytes(0x01, 0, 0x03, 0x80, 0, 0x03));
}

}  // namespace velamo::test
