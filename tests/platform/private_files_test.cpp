#include "velamo/platform/system/private_files.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <system_error>

#include "tests/support/temporary_folder.h"

namespace velamo {
namespace {

namespace fs = std::filesystem;

class PrivateFiles : public testing::Test {
protected:
    PrivateFiles() : mask_(::umask(0)) {}
    ~PrivateFiles() override { ::umask(mask_); }
    static int rightsOf(const fs::path& path) { return static_cast<int>(fs::status(path).permissions()); }
    template <class Body>
    static int codeOf(Body body) {
        try {
            body();
        } catch (const std::system_error& error) {
            return error.code().value();
        }
        return 0;
    }

    test::TemporaryFolder folder_;
    fs::path top_ = folder_.path();

private:
    mode_t mask_;
};

TEST_F(PrivateFiles, AreForTheUserAlone) {
    fs::permissions(top_, fs::perms(0755));
    makePrivateFolders(top_ / "a" / "b");
    makePrivateFile(top_ / "a" / "b" / "c");
    EXPECT_EQ(rightsOf(top_ / "a"), 0700);
    EXPECT_EQ(rightsOf(top_ / "a" / "b"), 0700);
    EXPECT_EQ(rightsOf(top_ / "a" / "b" / "c"), 0600);
    EXPECT_EQ(rightsOf(top_), 0755);
    const fs::path temporary = makePrivateTemporaryFolder();
    EXPECT_EQ(rightsOf(temporary), 0700);
    fs::remove(temporary);
}

TEST_F(PrivateFiles, ThatAreThereStayAsTheyAre) {
    const auto file = folder_.write("a/b", std::string("content"));
    fs::permissions(file, fs::perms(0644));
    makePrivateFolders(top_ / "a");
    makePrivateFile(file);
    EXPECT_EQ(rightsOf(file), 0644);
    EXPECT_EQ(test::TemporaryFolder::read(file), "content");
    makePrivateFolders("");  // of a name without a folder
}

TEST_F(PrivateFiles, SayWhyTheyCannotBeMade) {
    const auto file = folder_.write("file", std::string());
    EXPECT_EQ(codeOf([&] { makePrivateFolders(file); }), ENOTDIR);
    EXPECT_EQ(codeOf([&] { makePrivateFolders(file / "folder"); }), ENOTDIR);
    EXPECT_EQ(codeOf([&] { makePrivateFile(top_ / "nowhere" / "file"); }), ENOENT);
}

TEST_F(PrivateFiles, AreClosedToOthersAlone) {
    const auto file = folder_.write("file", std::string());
    fs::permissions(file, fs::perms(0664));
    closeToOthers(file);
    EXPECT_EQ(rightsOf(file), 0660);
    closeToOthers(file);
    EXPECT_EQ(rightsOf(file), 0660);
    fs::permissions(top_, fs::perms(02755));
    closeToOthers(top_);
    EXPECT_EQ(rightsOf(top_), 02750);
    closeToOthers(top_ / "nowhere");
}

}  // namespace
}  // namespace velamo
