#include "platform/files.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <random>
#include <thread>
#include <vector>

#include "tests/support/bytes.h"
#include "tests/support/other_user.h"
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

TEST(ReadingFiles, GivesWhatIsThereOfAFileThatShrinksAndGrows) {
    const TemporaryFolder folder;
    std::vector<std::uint8_t> all(300000);
    for (std::size_t i = 0; i < all.size(); ++i) all[i] = static_cast<std::uint8_t>(i * 7);
    const auto file = folder.write("all", all);
    const int descriptor = ::open(file.c_str(), O_WRONLY | O_APPEND);
    ASSERT_GE(descriptor, 0);
    std::atomic<bool> isDone = false;
    std::thread writer([&] {
        std::mt19937 random(5);
        while (!isDone) {
            const std::size_t kept = random() % all.size();
            if (::ftruncate(descriptor, static_cast<off_t>(kept)) != 0) return;
            if (::write(descriptor, all.data() + kept, all.size() - kept) < 0) return;
        }
    });
    std::size_t shorter = 0;
    std::size_t wrong = 0;
    for (int turn = 0; turn < 2000 || shorter == 0; ++turn) {
        const auto found = readWholeFile(file);
        if (found.size() < all.size()) ++shorter;
        // The system empties the rest of the page in which the file ends now, even under a reader.
        const auto isSame = [](std::uint8_t byte, std::uint8_t written) { return byte == written || byte == 0; };
        if (found.size() > all.size() || !std::equal(found.begin(), found.end(), all.begin(), isSame)) ++wrong;
    }
    isDone = true;
    writer.join();
    ::close(descriptor);
    EXPECT_EQ(wrong, 0U);
    EXPECT_GT(shorter, 0U);  // it did shrink meanwhile
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

TEST(ReplacingFiles, LeavesPipes) {
    const TemporaryFolder folder;
    const auto pipe = folder.path() / "pipe";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_EQ(replaceFile(pipe, bytes("new")), std::errc::invalid_argument);
    EXPECT_TRUE(std::filesystem::is_fifo(pipe));
    EXPECT_EQ(entriesIn(folder.path()), 1U);
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

/// Runs the body in a child process, and gives how that ended.
template <class Body>
int statusOfChild(const Body& body) {
    const pid_t child = ::fork();
    if (child == 0) {
        body();
        ::_exit(0);
    }
    int status = -1;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    return status;
}

TEST(ReplacingFiles, LeavesNothingOfAWriteThatIsKilled) {
    for (const bool isThere : {true, false}) {
        const TemporaryFolder folder;
        const auto file = folder.path() / "file";
        if (isThere) folder.write("file", "old");
        const int status = statusOfChild([&] {
            const rlimit noCore{0, 0};
            ::setrlimit(RLIMIT_CORE, &noCore);
            const rlimit limit{100000, 100000};
            ::setrlimit(RLIMIT_FSIZE, &limit);  // the write that goes beyond ends the process
            static_cast<void>(replaceFile(file, std::vector<std::uint8_t>(500000)));
        });
        EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGXFSZ);
        EXPECT_EQ(TemporaryFolder::read(file), isThere ? "old" : "");
        EXPECT_EQ(entriesIn(folder.path()), isThere ? 1U : 0U);
    }
}

TEST(ReplacingFiles, AreWholeWheneverTheProcessIsKilled) {
    const TemporaryFolder folder;
    const auto file = folder.path() / "file";
    constexpr std::size_t size = 300000;
    const std::vector<std::uint8_t> even(size, 'e');
    const std::vector<std::uint8_t> odd(size + 1, 'o');
    ASSERT_FALSE(replaceFile(file, even));
    std::mt19937 random(3);
    for (int round = 0; round < 60; ++round) {
        const pid_t child = ::fork();
        if (child == 0)
            for (bool isOdd = true;; isOdd = !isOdd) static_cast<void>(replaceFile(file, isOdd ? odd : even));
        ::usleep(static_cast<useconds_t>(random() % 8000));
        ::kill(child, SIGKILL);
        ASSERT_EQ(::waitpid(child, nullptr, 0), child);
        const std::string found = TemporaryFolder::read(file);
        EXPECT_TRUE(found == std::string(size, 'e') || found == std::string(size + 1, 'o')) << found.size();
        // Between two calls of the system it has a second name, and nothing else is ever seen.
        EXPECT_EQ(entriesIn(folder.path()), std::filesystem::exists(folder.path() / ".file.velamo") ? 2U : 1U);
    }
    EXPECT_FALSE(replaceFile(file, even));
    EXPECT_EQ(entriesIn(folder.path()), 1U);
}

TEST(ReplacingFiles, TakesAwayWhatAKilledProcessLeft) {
    const TemporaryFolder folder;
    const auto file = folder.write("file", "old");
    folder.write(".file.velamo", "left");
    EXPECT_FALSE(replaceFile(file, bytes("new")));
    EXPECT_EQ(TemporaryFolder::read(file), "new");
    EXPECT_EQ(entriesIn(folder.path()), 1U);
}

TEST(ReplacingFiles, WorksWhereItsOtherNameIsTaken) {
    const TemporaryFolder folder;
    const auto file = folder.write("file", "old");
    std::filesystem::create_directory(folder.path() / ".file.velamo");
    EXPECT_FALSE(replaceFile(file, bytes("new")));
    EXPECT_EQ(TemporaryFolder::read(file), "new");
    EXPECT_EQ(entriesIn(folder.path()), 2U);
}

TEST(ReplacingFiles, WorksWithTheLongestNames) {
    const TemporaryFolder folder;
    const auto file = folder.path() / std::string(255, 'n');
    for (const char* text : {"old", "new"}) {
        EXPECT_FALSE(replaceFile(file, bytes(text)));
        EXPECT_EQ(TemporaryFolder::read(file), text);
        EXPECT_EQ(entriesIn(folder.path()), 1U);
    }
    EXPECT_EQ(replaceFile(folder.path() / std::string(256, 'n'), bytes("new")), std::errc::filename_too_long);
}

TEST(ReplacingFiles, GoesByThePathAsItIsGiven) {
    const TemporaryFolder folder;
    const auto former = std::filesystem::current_path();
    std::filesystem::current_path(folder.path());
    const auto first = replaceFile("file", bytes("old"));
    const auto second = replaceFile("file", bytes("new"));
    std::filesystem::current_path(former);
    EXPECT_FALSE(first || second);
    EXPECT_EQ(TemporaryFolder::read(folder.path() / "file"), "new");
}

TEST(ReplacingFiles, BearsOthersAtTheSameFile) {
    const TemporaryFolder folder;
    const auto file = folder.path() / "file";
    std::vector<std::thread> writers;
    writers.reserve(4);
    std::atomic<int> failures = 0;
    for (int writer = 0; writer < 4; ++writer)
        writers.emplace_back([&, writer] {
            const std::vector<std::uint8_t> mine(5000, static_cast<std::uint8_t>('a' + writer));
            for (int i = 0; i < 25; ++i) failures += replaceFile(file, mine) ? 1 : 0;
        });
    for (std::thread& writer : writers) writer.join();
    EXPECT_EQ(failures, 0);
    const std::string found = TemporaryFolder::read(file);
    EXPECT_EQ(found, std::string(5000, found.at(0)));
    EXPECT_EQ(entriesIn(folder.path()), 1U);
}

TEST(ReplacingFiles, NeedsAFolderThatMayBeWritten) {
    const TemporaryFolder folder;
    const auto file = folder.write("deep/file", "old");
    std::filesystem::permissions(file.parent_path(), std::filesystem::perms(0555));
    EXPECT_TRUE(test::inBoundProcess(folder.path(), [&] {
        return replaceFile(file, bytes("new")) == std::errc::permission_denied &&
               replaceFile(file.parent_path() / "other", bytes("new")) == std::errc::permission_denied;
    }));
    EXPECT_EQ(TemporaryFolder::read(file), "old");
    EXPECT_EQ(entriesIn(file.parent_path()), 1U);
    std::filesystem::permissions(file.parent_path(), std::filesystem::perms(0755));
}

TEST(ReplacingFiles, LeavesTheOldFileOnAFullDisk) {
    const TemporaryFolder folder;
    if (::mount("velamo", folder.path().c_str(), "tmpfs", 0, "size=64k") != 0) GTEST_SKIP() << "not the superuser";
    const auto file = folder.write("file", "old");
    const auto toFile = replaceFile(file, std::vector<std::uint8_t>(200000));
    const auto toNew = replaceFile(folder.path() / "new", std::vector<std::uint8_t>(200000));
    const std::string found = TemporaryFolder::read(file);
    const std::size_t entries = entriesIn(folder.path());
    const auto after = replaceFile(file, bytes("new"));
    ::umount(folder.path().c_str());
    EXPECT_EQ(toFile, std::errc::no_space_on_device);
    EXPECT_EQ(toNew, std::errc::no_space_on_device);
    EXPECT_EQ(found, "old");
    EXPECT_EQ(entries, 1U);
    EXPECT_FALSE(after);
}

}  // namespace
}  // namespace velamo
