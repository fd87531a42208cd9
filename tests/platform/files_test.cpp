#include "velamo/platform/system/files.h"

#include <fcntl.h>
#include <grp.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#ifdef __linux__
#include <sys/mount.h>
#include <sys/xattr.h>
#endif

#include <algorithm>
#include <array>
#include <atomic>
#include <csignal>
#include <new>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/bytes.h"
#include "tests/support/other_user.h"
#include "tests/support/sanitizers.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/unreadable_file.h"
#include "velamo/platform/system/file_state.h"
#include "velamo/platform/system/interruption.h"

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

TEST(ReadingFiles, TellsAFailureFromTheEnd) {
    if (!test::hasUnreadableFile()) GTEST_SKIP() << "no file here fails so";
    const FileContent content = readFile(test::unreadableFile);
    EXPECT_EQ(content.error, std::errc::io_error);
    EXPECT_TRUE(content.isOpened);
    EXPECT_TRUE(content.bytes.empty());
    try {
        static_cast<void>(readWholeFile(test::unreadableFile));
        FAIL() << "nothing was read";
    } catch (const std::system_error& failure) {
        EXPECT_EQ(failure.code(), std::errc::io_error);
    }
}

struct UnreadRow {
    const char* name;
    const char* file;
    std::errc reason;
    bool isOpened;
};
class UnreadFiles : public testing::TestWithParam<UnreadRow> {};
TEST_P(UnreadFiles, HaveAReason) {
    const TemporaryFolder folder;
    std::filesystem::create_directory(folder.path() / "folder");
    std::filesystem::create_symlink("circle", folder.path() / "circle");
    ASSERT_EQ(::mkfifo((folder.path() / "pipe").c_str(), 0600), 0);
    folder.write("huge", "");
    std::filesystem::resize_file(folder.path() / "huge", std::uintmax_t{6} << 30);  // takes no room
    folder.write("large", "");
    std::filesystem::resize_file(folder.path() / "large", mostBytesOfFile + 1);
    const auto file = folder.path() / GetParam().file;
    const FileContent content = readFile(file);
    EXPECT_EQ(content.error, GetParam().reason);
    EXPECT_EQ(content.isOpened, GetParam().isOpened);
    EXPECT_TRUE(content.bytes.empty());
    EXPECT_TRUE(isAbsence(content.error));
    EXPECT_TRUE(readWholeFile(file).empty());
    EXPECT_EQ(reasonAgainstReading(file), GetParam().reason);
}
INSTANTIATE_TEST_SUITE_P(Rows, UnreadFiles,
                         testing::Values(UnreadRow{"Missing", "missing", std::errc::no_such_file_or_directory, false},
                                         UnreadRow{"Folder", "folder", std::errc::is_a_directory, false},
                                         UnreadRow{"Pipe", "pipe", std::errc::invalid_argument, false},
                                         UnreadRow{"Device", "/dev/zero", std::errc::invalid_argument, false},
                                         UnreadRow{"Circle", "circle", std::errc::too_many_symbolic_link_levels, false},
                                         UnreadRow{"Huge", "huge", std::errc::file_too_large, true},
                                         UnreadRow{"AByteTooLarge", "large", std::errc::file_too_large, true}),
                         [](const auto& row) { return row.param.name; });

TEST(ReadingFiles, ReadsTheLargestFile) {
    EXPECT_FALSE(reasonAgainstReading(
        FileState{.kind = FileKind::regular, .size = static_cast<std::int64_t>(mostBytesOfFile), .modified = 0}));
}

TEST(ReadingFiles, TakesFailuresForNoAbsence) {
    for (const auto code : {std::errc::io_error, std::errc::operation_not_permitted, std::errc::interrupted,
                            std::errc::too_many_files_open, std::errc::resource_unavailable_try_again})
        EXPECT_FALSE(isAbsence(std::make_error_code(code)));
}

