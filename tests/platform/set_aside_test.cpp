#include "velamo/platform/system/set_aside.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <iterator>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

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

std::vector<std::uint8_t> bytes(const std::string& text) {
    return {text.begin(), text.end()};
}

std::set<std::string> textsIn(const fs::path& folder) {
    std::set<std::string> texts;
    for (const auto& entry : fs::directory_iterator(folder)) texts.insert(TemporaryFolder::read(entry.path()));
    return texts;
}

TEST(ReplacingAndSettingAside, GivesTheOldFileTheFirstNameThatIsFree) {
    const TemporaryFolder folder;
    const fs::path file = folder.write("rose.threads", "0");
    for (const auto& [text, end] : {std::pair{"1", ".old"}, {"2", ".old2"}, {"3", ".old3"}}) {
        const std::string former = TemporaryFolder::read(file);
        fs::path newName;
        EXPECT_FALSE(replaceSettingAside(file, bytes(text), newName));
        EXPECT_EQ(newName, file.native() + end);
        EXPECT_EQ(TemporaryFolder::read(newName), former);
        EXPECT_EQ(TemporaryFolder::read(file), text);
    }
    EXPECT_EQ(textsIn(folder.path()).size(), 4U);
    EXPECT_EQ(std::distance(fs::directory_iterator(folder.path()), {}), 4);
}

TEST(ReplacingAndSettingAside, KeepsTheFeaturesOfTheOldFile) {
    const TemporaryFolder folder;
    const fs::path file = folder.write("rose.threads", "old");
    constexpr uid_t nobody = 65534;
    const bool isRoot = ::geteuid() == 0;
    if (isRoot) {
        ASSERT_EQ(::chown(file.c_str(), nobody, nobody), 0);
    }
    ASSERT_EQ(::chmod(file.c_str(), 0600), 0);
    fs::path newName;
    EXPECT_FALSE(replaceSettingAside(file, bytes("new"), newName));
    for (const fs::path& each : {file, newName}) {
        struct stat status = {};
        ASSERT_EQ(::stat(each.c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777U, 0600U) << each;
        EXPECT_EQ(status.st_uid, isRoot ? nobody : ::geteuid()) << each;
    }
}

TEST(ReplacingAndSettingAside, SetsALinkAsideItself) {
    const TemporaryFolder folder;
    const fs::path other = folder.write("other", "text");
    const fs::path link = folder.path() / "rose.threads";
    fs::create_symlink("other", link);
    fs::path newName;
    EXPECT_FALSE(replaceSettingAside(link, bytes("new"), newName));
    EXPECT_EQ(fs::read_symlink(newName), "other");
    EXPECT_EQ(TemporaryFolder::read(other), "text");
    EXPECT_FALSE(fs::is_symlink(link));
    EXPECT_EQ(TemporaryFolder::read(link), "new");
}

TEST(ReplacingAndSettingAside, LeavesTheOldFileWhereItFails) {
    const TemporaryFolder folder;
    fs::path newName;
    EXPECT_EQ(replaceSettingAside(folder.path() / "none", bytes("new"), newName), std::errc::no_such_file_or_directory);
    EXPECT_TRUE(fs::is_empty(folder.path()));
    const std::string longest(255, 'x');
    folder.write(longest, "text");
    EXPECT_EQ(replaceSettingAside(folder.path() / longest, bytes("new"), newName), std::errc::filename_too_long);
    EXPECT_EQ(textsIn(folder.path()), std::set<std::string>{"text"});
    EXPECT_EQ(newName, "");
}

TEST(ReplacingAndSettingAside, LeavesNoMomentWithoutAFile) {
    const TemporaryFolder folder;
    const fs::path file = folder.write("rose.threads", "old");
    std::atomic<bool> isDone{false};
    int absences = 0;
    std::thread watcher([&] {
        while (!isDone) {
            struct stat status = {};
            if (::lstat(file.c_str(), &status) != 0) ++absences;
        }
    });
    for (int i = 0; i < 100; ++i) {
        fs::path newName;
        EXPECT_FALSE(replaceSettingAside(file, bytes(std::to_string(i)), newName));
    }
    isDone = true;
    watcher.join();
    EXPECT_EQ(absences, 0);
}

TEST(ReplacingAndSettingAside, LosesNothingOfSeveralAtATime) {
    const TemporaryFolder folder;
    const fs::path file = folder.write("rose.threads", "old");
    std::set<std::string> expected{"old"};
    std::vector<std::thread> writers;
    for (int writer = 0; writer < 4; ++writer) {
        for (int i = 0; i < 25; ++i) expected.insert(std::to_string(writer) + '-' + std::to_string(i));
        writers.emplace_back([&file, writer] {
            for (int i = 0; i < 25; ++i) {
                fs::path newName;
                EXPECT_FALSE(
                    replaceSettingAside(file, bytes(std::to_string(writer) + '-' + std::to_string(i)), newName));
            }
        });
    }
    for (std::thread& writer : writers) writer.join();
    EXPECT_EQ(textsIn(folder.path()), expected);
    for (const auto& entry : fs::directory_iterator(folder.path()))
        EXPECT_TRUE(entry.path().filename().native().starts_with("rose.threads")) << entry;
}

TEST(CreatingFiles, ReplacesNothing) {
    const TemporaryFolder folder;
    const fs::path file = folder.path() / "rose.threads";
    EXPECT_FALSE(createFile(file, bytes("first")));
    EXPECT_EQ(createFile(file, bytes("second")), std::errc::file_exists);
    EXPECT_EQ(textsIn(folder.path()), std::set<std::string>{"first"});
    fs::create_symlink("nothing", folder.path() / "link");
    EXPECT_EQ(createFile(folder.path() / "link", bytes("third")), std::errc::file_exists);
    EXPECT_FALSE(fs::exists(folder.path() / "nothing"));
    EXPECT_EQ(std::distance(fs::directory_iterator(folder.path()), {}), 2);
}

}  // namespace
}  // namespace velamo
