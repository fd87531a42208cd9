#include "velamo/model/palettes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "tests/support/environment.h"
#include "tests/support/temporary_folder.h"

namespace velamo {
namespace {

using testing::Contains;
using testing::IsEmpty;

TEST(Palettes, AreThoseOfTheResources) {
    const auto names = paletteNames();
    EXPECT_THAT(names, Contains("Janome"));
    EXPECT_THAT(names, Contains("Brother"));
    EXPECT_TRUE(std::is_sorted(names.begin(), names.end()));
    for (const std::string& name : names) EXPECT_FALSE(threadsOfPalette(name).empty()) << name;
}

TEST(Palettes, HaveThreadsInTheMakersOrder) {
    const auto threads = threadsOfPalette("Janome");
    ASSERT_GT(threads.size(), 70U);
    EXPECT_EQ(threads.front().palette(), "Janome");
    EXPECT_TRUE(threads.front().key());
    EXPECT_TRUE(threads.front().name());
}

TEST(Palettes, AreEmptyWhereThereAreNone) {
    for (const char* name : {"", "Nobody", "../Janome", "a/b"}) EXPECT_THAT(threadsOfPalette(name), IsEmpty()) << name;
}

TEST(Palettes, AreLookedForInTheNamedFolderToo) {
    const test::TemporaryFolder folder;
    folder.write("Mine.clr/Mine.clr", std::string_view("header\n1 0 0 1 1 blue\n"));
    folder.write("NoFolder.clr", std::string_view("header\n"));
    const test::Variable named("VELAMO_RESOURCES", folder.path().c_str());
    EXPECT_THAT(paletteNames(), Contains("Mine"));
    EXPECT_THAT(paletteNames(), testing::Not(Contains("NoFolder")));
}

}  // namespace
}  // namespace velamo