TEST(ReadingFiles, RefusesAFileThatIsChangedMeanwhile) {
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
    std::size_t refused = 0;
    std::size_t wrong = 0;
    for (int turn = 0; turn < 500 || refused == 0; ++turn) {
        const FileContent found = readFile(file);
        if (found.error) ++refused;
        // The system empties the rest of the page in which the file ends now, even under a reader.
        const auto isSame = [](std::uint8_t byte, std::uint8_t written) { return byte == written || byte == 0; };
        const auto& read = found.bytes;
        if (found.error && (found.error != std::errc::resource_unavailable_try_again || !read.empty())) ++wrong;
        if (read.size() > all.size() || !std::equal(read.begin(), read.end(), all.begin(), isSame)) ++wrong;
    }
    isDone = true;
    writer.join();
    ::close(descriptor);
    EXPECT_EQ(wrong, 0U);
    EXPECT_GT(refused, 0U);
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

TEST(ReplacingFilesByPieces, PutsThemBehindEachOther) {
    const TemporaryFolder folder;
    const auto file = folder.write("file", bytes("old"));
    EXPECT_FALSE(replaceFileBy(file, [](const ByteSink& sink) { return sink(bytes("one ")) && sink(bytes("two")); }));
    EXPECT_EQ(readWholeFile(file), bytes("one two"));
    EXPECT_EQ(entriesIn(folder.path()), 1U);
}

/// Whether the producer minds that the disk is full or not: what did not get there was not written.
TEST(ReplacingFilesByPieces, LeavesTheOldFileWhereAPieceIsNotWritten) {
    const TemporaryFolder folder;
    const auto file = folder.write("file", bytes("old"));
    for (const bool isMinded : {true, false}) {
        const pid_t child = ::fork();
        if (child == 0) {
            const rlimit limit{4000, 4000};
            ::setrlimit(RLIMIT_FSIZE, &limit);
            ::signal(SIGXFSZ, SIG_IGN);
            const auto failure = replaceFileBy(file, [&](const ByteSink& sink) {
                return (sink(std::vector<std::uint8_t>(5000)) && sink(bytes("end"))) || !isMinded;
            });
            ::_exit(failure == std::errc::file_too_large ? 0 : 1);
        }
        int status = 0;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        EXPECT_EQ(status, 0) << isMinded;
        EXPECT_EQ(readWholeFile(file), bytes("old"));
        EXPECT_EQ(entriesIn(folder.path()), 1U);
    }
}

TEST(ReplacingFilesByPieces, LeavesTheOldFileWhereTheProducerGivesUp) {
    const TemporaryFolder folder;
    const auto file = folder.write("file", bytes("old"));
    const auto giveUp = [](const ByteSink& sink) { return sink(bytes("new")) && false; };
    EXPECT_EQ(replaceFileBy(file, giveUp), std::errc::operation_canceled);
    EXPECT_EQ(replaceFileBy(folder.path() / "other", giveUp), std::errc::operation_canceled);
    EXPECT_THROW(static_cast<void>(replaceFileBy(file, [](const ByteSink&) -> bool { throw std::bad_alloc(); })),
                 std::bad_alloc);
    EXPECT_EQ(readWholeFile(file), bytes("old"));
    EXPECT_EQ(entriesIn(folder.path()), 1U);
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

#ifdef O_TMPFILE  // Elsewhere a new file has a name from the first.

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

#endif

class EndedWriters : public testing::TestWithParam<int> {};
TEST_P(EndedWriters, LeaveNoSecondName) {
    if (test::isThreadSanitized) GTEST_SKIP() << "the sanitizer hands signals on in its own time";
    const TemporaryFolder folder;
    std::mt19937 random(7);
    for (int round = 0; round < 40; ++round) {
        const pid_t child = ::fork();
        if (child == 0) {
            prepareForSignals();
            std::vector<std::thread> writers;
            writers.reserve(3);
            for (const char* name : {"one", "two", "three"})
                writers.emplace_back([file = folder.path() / name] {
                    for (;;) static_cast<void>(replaceFile(file, bytes("some bytes")));
                });
            for (;;) ::pause();
        }
        ::usleep(static_cast<useconds_t>(3000 + random() % 5000));
        ::kill(child, GetParam());
        int status = 0;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == GetParam());
        for (const auto& entry : std::filesystem::directory_iterator(folder.path()))
            EXPECT_FALSE(entry.path().filename().native().starts_with('.')) << entry.path();
    }
}
INSTANTIATE_TEST_SUITE_P(Signals, EndedWriters, testing::Values(SIGINT, SIGTERM, SIGHUP),
                         [](const auto& row) { return "Signal" + std::to_string(row.param); });

TEST(Signals, ThatAreIgnoredStaySo) {
    const int status = statusOfChild([] {
        std::signal(SIGHUP, SIG_IGN);
        prepareForSignals();
        ::raise(SIGHUP);
        ::_exit(7);
    });
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 7);
}

TEST(Signals, OfAFileThatIsTooLargeAreErrors) {
    const TemporaryFolder folder;
    const auto file = folder.write("file", "old");
    const int status = statusOfChild([&] {
        prepareForSignals();
        const rlimit limit{1000, 1000};
        ::setrlimit(RLIMIT_FSIZE, &limit);
        ::_exit(replaceFile(file, std::vector<std::uint8_t>(5000)) == std::errc::file_too_large ? 7 : 1);
    });
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 7);
    EXPECT_EQ(TemporaryFolder::read(file), "old");
}

