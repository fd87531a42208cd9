#include <gtest/gtest.h>
#include <velamo_plugin_registry.h>

#include <array>
#include <cstddef>
#include <cstdio>
#include <set>
#include <string>

#include "tests/plugin/importer_module.h"

namespace velamo {
namespace {

using test::ImporterModule;

constexpr auto noInterface = static_cast<HRESULT>(0x80000004);

CFUUIDRef otherUuid() {
    return CFUUIDGetConstantUUIDWithBytes(kCFAllocatorDefault, 0x8B, 0x08, 0xC4, 0xBF, 0x41, 0x5B, 0x11, 0xD8, 0xB3,
                                          0xF9, 0, 0, 0, 0, 0, 0);
}

class PluginObject : public testing::Test {
protected:
    /// The count that the instance holds, without changing it.
    static UInt32 referencesOf(void* instance) {
        return static_cast<MetadataImporterPluginType*>(instance)->referenceCount;
    }
    static const MDImporterInterfaceStruct& tableOf(void* instance) {
        return **static_cast<MDImporterInterfaceStruct**>(instance);
    }

    const ImporterModule importer_{};
    const CFIndex instancesBefore_ = VelamoPlugInInstanceCount();
};

TEST_F(PluginObject, IsMadeWithOneReferenceAndRegistered) {
    void* instance = importer_.factory(kCFAllocatorDefault, kMDImporterTypeID);
    ASSERT_NE(instance, nullptr);
    EXPECT_EQ(referencesOf(instance), 1U);
    EXPECT_EQ(VelamoPlugInInstanceCount(), instancesBefore_ + 1);
    EXPECT_EQ(importer_.release(instance), 0U);
    EXPECT_EQ(VelamoPlugInInstanceCount(), instancesBefore_);
}

TEST_F(PluginObject, BelongsToOneFixedFactory) {
    auto* one = static_cast<MetadataImporterPluginType*>(importer_.factory(kCFAllocatorDefault, kMDImporterTypeID));
    auto* two = static_cast<MetadataImporterPluginType*>(importer_.factory(kCFAllocatorDefault, kMDImporterTypeID));
    EXPECT_TRUE(CFEqual(one->factoryID, two->factoryID));
    const auto expected =
        own(CFUUIDCreateFromString(kCFAllocatorDefault, CFSTR("C20CFE66-83A9-45E7-AF23-7190DE4548C4")));
    EXPECT_TRUE(CFEqual(one->factoryID, expected.get()));
    EXPECT_EQ(CFGetRetainCount(one->factoryID), 1) << "the factory gave back its own reference";
    EXPECT_EQ(VelamoPlugInInstanceCountForFactory(expected.get()), 2);
    importer_.release(one);
    EXPECT_EQ(VelamoPlugInInstanceCountForFactory(expected.get()), 1);
    importer_.release(two);
    EXPECT_EQ(VelamoPlugInInstanceCountForFactory(expected.get()), 0);
}

TEST_F(PluginObject, IsNotMadeForOtherTypes) {
    for (const CFUUIDRef type : {otherUuid(), kMDImporterInterfaceID, IUnknownUUID, CFUUIDRef{}})
        EXPECT_EQ(importer_.factory(kCFAllocatorDefault, type), nullptr);
    EXPECT_EQ(VelamoPlugInInstanceCount(), instancesBefore_);
}

TEST_F(PluginObject, HasTheRecordThatHostsKnow) {
    EXPECT_EQ(sizeof(MetadataImporterPluginType), 3 * sizeof(void*));
    EXPECT_EQ(offsetof(MetadataImporterPluginType, interfaceTable), 0U);
    EXPECT_EQ(offsetof(MetadataImporterPluginType, factoryID), sizeof(void*));
    EXPECT_EQ(offsetof(MetadataImporterPluginType, referenceCount), 2 * sizeof(void*));
}

TEST_F(PluginObject, HasTheTableInTheOrderOfItsSlots) {
    void* instance = importer_.factory(kCFAllocatorDefault, kMDImporterTypeID);
    void* const* slots = *static_cast<void***>(instance);
    EXPECT_EQ(slots[0], nullptr);
    EXPECT_EQ(slots[1], reinterpret_cast<void*>(importer_.query));
    EXPECT_EQ(slots[2], reinterpret_cast<void*>(importer_.addRef));
    EXPECT_EQ(slots[3], reinterpret_cast<void*>(importer_.release));
    EXPECT_EQ(slots[4], reinterpret_cast<void*>(importer_.getMetadata));
    void* other = importer_.factory(kCFAllocatorDefault, kMDImporterTypeID);
    EXPECT_EQ(&tableOf(instance), &tableOf(other)) << "all instances share the table";
    importer_.release(instance);
    importer_.release(other);
}

TEST_F(PluginObject, CountsItsReferences) {
    void* instance = importer_.factory(kCFAllocatorDefault, kMDImporterTypeID);
    EXPECT_EQ(tableOf(instance).AddRef(instance), 2U);
    EXPECT_EQ(tableOf(instance).AddRef(instance), 3U);
    EXPECT_EQ(tableOf(instance).Release(instance), 2U);
    EXPECT_EQ(tableOf(instance).Release(instance), 1U);
    EXPECT_EQ(VelamoPlugInInstanceCount(), instancesBefore_ + 1);
    EXPECT_EQ(tableOf(instance).Release(instance), 0U);
    EXPECT_EQ(VelamoPlugInInstanceCount(), instancesBefore_);
}

TEST_F(PluginObject, ServesTheImporterAndTheBaseInterface) {
    for (const CFUUIDRef served : {kMDImporterInterfaceID, IUnknownUUID}) {
        void* instance = importer_.factory(kCFAllocatorDefault, kMDImporterTypeID);
        LPVOID interface = nullptr;
        EXPECT_EQ(tableOf(instance).QueryInterface(instance, CFUUIDGetUUIDBytes(served), &interface), 0);
        EXPECT_EQ(interface, instance);
        EXPECT_EQ(referencesOf(instance), 2U);
        EXPECT_EQ(tableOf(instance).Release(interface), 1U);
        EXPECT_EQ(VelamoPlugInInstanceCount(), instancesBefore_ + 1);
        EXPECT_EQ(tableOf(instance).Release(instance), 0U);
    }
    EXPECT_EQ(VelamoPlugInInstanceCount(), instancesBefore_);
}

TEST_F(PluginObject, RefusesOtherInterfaces) {
    void* instance = importer_.factory(kCFAllocatorDefault, kMDImporterTypeID);
    for (const CFUUIDRef refused : {otherUuid(), kMDImporterTypeID}) {
        LPVOID interface = this;
        EXPECT_EQ(tableOf(instance).QueryInterface(instance, CFUUIDGetUUIDBytes(refused), &interface), noInterface);
        EXPECT_EQ(interface, nullptr);
        EXPECT_EQ(referencesOf(instance), 1U);
    }
    importer_.release(instance);
}

TEST_F(PluginObject, RetainsAnyFactoryThatItIsMadeFor) {
    const auto factory =
        own(CFUUIDCreateFromString(kCFAllocatorDefault, CFSTR("0B0F3F0C-2E9B-4B63-8C5B-5D8E4F7A9C01")));
    MetadataImporterPluginType* instance = importer_.alloc(factory.get());
    EXPECT_EQ(instance->factoryID, factory.get());
    EXPECT_EQ(instance->referenceCount, 1U);
    EXPECT_EQ(CFGetRetainCount(factory.get()), 2);
    EXPECT_EQ(VelamoPlugInInstanceCountForFactory(factory.get()), 1);
    importer_.dealloc(instance);
    EXPECT_EQ(CFGetRetainCount(factory.get()), 1);
    EXPECT_EQ(VelamoPlugInInstanceCountForFactory(factory.get()), 0);
}

TEST_F(PluginObject, WithoutFactoryIsNotRegistered) {
    MetadataImporterPluginType* instance = importer_.alloc(nullptr);
    EXPECT_EQ(VelamoPlugInInstanceCount(), instancesBefore_);
    EXPECT_EQ(importer_.release(instance), 0U);
    EXPECT_EQ(VelamoPlugInInstanceCount(), instancesBefore_);
}

/// The names that a module defines for others, as the linker's own tool lists them.
std::set<std::string> exportedNames(const std::filesystem::path& module) {
    const std::string command = "nm --dynamic --defined-only --format=just-symbols '" + module.string() + "'";
    std::FILE* output = ::popen(command.c_str(), "r");
    std::set<std::string> names;
    std::array<char, 512> line{};
    while (output != nullptr && std::fgets(line.data(), line.size(), output) != nullptr) {
        const std::string name = line.data();
        names.insert(name.substr(0, name.find('\n')));
    }
    if (output != nullptr) ::pclose(output);
    return names;
}

TEST(ImporterModule, ExportsSevenNames) {
    const std::set<std::string> expected{
        "AllocMetadataImporterPluginType", "DeallocMetadataImporterPluginType", "GetMetadataForFile",
        "MetadataImporterPluginAddRef",    "MetadataImporterPluginFactory",     "MetadataImporterPluginRelease",
        "MetadataImporterQueryInterface"};
    EXPECT_EQ(exportedNames(PluginHost::findModule()), expected);
}

}  // namespace
}  // namespace velamo
