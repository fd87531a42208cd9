#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdio>
#include <set>
#include <string>
#include <string_view>

#include "tests/plugin/importer_module.h"
#include "tests/plugin/instances.h"

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
    const test::Instances instances_{};
};

TEST_F(PluginObject, IsMadeWithOneReferenceAndRegistered) {
    void* instance = importer_.factory(kCFAllocatorDefault, kMDImporterTypeID);
    ASSERT_NE(instance, nullptr);
    EXPECT_EQ(referencesOf(instance), 1U);
    instances_.expectMore(1);
    EXPECT_EQ(importer_.release(instance), 0U);
    instances_.expectMore(0);
}

TEST_F(PluginObject, BelongsToOneFixedFactory) {
    auto* one = static_cast<MetadataImporterPluginType*>(importer_.factory(kCFAllocatorDefault, kMDImporterTypeID));
    auto* two = static_cast<MetadataImporterPluginType*>(importer_.factory(kCFAllocatorDefault, kMDImporterTypeID));
    EXPECT_TRUE(CFEqual(one->factoryID, two->factoryID));
    const auto expected =
        own(CFUUIDCreateFromString(kCFAllocatorDefault, CFSTR("C20CFE66-83A9-45E7-AF23-7190DE4548C4")));
    EXPECT_TRUE(CFEqual(one->factoryID, expected.get()));
    test::Instances::expectOf(expected.get(), 2);
    importer_.release(one);
    test::Instances::expectOf(expected.get(), 1);
    importer_.release(two);
    test::Instances::expectOf(expected.get(), 0);
}

TEST_F(PluginObject, AloneHoldsItsFactory) {
    auto* instance =
        static_cast<MetadataImporterPluginType*>(importer_.factory(kCFAllocatorDefault, kMDImporterTypeID));
    const Owned<CFUUIDRef> factory(static_cast<CFUUIDRef>(CFRetain(instance->factoryID)));
    EXPECT_EQ(CFGetRetainCount(factory.get()), 2) << "the factory gave back its own reference";
    importer_.release(instance);
    EXPECT_EQ(CFGetRetainCount(factory.get()), 1);
}

TEST_F(PluginObject, IsNotMadeForOtherTypes) {
    for (const CFUUIDRef type : {otherUuid(), kMDImporterInterfaceID, IUnknownUUID, CFUUIDRef{}})
        EXPECT_EQ(importer_.factory(kCFAllocatorDefault, type), nullptr);
    instances_.expectMore(0);
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
    instances_.expectMore(1);
    EXPECT_EQ(tableOf(instance).Release(instance), 0U);
    instances_.expectMore(0);
}

TEST_F(PluginObject, ServesTheImporterAndTheBaseInterface) {
    for (const CFUUIDRef served : {kMDImporterInterfaceID, IUnknownUUID}) {
        void* instance = importer_.factory(kCFAllocatorDefault, kMDImporterTypeID);
        LPVOID interface = nullptr;
        EXPECT_EQ(tableOf(instance).QueryInterface(instance, CFUUIDGetUUIDBytes(served), &interface), 0);
        EXPECT_EQ(interface, instance);
        EXPECT_EQ(referencesOf(instance), 2U);
        EXPECT_EQ(tableOf(instance).Release(interface), 1U);
        instances_.expectMore(1);
        EXPECT_EQ(tableOf(instance).Release(instance), 0U);
    }
    instances_.expectMore(0);
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
    const CFIndex before = CFGetRetainCount(factory.get());
    MetadataImporterPluginType* instance = importer_.alloc(factory.get());
    EXPECT_EQ(instance->factoryID, factory.get());
    EXPECT_EQ(instance->referenceCount, 1U);
    EXPECT_EQ(CFGetRetainCount(factory.get()), before + 1);
    test::Instances::expectOf(factory.get(), 1);
    importer_.dealloc(instance);
    EXPECT_EQ(CFGetRetainCount(factory.get()), before);
    test::Instances::expectOf(factory.get(), 0);
}

TEST_F(PluginObject, WithoutFactoryIsNotRegistered) {
    MetadataImporterPluginType* instance = importer_.alloc(nullptr);
    instances_.expectMore(0);
    EXPECT_EQ(importer_.release(instance), 0U);
    instances_.expectMore(0);
}

#ifdef __APPLE__  // where the linker puts a mark before C's names
constexpr const char* listNames = "nm -gUj";
constexpr std::string_view mark = "_";
#else
constexpr const char* listNames = "nm --dynamic --defined-only --format=just-symbols";
constexpr std::string_view mark;
#endif

/// The names that a module defines for others, as the linker's own tool lists them.
std::set<std::string> exportedNames(const std::filesystem::path& module) {
    const std::string command = std::string(listNames) + " '" + module.string() + "'";
    std::FILE* output = ::popen(command.c_str(), "r");
    std::set<std::string> names;
    std::array<char, 512> line{};
    while (output != nullptr && std::fgets(line.data(), line.size(), output) != nullptr) {
        const std::string name = line.data();
        if (name.starts_with(mark)) names.insert(name.substr(mark.size(), name.find('\n') - mark.size()));
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
