#include "plugin/host.h"

#include <dlfcn.h>
#include <gmock/gmock.h>

#include <atomic>
#include <cstdlib>
#include <stdexcept>
#include <thread>

#include "tests/plugin/importer_module.h"
#include "tests/plugin/instances.h"
#include "tests/support/environment.h"
#include "tests/support/temporary_folder.h"

namespace velamo {
namespace {

namespace fs = std::filesystem;
using test::bytes;
using test::dstFile;
using test::smallDst;
using testing::HasSubstr;

constexpr DesignAttributes attributesOfSmallDst{
    .widthInMillimetres = 0, .heightInMillimetres = 0.1F, .stitches = 2, .colors = 1};

std::string failureOf(const fs::path& module) {
    try {
        const PluginHost host(module);
    } catch (const std::runtime_error& failure) {
        return failure.what();
    }
    return "";
}

TEST(PluginHost, GivesTheAttributes) {
    const test::TemporaryFolder folder;
    PluginHost host(PluginHost::findModule());
    EXPECT_EQ(host.attributesOf(folder.write("rose.dst", smallDst())), attributesOfSmallDst);
    const auto wide = folder.write("wide.dst", dstFile(bytes(0, 0, 3, 0x04, 0, 0xC3)));
    EXPECT_EQ(host.attributesOf(wide), (DesignAttributes{0.9F, 0, 1, 1}));
}

TEST(PluginHost, GivesNothingForRefusedFiles) {
    const test::TemporaryFolder folder;
    PluginHost host(PluginHost::findModule());
    EXPECT_EQ(host.attributesOf(folder.write("rose.txt", smallDst())), std::nullopt);
    EXPECT_EQ(host.attributesOf(folder.write("empty.dst", "")), std::nullopt);
    EXPECT_EQ(host.attributesOf(""), std::nullopt);
    EXPECT_EQ(host.attributesOf(folder.write("rose.dst", smallDst())), attributesOfSmallDst) << "after refusals";
}

TEST(PluginHost, KeepsOneInstanceAndGivesItBack) {
    const test::Instances instances;
    {
        PluginHost one(PluginHost::findModule());
        instances.expectMore(1);
        PluginHost two(PluginHost::findModule());
        instances.expectMore(2);
        two = std::move(one);
        instances.expectMore(1);
        const PluginHost three(std::move(two));
        instances.expectMore(1);
    }
    instances.expectMore(0);
}

TEST(PluginHost, SharesTheModuleAndKeepsItLoaded) {
    const auto module = PluginHost::findModule();
    { const PluginHost host(module); }
    void* loaded = ::dlopen(module.c_str(), RTLD_NOW | RTLD_NOLOAD);
    ASSERT_NE(loaded, nullptr);
    const SharedModule again(module);
    EXPECT_EQ(::dlsym(loaded, "GetMetadataForFile"), again.symbol("GetMetadataForFile"));
    ::dlclose(loaded);
}

TEST(PluginHost, SaysWhyAModuleCannotBeLoaded) {
    const test::TemporaryFolder folder;
    EXPECT_THAT(failureOf(folder.path() / "missing.so"), HasSubstr("missing.so"));
    EXPECT_THAT(failureOf(folder.write("text.so", "no module")), HasSubstr("text.so"));
}

TEST(PluginHost, SaysThatNoModuleWasFound) {
    EXPECT_EQ(failureOf(""), "no importer module found");
}

TEST(PluginHost, RefusesAModuleWithoutFactory) {
    Dl_info library{};
    ASSERT_NE(::dladdr(reinterpret_cast<void*>(&CFRetain), &library), 0);
    EXPECT_THAT(failureOf(library.dli_fname), HasSubstr("no importer module"));
}

TEST(PluginHost, TakesABareNameAsAFileInTheCurrentFolder) {
    const test::TemporaryFolder folder;
    fs::create_symlink(PluginHost::findModule(), folder.path() / "linked_importer.so");
    const auto former = fs::current_path();
    fs::current_path(folder.path());
    EXPECT_EQ(failureOf("linked_importer.so"), "");
    fs::current_path(former);
}

TEST(PluginHost, LooksFirstWhereItIsTold) {
    const auto inTree = PluginHost::findModule();
    const auto places = PluginHost::expectedModules();
    ASSERT_FALSE(inTree.empty());
    const test::TemporaryFolder folder;
    const auto elsewhere = folder.path() / "importer.so";
    const test::Variable told("VELAMO_IMPORTER", elsewhere.c_str());
    EXPECT_EQ(PluginHost::expectedModules().front(), elsewhere);
    EXPECT_EQ(PluginHost::expectedModules().size(), places.size() + 1);
    EXPECT_EQ(PluginHost::findModule(), inTree) << "while there is nothing";
    fs::create_symlink(inTree, elsewhere);
    EXPECT_EQ(PluginHost::findModule(), elsewhere);
}

TEST(PluginHost, TakesAnEmptyVariableForNone) {
    const auto places = PluginHost::expectedModules();
    const test::Variable empty("VELAMO_IMPORTER", "");
    EXPECT_EQ(PluginHost::expectedModules(), places);
}

TEST(PluginHost, ExpectsTheModuleInTheLayoutsOfAnInstallation) {
    const auto folder = pathOfThisModule().parent_path();
    const auto places = PluginHost::expectedModules();
    for (const char* place : {"velamo", "."})
        EXPECT_THAT(places, testing::Contains((folder / place / "velamo_importer.so").lexically_normal())) << place;
}

TEST(PluginHost, ServesManyThreadsWithAHostEach) {
    const test::TemporaryFolder folder;
    const auto shared = folder.write("shared.dst", smallDst());
    const test::Instances instances;
    std::vector<std::thread> threads;
    threads.reserve(16);
    std::atomic<int> wrong = 0;
    for (int number = 0; number < 16; ++number)
        threads.emplace_back([&, number] {
            PluginHost host(PluginHost::findModule());
            const auto own = folder.write(std::to_string(number) + ".dst", smallDst());
            const auto broken = folder.write(std::to_string(number) + "x.dst", "");
            for (int turn = 0; turn < 50; ++turn) {
                wrong += host.attributesOf(own) != attributesOfSmallDst;
                wrong += host.attributesOf(shared) != attributesOfSmallDst;
                wrong += host.attributesOf(broken) != std::nullopt;
            }
        });
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(wrong, 0);
    instances.expectMore(0);
}

}  // namespace
}  // namespace velamo
