#include "platform/files.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <vector>

#include "tests/support/bytes.h"
#include "tests/support/temporary_folder.h"

namespace velamo {
namespace {

using test::bytes;
using test::TemporaryFolder;

std::size_t entriesIn(const std::filesystem::path& folder) {
    const std::filesystem::directory_iterator entries(folder);
    return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
}

TEST(ReadingFiles, GivesEveryByte) {
    const TemporaryFolder folder;
    std::vector<std::uint8_t> all(70000);
    for (std::size_t i = 0; i < all.size(); ++i) all[i] = static_cast<std::uint8_t>(i * 7);
    EXPECT_EQ(readWholeFile(folder.write("all", all)), all);
}

TEST(ReadingFiles, GivesNothingOfWhatIsNoReadableFile) {
    const TemporaryFolder folder;
    std::filesystem::create_directory(folder.path() / "folder.dst");
    const auto pipe = folder.path() / "pipe.dst";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_TRUE(readWholeFile(folder.path() / "folder.dst").empty());
    EXPECT_TRUE(
        readWholeFile(pipe).empty());  // nobody ever writes into it: blocking would be found by the test's time limit
    EXPECT_TRUE(readWholeFile("/dev/zero").empty());
    EXPECT_TRUE(readWholeFile(folder.path() / "missing").empty());
    EXPECT_TRUE(readWholeFile(folder.write("empty", "")).empty());
}

TEST(ReplacingFiles, WritesANewFileWithTheUsersPermissions) {
    const TemporaryFolder folder;
    const auto file = folder.path() / "new";
    const mode_t mask = ::umask(027);
    EXPECT_FALSE(replaceFile(file, bytes("new")));
    ::umask(mask);
    EXPECT_EQ(TemporaryFolder::read(file), "new");
    EXPECT_EQ(std::filesystem::status(file).permissions(), std::filesystem::perms(0640));
    EXPECT_EQ(entriesIn(folder.path()), 1U);
}

TEST(ReplacingFiles, KeepsThePermissionsOfTheOldFile) {
    const TemporaryFolder folder;
    const auto file = folder.write("file", "old and longer");
    std::filesystem::permissions(file, std::filesystem::perms(0604));
    EXPECT_FALSE(replaceFile(file, bytes("new")));
    EXPECT_EQ(TemporaryFolder::read(file), "new");
    EXPECT_EQ(std::filesystem::status(file).permissions(), std::filesystem::perms(0604));
}

TEST(ReplacingFiles, ReplacesWhatALinkNames) {
    const TemporaryFolder folder;
    const auto file = folder.write("deep/file", "old");
    const auto near = folder.path() / "deep/near";
    const auto far = folder.path() / "far";
    std::filesystem::create_symlink("file", near);
    std::filesystem::create_symlink("deep/near", far);
    EXPECT_FALSE(replaceFile(far, bytes("new")));
    EXPECT_TRUE(std::filesystem::is_symlink(far));
    EXPECT_TRUE(std::filesystem::is_symlink(near));
    EXPECT_EQ(TemporaryFolder::read(file), "new");
}

TEST(ReplacingFiles, EndsOnLinksThatGoInCircles) {
    const TemporaryFolder folder;
    std::filesystem::create_symlink("two", folder.path() / "one");
    std::filesystem::create_symlink("one", folder.path() / "two");
    EXPECT_EQ(replaceFile(folder.path() / "one", bytes("new")), std::errc::too_many_symbolic_link_levels);
    EXPECT_EQ(entriesIn(folder.path()), 2U);
}

TEST(ReplacingFiles, RefusesAFolderAndAMissingFolder) {
    const TemporaryFolder folder;
    EXPECT_EQ(replaceFile(folder.path(), bytes("new")), std::errc::is_a_directory);
    EXPECT_EQ(replaceFile(folder.path() / "missing/file", bytes("new")), std::errc::no_such_file_or_directory);
    EXPECT_EQ(entriesIn(folder.path()), 0U);
}

TEST(ReplacingFiles, LeavesTheOldFileWhenTheNewOneDoesNotFit) {
    const TemporaryFolder folder;
    const auto file = folder.write("file", "old");
    const pid_t child = ::fork();
    if (child == 0) {  // the limit stays with this process
        std::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{1000, 1000};
        ::setrlimit(RLIMIT_FSIZE, &limit);
        ::_exit(replaceFile(file, std::vector<std::uint8_t>(5000)) == std::errc::file_too_large ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    EXPECT_EQ(TemporaryFolder::read(file), "old");
    EXPECT_EQ(entriesIn(folder.path()), 1U);
}

}  // namespace
}  // namespace velamo
