#include "platform/set_aside.h"

#include <gtest/gtest.h>

#include "tests/support/temporary_folder.h"

namespace velamo {
namespace {

using test::TemporaryFolder;
namespace fs = std::filesystem;

TEST(SetAside, TakesTheFirstNameThatIsFree) {
    const TemporaryFolder folder;
    const fs::path file = folder.path() / "rose.threads";
    for (const char* end : {".old", ".old2", ".old3"}) {
        folder.write("rose.threads", end);
        fs::path newName;
        EXPECT_FALSE(setAside(file, newName));
        EXPECT_EQ(newName, file.native() + end);
        EXPECT_FALSE(fs::exists(file));
    }
    for (const char* end : {".old", ".old2", ".old3"}) EXPECT_EQ(TemporaryFolder::read(file.native() + end), end);
}

TEST(SetAside, OverwritesNeitherFoldersNorLinks) {
    const TemporaryFolder folder;
    const fs::path file = folder.write("rose.threads", "new");
    fs::create_directory(file.native() + ".old");
    fs::create_symlink("/nowhere", file.native() + ".old2");
    fs::path newName;
    EXPECT_FALSE(setAside(file, newName));
    EXPECT_EQ(newName, file.native() + ".old3");
    EXPECT_TRUE(fs::is_directory(file.native() + ".old"));
    EXPECT_EQ(fs::read_symlink(file.native() + ".old2"), "/nowhere");
}

TEST(SetAside, RenamesALinkItself) {
    const TemporaryFolder folder;
    const fs::path other = folder.write("other", "text");
    const fs::path link = folder.path() / "rose.threads";
    fs::create_symlink("other", link);
    fs::path newName;
    EXPECT_FALSE(setAside(link, newName));
    EXPECT_EQ(fs::read_symlink(newName), "other");
    EXPECT_EQ(TemporaryFolder::read(other), "text");
}

TEST(SetAside, SaysWhyItFailed) {
    fs::path newName;
    EXPECT_EQ(setAside("/nowhere/rose.threads", newName), std::errc::no_such_file_or_directory);
    EXPECT_EQ(newName, "");
    const TemporaryFolder folder;
    const std::string longest(255, 'x');
    folder.write(longest, "text");
    EXPECT_EQ(setAside(folder.path() / longest, newName), std::errc::filename_too_long);
    EXPECT_TRUE(fs::exists(folder.path() / longest));
}

}  // namespace
}  // namespace velamo
