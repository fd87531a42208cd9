#include "velamo/platform/system/folder_walk.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <map>

#include "tests/support/other_user.h"
#include "tests/support/temporary_folder.h"

namespace velamo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

class Walk : public testing::Test {
protected:
    /// Walks everything below the named folders of the temporary one.
    void walk(const std::vector<std::string>& names = {""}) {
        FolderWalk walk([](const std::string& name) { return name.ends_with(".dst"); });
        for (const auto& name : names) walk.enter(folder_.path() / name);
        while (const auto listing = walk.next()) {
            EXPECT_GE(walk.finishedShare(), finishedShare_);
            finishedShare_ = walk.finishedShare();
            folders_.push_back(relative(listing->folder));
            if (listing->error) errors_[relative(listing->folder)] = listing->error.value();
            for (const FolderEntry& entry : listing->entries)
                entries_.emplace(relative(listing->folder / entry.name), entry);
            for (const std::string& link : listing->deadLinks) deadLinks_.push_back(relative(listing->folder / link));
        }
        finishedShare_ = walk.finishedShare();
    }
    [[nodiscard]] std::string relative(const std::filesystem::path& path) const {
        return path.lexically_relative(folder_.path());
    }

    test::TemporaryFolder folder_;
    std::vector<std::string> folders_;
    std::map<std::string, int> errors_;
    std::map<std::string, FolderEntry> entries_;
    std::vector<std::string> deadLinks_;
    double finishedShare_ = 0;
};

TEST_F(Walk, TellsOfTheWantedNames) {
    folder_.write("a/rose.dst", std::string("12345"));
    folder_.write("a/b/lily.dst", std::string());
    folder_.write("a/b/other.txt", std::string());
    walk();
    EXPECT_THAT(folders_, UnorderedElementsAre(".", "a", "a/b"));
    ASSERT_EQ(entries_.size(), 2U);
    EXPECT_EQ(entries_.at("a/rose.dst").state.kind, FileKind::regular);
    EXPECT_EQ(entries_.at("a/rose.dst").state.size, 5);
    std::error_code error;
    EXPECT_EQ(entries_.at("a/rose.dst").state, stateOfFile(folder_.path() / "a" / "rose.dst", error));
    EXPECT_NEAR(finishedShare_, 1.0, 1e-9);
}

TEST_F(Walk, WalksIntoFoldersWithWantedNames) {
    folder_.write("x.dst/y.dst", std::string());
    walk();
    EXPECT_EQ(entries_.at("x.dst").state.kind, FileKind::folder);
    EXPECT_EQ(entries_.at("x.dst/y.dst").state.kind, FileKind::regular);
}

TEST_F(Walk, ListsALinkedFolderUnderItsOwnName) {
    folder_.write("z/rose.dst", std::string());
    for (const char* link : {"a", "zz"}) std::filesystem::create_directory_symlink("z", folder_.path() / link);
    walk();
    EXPECT_THAT(folders_, ElementsAre(".", "z"));
    EXPECT_NEAR(finishedShare_, 1.0, 1e-9);
}

TEST_F(Walk, ListsALinkedFolderUnderItsOwnNameInAnotherRoot) {
    folder_.write("two/rose.dst", std::string());
    std::filesystem::create_directories(folder_.path() / "one");
    std::filesystem::create_directory_symlink("../two", folder_.path() / "one" / "link");
    walk({"two", "one"});
    EXPECT_THAT(folders_, UnorderedElementsAre("one", "two"));
}

TEST_F(Walk, EndsInCircles) {
    folder_.write("a/b/rose.dst", std::string());
    std::filesystem::create_directory_symlink(folder_.path(), folder_.path() / "a" / "b" / "top");
    std::filesystem::create_directory_symlink("self", folder_.path() / "self");
    walk();
    EXPECT_THAT(folders_, UnorderedElementsAre(".", "a", "a/b"));
    EXPECT_THAT(errors_, IsEmpty());
}

TEST_F(Walk, TellsWhyAnEntryIsUnknown) {
    std::filesystem::create_symlink("nowhere", folder_.path() / "x.dst");
    walk();
    EXPECT_EQ(entries_.at("x.dst").error, std::errc::no_such_file_or_directory);
}

TEST_F(Walk, TellsOfLinksThatLeadNowhere) {
    std::filesystem::create_symlink("nowhere", folder_.path() / "x.dst");
    std::filesystem::create_symlink("/nowhere/at all", folder_.path() / "stick");
    std::filesystem::create_symlink("loop", folder_.path() / "loop");
    folder_.write("rose.dst", std::string());
    std::filesystem::create_symlink("rose.dst", folder_.path() / "rose");
    walk();
    EXPECT_THAT(deadLinks_, UnorderedElementsAre("x.dst", "stick"));
}

TEST_F(Walk, TellsAPipeWithoutWaiting) {
    ASSERT_EQ(::mkfifo((folder_.path() / "x.dst").c_str(), 0600), 0);
    walk();
    EXPECT_EQ(entries_.at("x.dst").state.kind, FileKind::other);
}

TEST_F(Walk, PassesOverAFolderThatIsNotThere) {
    walk({"nowhere"});
    EXPECT_THAT(folders_, IsEmpty());
    EXPECT_NEAR(finishedShare_, 1.0, 1e-9);
}

TEST_F(Walk, TellsWhyAFolderCannotBeRead) {
    folder_.write("file", std::string());
    walk({"file"});
    EXPECT_EQ(errors_.at("file"), ENOTDIR);
}

TEST(FileStates, TellAllKinds) {
    const test::TemporaryFolder folder;
    const auto file = folder.write("file", std::string("123"));
    std::error_code error = std::make_error_code(std::errc::io_error);
    const FileState state = stateOfFile(file, error);
    EXPECT_FALSE(error);
    EXPECT_EQ(state.kind, FileKind::regular);
    EXPECT_EQ(state.size, 3);
    std::filesystem::last_write_time(file, std::filesystem::last_write_time(file) + std::chrono::nanoseconds(7));
    EXPECT_EQ(stateOfFile(file, error).modified, state.modified + 7);
    EXPECT_EQ(stateOfFile(folder.path(), error).kind, FileKind::folder);
    EXPECT_EQ(stateOfFile("/dev/null", error).kind, FileKind::other);
    EXPECT_FALSE(error);
    static_cast<void>(stateOfFile(folder.path() / "nowhere", error));
    EXPECT_EQ(error, std::errc::no_such_file_or_directory);
}

TEST(ReasonAgainstReading, IsTheSystems) {
    const test::TemporaryFolder folder;
    const auto file = folder.write("file", std::string());
    EXPECT_FALSE(reasonAgainstReading(file));
    EXPECT_EQ(reasonAgainstReading(folder.path() / "nowhere"), std::errc::no_such_file_or_directory);
    const auto pipe = folder.path() / "pipe";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_EQ(reasonAgainstReading(pipe), std::errc::invalid_argument);  // without waiting for a writer
    EXPECT_EQ(reasonAgainstReading(folder.path()), std::errc::is_a_directory);
    std::filesystem::permissions(file, std::filesystem::perms::none);
    EXPECT_TRUE(test::inBoundProcess(folder.path(),
                                     [&file] { return reasonAgainstReading(file) == std::errc::permission_denied; }));
}

}  // namespace
}  // namespace velamo
