#include "plugin/host.h"

#include <CoreFoundation/CFPlugInCOM.h>
#include <CoreServices/CoreServices.h>

#include <array>
#include <cstdlib>
#include <stdexcept>
#include <system_error>

#include "plugin/attributes.h"
#include "velamo/platform/system/shared_module.h"

namespace velamo {
namespace {

namespace fs = std::filesystem;

/// A pointer to an interface is a pointer to the pointer to its table.
using Interface = MDImporterInterfaceStruct*;

struct InterfaceReleaser {
    void operator()(Interface* interface) const noexcept { (*interface)->Release(interface); }
};
using OwnedInterface = std::unique_ptr<Interface, InterfaceReleaser>;

std::runtime_error noImporter(const fs::path& module) {
    return std::runtime_error(module.empty() ? "no importer module found" : module.string() + ": no importer module");
}

OwnedInterface makeInstance(const fs::path& module) {
    using Factory = void* (*)(CFAllocatorRef, CFUUIDRef);
    if (module.empty()) throw noImporter(module);
    const auto factory = reinterpret_cast<Factory>(SharedModule(module).symbol("MetadataImporterPluginFactory"));
    if (factory == nullptr) throw noImporter(module);
    OwnedInterface instance(static_cast<Interface*>(factory(kCFAllocatorDefault, required(kMDImporterTypeID))));
    if (!instance) throw noImporter(module);
    return instance;
}

OwnedInterface importerInterfaceOf(const OwnedInterface& instance, const fs::path& module) {
    const CFUUIDBytes importer = CFUUIDGetUUIDBytes(required(kMDImporterInterfaceID));
    LPVOID interface = nullptr;
    const HRESULT result = (*instance)->QueryInterface(instance.get(), importer, &interface);
    if (result != S_OK || interface == nullptr) throw noImporter(module);
    return OwnedInterface(static_cast<Interface*>(interface));
}

/// The number stored under the key; nothing when there is none or it is something else.
std::optional<float> numberIn(CFDictionaryRef attributes, CFStringRef key) {
    const CFTypeRef value = CFDictionaryGetValue(attributes, key);
    if (value == nullptr || CFGetTypeID(value) != CFNumberGetTypeID()) return std::nullopt;
    Float32 number = 0;
    CFNumberGetValue(static_cast<CFNumberRef>(value), kCFNumberFloat32Type, &number);
    return number;
}

std::optional<DesignAttributes> attributesIn(CFDictionaryRef attributes) {
    AttributeValues values{};
    const auto keys = attributeKeys();
    for (std::size_t index = 0; index < numberOfAttributes; ++index) {
        const auto number = numberIn(attributes, keys[index]);
        if (!number) return std::nullopt;
        values[index] = *number;
    }
    return DesignAttributes{values[0], values[1], values[2], values[3]};
}

}  // namespace

struct PluginHost::Plugin {
    explicit Plugin(const fs::path& module) : importer(importerInterfaceOf(makeInstance(module), module)) {}

    OwnedInterface importer;
};

PluginHost::PluginHost(const fs::path& module) : plugin_(std::make_unique<Plugin>(module)) {}
PluginHost::~PluginHost() = default;
PluginHost::PluginHost(PluginHost&&) noexcept = default;
PluginHost& PluginHost::operator=(PluginHost&&) noexcept = default;

std::optional<DesignAttributes> PluginHost::attributesOf(const fs::path& file) {
    const auto attributes = own(CFDictionaryCreateMutable(kCFAllocatorDefault, 0, &kCFTypeDictionaryKeyCallBacks,
                                                          &kCFTypeDictionaryValueCallBacks));
    const auto path = own(CFStringCreateWithFileSystemRepresentation(kCFAllocatorDefault, file.c_str()));
    Interface* importer = plugin_->importer.get();
    if (!(*importer)->ImporterImportData(importer, attributes.get(), CFSTR("public.data"), path.get()))
        return std::nullopt;
    return attributesIn(attributes.get());
}

std::vector<fs::path> PluginHost::expectedModules() {
    constexpr std::array places{
        "velamo",     // an installation
        ".",          // all in one folder
        "../plugin",  // a build tree
    };
    std::vector<fs::path> modules;
    if (const char* named = std::getenv("VELAMO_IMPORTER"); named != nullptr && *named != '\0')
        modules.emplace_back(named);
    const fs::path folder = pathOfThisModule().parent_path();
    if (folder.empty()) return modules;
    for (const char* place : places) modules.push_back((folder / place / "velamo_importer.so").lexically_normal());
    return modules;
}

fs::path PluginHost::findModule() {
    for (const fs::path& module : expectedModules()) {
        std::error_code error;
        if (fs::is_regular_file(module, error)) return module;
    }
    return {};
}

}  // namespace velamo