#ifdef O_TMPFILE

TEST(ReplacingFiles, TakesAwayWhatAKilledProcessLeft) {
    const TemporaryFolder folder;
    const auto file = folder.write("file", "old");
    folder.write(".file.velamo", "left");
    EXPECT_FALSE(replaceFile(file, bytes("new")));
    EXPECT_EQ(TemporaryFolder::read(file), "new");
    EXPECT_EQ(entriesIn(folder.path()), 1U);
}

#endif

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

#ifdef __linux__

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

#endif

constexpr uid_t nobody = 65534;

/// Replaces the file as somebody of the groups 65534 and 5678; true when that went well.
bool replaceAsNobody(const std::filesystem::path& file) {
    const int status = statusOfChild([&] {
        const std::array<gid_t, 2> groups{nobody, 5678};
        if (::setgroups(2, groups.data()) != 0 || ::setgid(nobody) != 0 || ::setuid(nobody) != 0) ::_exit(1);
        ::_exit(replaceFile(file, bytes("new")) ? 2 : 0);
    });
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

struct OwnerRow {
    const char* name;
    bool isRoot;
    uid_t owner;
    gid_t group;
    mode_t mode;
    uid_t newOwner;
    gid_t newGroup;
    mode_t newMode;
};
class Owners : public testing::TestWithParam<OwnerRow> {};
TEST_P(Owners, AreKeptWhereTheSystemAllows) {
    if (::geteuid() != 0) GTEST_SKIP() << "not the superuser";
    const OwnerRow& row = GetParam();
    const TemporaryFolder folder;
    const auto file = folder.write("file", "old");
    ASSERT_EQ(::chmod(folder.path().c_str(), 0777), 0);
    ASSERT_EQ(::chown(file.c_str(), row.owner, row.group), 0);
    ASSERT_EQ(::chmod(file.c_str(), row.mode), 0);
    ASSERT_TRUE(row.isRoot ? !replaceFile(file, bytes("new")) : replaceAsNobody(file));
    struct stat status = {};
    ASSERT_EQ(::stat(file.c_str(), &status), 0);
    EXPECT_EQ(TemporaryFolder::read(file), "new");
    EXPECT_EQ(status.st_uid, row.newOwner);
    EXPECT_EQ(status.st_gid, row.newGroup);
    EXPECT_EQ(status.st_mode & 07777U, row.newMode);
}
INSTANTIATE_TEST_SUITE_P(
    Rows, Owners,
    testing::Values(OwnerRow{"AllByRoot", true, 1234, 5678, 06751, 1234, 5678, 06751},
                    OwnerRow{"PrivateByRoot", true, 1234, 5678, 0600, 1234, 5678, 0600},
                    OwnerRow{"GroupByItsMember", false, nobody, 5678, 02664, nobody, 5678, 02664},
                    OwnerRow{"GroupOfAnothersFile", false, 1234, 5678, 04664, nobody, 5678, 0664},
                    OwnerRow{"ToRunAsItsOwner", false, nobody, nobody, 04755, nobody, nobody, 04755},
                    OwnerRow{"ToRunAsItsGroup", false, nobody, 5678, 02755, nobody, 5678, 02755},
                    OwnerRow{"NotTheGroupOfOthers", false, nobody, 5679, 02664, nobody, nobody, 0644},
                    OwnerRow{"NorItsPermissions", false, nobody, 5679, 0660, nobody, nobody, 0600}),
    [](const auto& row) { return row.param.name; });

#ifdef __linux__  // Other systems have calls of their own for these.

std::string attributeOf(const std::filesystem::path& file, const char* name) {
    std::array<char, 1000> value{};
    const ssize_t size = ::getxattr(file.c_str(), name, value.data(), value.size());
    return size < 0 ? "none" : std::string(value.data(), static_cast<std::size_t>(size));
}

TEST(ReplacingFiles, KeepsAttributes) {
    const TemporaryFolder folder;
    const auto file = folder.write("file", "old");
    if (::setxattr(file.c_str(), "user.note", "kept", 4, 0) != 0) GTEST_SKIP() << "no attributes in this file system";
    ASSERT_EQ(::setxattr(file.c_str(), "user.empty", "", 0, 0), 0);
    EXPECT_FALSE(replaceFile(file, bytes("new")));
    EXPECT_EQ(TemporaryFolder::read(file), "new");
    EXPECT_EQ(attributeOf(file, "user.note"), "kept");
    EXPECT_EQ(attributeOf(file, "user.empty"), "");
}

TEST(ReplacingFiles, NeedsNotReadTheOldFile) {
    const TemporaryFolder folder;
    const auto file = folder.write("file", "old");
    if (::setxattr(file.c_str(), "user.note", "kept", 4, 0) != 0) GTEST_SKIP() << "no attributes in this file system";
    std::filesystem::permissions(file, std::filesystem::perms(0200));
    EXPECT_TRUE(test::inBoundProcess(folder.path(), [&] { return !replaceFile(file, bytes("new")); }));
    EXPECT_EQ(TemporaryFolder::read(file), ::geteuid() == 0 ? "new" : "");
}

/// An access list as the system keeps it: what the owner, user 4321, the group, all of these at most, and others may.
std::string accessList(std::uint16_t owner, std::uint16_t user, std::uint16_t group, std::uint16_t most,
                       std::uint16_t others) {
    constexpr std::uint32_t none = 0xFFFFFFFF;
    std::string list("\2\0\0\0", 4);
    const auto put = [&list](std::uint16_t tag, std::uint16_t permissions, std::uint32_t id) {
        list.append(reinterpret_cast<const char*>(&tag), sizeof tag);
        list.append(reinterpret_cast<const char*>(&permissions), sizeof permissions);
        list.append(reinterpret_cast<const char*>(&id), sizeof id);
    };
    put(0x01, owner, none);
    put(0x02, user, 4321);
    put(0x04, group, none);
    put(0x10, most, none);
    put(0x20, others, none);
    return list;
}

TEST(ReplacingFiles, KeepsTheAccessList) {
    constexpr const char* name = "system.posix_acl_access";
    const TemporaryFolder folder;
    const auto file = folder.write("file", "old");
    const std::string list = accessList(6, 6, 4, 6, 0);
    if (::setxattr(file.c_str(), name, list.data(), list.size(), 0) != 0) GTEST_SKIP() << "no access lists here";
    EXPECT_FALSE(replaceFile(file, bytes("new")));
    EXPECT_EQ(attributeOf(file, name), list);
    EXPECT_EQ(std::filesystem::status(file).permissions(), std::filesystem::perms(0660));
}

TEST(ReplacingFiles, TakesNoAccessListFromTheFolder) {
    const TemporaryFolder folder;
    const auto file = folder.write("file", "old");
    std::filesystem::permissions(file, std::filesystem::perms(0640));
    const std::string list = accessList(6, 6, 6, 6, 0);
    if (::setxattr(folder.path().c_str(), "system.posix_acl_default", list.data(), list.size(), 0) != 0)
        GTEST_SKIP() << "no access lists here";
    EXPECT_FALSE(replaceFile(file, bytes("new")));
    EXPECT_EQ(attributeOf(file, "system.posix_acl_access"), "none");
    EXPECT_EQ(std::filesystem::status(file).permissions(), std::filesystem::perms(0640));
}

#endif

TEST(FillingFiles, WritesIntoTheVeryFile) {
    const TemporaryFolder folder;
    const auto file = folder.write("file", "");
    struct stat before = {};
    struct stat after = {};
    ASSERT_EQ(::stat(file.c_str(), &before), 0);
    EXPECT_FALSE(fillEmptyFile(file, bytes("new")));
    ASSERT_EQ(::stat(file.c_str(), &after), 0);
    EXPECT_EQ(TemporaryFolder::read(file), "new");
    EXPECT_EQ(after.st_ino, before.st_ino);
}

TEST(FillingFiles, RefusesWhatIsNoEmptyFile) {
    const TemporaryFolder folder;
    const auto file = folder.write("file", "old");
    EXPECT_EQ(fillEmptyFile(file, bytes("new")), std::errc::file_exists);
    EXPECT_EQ(TemporaryFolder::read(file), "old");
    EXPECT_EQ(fillEmptyFile("/dev/null", bytes("new")), std::errc::invalid_argument);
    EXPECT_EQ(fillEmptyFile(folder.path(), bytes("new")), std::errc::is_a_directory);
    EXPECT_EQ(fillEmptyFile(folder.path() / "missing", bytes("new")), std::errc::no_such_file_or_directory);
}

TEST(FillingFiles, EmptiesAFileThatDoesNotFit) {
    const TemporaryFolder folder;
    const auto file = folder.write("file", "");
    const int status = statusOfChild([&] {
        prepareForSignals();
        const rlimit limit{1000, 1000};
        ::setrlimit(RLIMIT_FSIZE, &limit);
        ::_exit(fillEmptyFile(file, std::vector<std::uint8_t>(5000)) == std::errc::file_too_large ? 7 : 1);
    });
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 7);
    EXPECT_EQ(std::filesystem::file_size(file), 0U);
}

}  // namespace
}  // namespace velamo
