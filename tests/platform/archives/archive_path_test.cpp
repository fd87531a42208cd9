#include "velamo/platform/archives/archive_path.h"

#include <gtest/gtest.h>

#include "tests/support/temporary_folder.h"

namespace velamo {
namespace {

TEST(ArchiveNames, AreKnownByTheirEnds) {
    for (const char* name : {"a.zip", "A.ZIP", "a.7z", "a.rar", "a.tar", "a.tar.gz", "a.tgz", "a.taz", "a.tar.bz2",
                             "a.tbz2", "a.tar.xz", "a.txz", "a.tar.lzma", "a.tar.zst", "a.tzst", "b/a.b.Tar.Gz"})
        EXPECT_TRUE(hasArchiveName(name)) << name;
    for (const char* name : {"", "zip", ".zip", "a.zip/b", "a.gz", "a.zipx", "a.pes", "azip", ".tar.gz"})
        EXPECT_FALSE(hasArchiveName(name)) << name;
}

class ArchivePaths : public testing::Test {
protected:
    ArchivePaths() {
        folder_.write("pack.zip", std::string("bytes"));
        folder_.write("folder.zip/rose.pes", std::string("bytes"));
        folder_.write("folder.zip/inner.7z", std::string("bytes"));
        folder_.write("pack.pes", std::string("bytes"));
        std::filesystem::create_symlink("pack.zip", folder_.path() / "link.rar");
        std::filesystem::create_symlink("link.zip", folder_.path() / "link.zip");
    }
    [[nodiscard]] std::string partsOf(const std::string& path) const {
        const auto parts = pathThroughArchive(folder_.path() / path);
        return parts ? parts->archive.lexically_relative(folder_.path()).native() + " | " + parts->member : "";
    }

private:
    test::TemporaryFolder folder_;
};

TEST_F(ArchivePaths, HaveTwoParts) {
    EXPECT_EQ(partsOf("pack.zip/rose.pes"), "pack.zip | rose.pes");
    EXPECT_EQ(partsOf("pack.zip//5x7/./rose.pes"), "pack.zip | 5x7/rose.pes");
    EXPECT_EQ(partsOf("pack.zip/inner.zip/rose.pes"), "pack.zip | inner.zip/rose.pes");
    EXPECT_EQ(partsOf("folder.zip/inner.7z/rose.pes"), "folder.zip/inner.7z | rose.pes");
    EXPECT_EQ(partsOf("link.rar/rose.pes"), "link.rar | rose.pes");
    EXPECT_EQ(partsOf("pack.zip/" + std::string(300, 'x')), "pack.zip | " + std::string(300, 'x'));
}

TEST_F(ArchivePaths, AreNoneElsewhere) {
    for (const char* path : {"pack.zip", "pack.zip/", "pack.zip/.", "pack.zip/../pack.pes", "folder.zip/rose.pes",
                             "folder.zip/none.pes", "pack.pes/rose.pes", "none.zip/rose.pes", "link.zip/rose.pes", ""})
        EXPECT_EQ(partsOf(path), "") << path;
}

TEST(ArchivePathsFromHere, AreRelative) {
    for (const char* path : {"", "/", "none.zip/rose.pes"}) EXPECT_FALSE(pathThroughArchive(path)) << path;
}

}  // namespace
}  // namespace velamo
