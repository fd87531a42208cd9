#include "reading/archive_members.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <tuple>

#include "reading/confined_reader.h"
#include "reading/read_design.h"
#include "tests/reading/same_design.h"
#include "tests/support/archives.h"
#include "tests/support/dst.h"
#include "tests/support/samples.h"
#include "tests/support/temporary_folder.h"
#include "velamo/formats/format.h"
#include "velamo/formats/thread_file.h"

namespace velamo {
namespace {

using test::Bytes;
using test::PackedFile;

/// A side file for a design of so many threads.
Bytes sideFileOf(std::size_t count) {
    return threadFileWith(
        std::vector<VLMThread>(count, VLMThread::initWithColorandNameforKeyofPalettewithName(
                                          VLMColor::initWithRedgreenblue(0.5, 0, 0), "Own", "1", "Mine", Text())));
}

const Bytes design = test::sampleFile("dst");

/// Reads a path in a confined process, and here, which is to be the same.
bool read(const std::filesystem::path& file, VLMDesign& there, VLMError& error) {
    ConfinedReader reader;
    VLMDesign here;
    VLMError hereError;
    const bool isRead = reader.readDesign(there, file, &error);
    EXPECT_EQ(readDesign(here, file, &hereError), isRead);
    EXPECT_EQ(hereError.message(), error.message());
    test::expectSame(there, here);
    EXPECT_EQ(there.designLocation(), file);
    return isRead;
}

class DesignsOfFormats : public testing::TestWithParam<Format> {};
TEST_P(DesignsOfFormats, AreReadFromArchivesAsFromFolders) {
    const test::TemporaryFolder folder;
    const std::string name = "rose." + std::string(GetParam().extension);
    const Bytes bytes = test::sampleFile(GetParam().extension);
    VLMDesign inFolder;
    VLMError folderError;
    const bool isRead = readDesign(inFolder, folder.write("folder.zip/" + name, bytes), &folderError);
    folder.write("pack.zip", test::zipOf({{.name = "sub/" + name, .bytes = bytes}}));
    VLMDesign inArchive;
    VLMError error;
    EXPECT_EQ(read(folder.path() / "pack.zip/sub" / name, inArchive, error), isRead);
    EXPECT_EQ(error.message(), folderError.message());
    test::expectSame(inArchive, inFolder);
}
INSTANTIATE_TEST_SUITE_P(Each, DesignsOfFormats, testing::ValuesIn(allFormats().begin(), allFormats().end()),
                         [](const auto& row) {
                             return std::string(row.param.type == "JEF+" ? "JEFPlus" : row.param.type);
                         });

struct Row {
    const char* name;
    std::vector<PackedFile> files;
    std::string member;
    int code = 0;
    std::string message;
};
class ArchiveMembers : public testing::TestWithParam<Row> {};
TEST_P(ArchiveMembers, AreFoundOrSaidToBeMissing) {
    const test::TemporaryFolder folder;
    folder.write("pack.zip", test::zipOf(GetParam().files));
    VLMDesign read;
    VLMError error;
    EXPECT_EQ(velamo::read(folder.path() / "pack.zip" / GetParam().member, read, error), GetParam().code == 0);
    EXPECT_EQ(error.code, GetParam().code);
    if (!GetParam().message.empty()) {
        EXPECT_EQ(error.message(), GetParam().message);
    }
}
const std::vector<PackedFile> pack{{.name = "rose.dst", .bytes = design},
                                   {.name = "sub/leaf.dst", .bytes = design},
                                   {.name = "empty/", .bytes = {}},
                                   {.name = "inner.zip", .bytes = test::zipOf({{.name = "a.dst", .bytes = design}})},
                                   {.name = "Gr\x81n.dst", .bytes = design},
                                   {.name = "notes.txt", .bytes = test::bytes("text")},
                                   {.name = "short.dst", .bytes = test::bytes("text")},
                                   {.name = "secret.dst", .bytes = design, .flags = 1},
                                   {.name = "../up.dst", .bytes = design},
                                   {.name = ".hidden.dst", .bytes = design}};
INSTANTIATE_TEST_SUITE_P(
    Rows, ArchiveMembers,
    testing::Values(
        Row{"Here", pack, "rose.dst", 0, ""}, Row{"InAFolder", pack, "sub/leaf.dst", 0, ""},
        Row{"WithDots", pack, "./sub//leaf.dst", 0, ""}, Row{"ByItsBytes", pack, "Gr\x81n.dst", 0, ""},
        Row{"ByItsText", pack, "Grün.dst", 0, ""}, Row{"ByItsTextWithMarks", pack, "Gru\xCC\x88n.dst", 0, ""},
        Row{"Missing", pack, "none.dst", ENOENT, ""}, Row{"MissingInAFolder", pack, "sub/none.dst", ENOENT, ""},
        Row{"Hidden", pack, ".hidden.dst", ENOENT, ""}, Row{"Outside", pack, "../up.dst", ENOTDIR, ""},
        Row{"Folder", pack, "sub", EISDIR, ""}, Row{"EmptyFolder", pack, "empty", EISDIR, ""},
        Row{"BehindAFile", pack, "rose.dst/x.dst", ENOTDIR, ""},
        Row{"InAnArchiveInside", pack, "inner.zip/a.dst", ENOTSUP, "an archive within an archive is not opened"},
        Row{"TheArchiveInside", pack, "inner.zip", 10, ""}, Row{"NoDesignsName", pack, "notes.txt", 10, ""},
        Row{"NoDesign", pack, "short.dst", 123, ""},
        Row{"Protected", pack, "secret.dst", EACCES, "it is protected by a password"}),
    [](const auto& row) { return row.param.name; });

/// Both may be meant, but one of them is called just so.
TEST(ArchiveMembersOfOneText, AreToldApartByTheirBytes) {
    const test::TemporaryFolder folder;
    folder.write("pack.zip", test::zipOf({{.name = "Gr\x81n.dst", .bytes = test::bytes("no design")},
                                          {.name = "Grün.dst", .bytes = design}}));
    VLMDesign read;
    VLMError error;
    EXPECT_TRUE(velamo::read(folder.path() / "pack.zip/Grün.dst", read, error));
    EXPECT_FALSE(velamo::read(folder.path() / "pack.zip/Gr\x81n.dst", read, error));
}

TEST(ArchiveMembersOfOneName, AreTheFirst) {
    const test::TemporaryFolder folder;
    folder.write("pack.zip", test::zipOf({{.name = "rose.dst", .bytes = design},
                                          {.name = "rose.dst", .bytes = test::bytes("no design")}}));
    VLMDesign read;
    VLMError error;
    EXPECT_TRUE(velamo::read(folder.path() / "pack.zip/rose.dst", read, error));
}

class SideFilesInArchives : public testing::TestWithParam<bool> {};
TEST_P(SideFilesInArchives, AreTaken) {
    const test::TemporaryFolder folder;
    VLMDesign alone;
    ASSERT_TRUE(readDesign(alone, folder.write("alone.dst", design), nullptr));
    const PackedFile file{.name = "a/rose.dst", .bytes = design};
    const PackedFile side{.name = "a/rose.threads", .bytes = sideFileOf(alone.threads().size())};
    const PackedFile other{.name = "rose.threads", .bytes = test::bytes("another folder's")};
    folder.write("pack.zip", test::zipOf(GetParam() ? std::vector{other, side, file} : std::vector{file, side, other}));
    const auto path = folder.path() / "pack.zip/a/rose.dst";
    VLMDesign read;
    VLMError error;
    ASSERT_TRUE(velamo::read(path, read, error));
    EXPECT_TRUE(read.useThreadFile());
    EXPECT_EQ(read.threads()[0].name(), "Own");

    ConfinedReader reader;
    std::vector<VLMThread> threads;
    EXPECT_TRUE(reader.readThreads(threads, path, alone.threads().size(), nullptr));
    EXPECT_EQ(threads.size(), alone.threads().size());
    EXPECT_TRUE(reader.readThreads(threads, folder.path() / "pack.zip/b/rose.dst", 1, nullptr));
    EXPECT_TRUE(threads.empty());
    const auto attributes = reader.attributesOfFile(path, nullptr);
    ASSERT_TRUE(attributes);
    EXPECT_EQ(attributes->colors, 1);
}
INSTANTIATE_TEST_SUITE_P(Order, SideFilesInArchives, testing::Bool(),
                         [](const auto& row) { return row.param ? "BeforeTheDesign" : "BehindTheDesign"; });

TEST(SideFilesBesideArchives, AreNotTaken) {
    const test::TemporaryFolder folder;
    folder.write("pack.zip", test::zipOf({{.name = "rose.dst", .bytes = design}}));
    folder.write("rose.threads", sideFileOf(2));
    folder.write("pack.threads", sideFileOf(2));
    VLMDesign read;
    VLMError error;
    ASSERT_TRUE(velamo::read(folder.path() / "pack.zip/rose.dst", read, error));
    EXPECT_FALSE(read.useThreadFile());
}

TEST(DamagedArchives, GiveWhatCameBefore) {
    const test::TemporaryFolder folder;
    Bytes tar = test::tarOf({{.name = "rose.dst", .bytes = design}, {.name = "leaf.dst", .bytes = design}});
    tar.resize(tar.size() - 1024 - 512);
    folder.write("pack.tar", tar);
    VLMDesign read;
    VLMError error;
    EXPECT_TRUE(velamo::read(folder.path() / "pack.tar/rose.dst", read, error));
    for (const char* name : {"leaf.dst", "none.dst"}) {
        EXPECT_FALSE(velamo::read(folder.path() / "pack.tar" / name, read, error));
        EXPECT_EQ(error.message(), "the archive is damaged here, or packed in a way that cannot be read") << name;
    }
    folder.write("none.zip", std::string("no archive"));
    EXPECT_FALSE(velamo::read(folder.path() / "none.zip/rose.dst", read, error));
    EXPECT_EQ(error.message(), "this is no archive that can be read");
}

/// Such an archive costs its reader no more than a large file would.
TEST(ArchivesWithLargeMembers, AreRefusedWithinLimits) {
    const test::TemporaryFolder folder;
    const std::string file = (folder.path() / "bomb.tar.gz").native();
    ASSERT_EQ(std::system(("cd '" + folder.path().native() +
                           "' && truncate -s 300M rose.dst && tar czf bomb.tar.gz rose.dst && rm rose.dst")
                              .c_str()),
              0);
    ConfinedReader reader({.time = std::chrono::minutes(5)});
    VLMDesign read;
    VLMError error;
    EXPECT_FALSE(reader.readDesign(read, file + "/rose.dst", &error));
    EXPECT_EQ(error.code, EFBIG);
    EXPECT_TRUE(reader.readDesign(read, folder.write("x.dst", design), &error));
}

}  // namespace
}  // namespace velamo
