#include "velamo/formats/import.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <utility>

#include "tests/support/dst.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/unreadable_file.h"
#include "velamo/formats/design_attributes.h"
#include "velamo/formats/format.h"
#include "velamo/formats/thread_file.h"

namespace velamo {
namespace {

using test::bytes;
using test::dstFile;
using test::TemporaryFolder;

const char* const oneThreadFile =
    "<plist version=\"1.0\"><array><dict><key>threadfileversion</key><integer>2</integer></dict></array></plist>";

class DstNames : public testing::TestWithParam<std::string> {};
TEST_P(DstNames, ReachTheDstReader) {
    const TemporaryFolder folder;
    const auto file = folder.write(GetParam(), dstFile(bytes(1, 0, 3)));
    VLMDesign design;
    VLMError error;
    EXPECT_TRUE(importDesignFromURLerror(design, file, &error)) << error.message();
    EXPECT_EQ(design.designName(), GetParam());
    EXPECT_EQ(design.designLocation(), file);
    EXPECT_EQ(design.designType(), "DST");
    EXPECT_EQ(design.displayRange(), (StitchRange{0, 1}));
    EXPECT_FALSE(design.useThreadFile());
}
INSTANTIATE_TEST_SUITE_P(Rows, DstNames,
                         testing::Values("Design.DST", "design.Dst", "design.dst", "a.b.dst", "a b\n.dst", "\xFF.dst"));

class OtherNames : public testing::TestWithParam<std::string> {};
TEST_P(OtherNames, AreUnknownFormats) {
    const TemporaryFolder folder;
    const auto file = folder.write(GetParam(), dstFile(bytes(1, 0, 3)));
    folder.write("x.threads", oneThreadFile);
    VLMDesign design;
    design.setUseThreadFile(true);
    VLMError error;
    EXPECT_FALSE(importDesignFromURLerror(design, file, &error));
    EXPECT_EQ(error.code, 10);
    EXPECT_EQ(error.message(), "Unknown file format (UTI).");
    EXPECT_TRUE(design.useThreadFile());  // the side file was not asked
    EXPECT_EQ(design.designName(), GetParam());
}
INSTANTIATE_TEST_SUITE_P(Rows, OtherNames,
                         testing::Values("x", "x.txt", "x.dst2", "x.ds", "dst", ".dst", "x.", "x.dst.bak"));

TEST(Import, ResetsTheListsAndNothingElse) {
    const TemporaryFolder folder;
    VLMDesign design;
    design.setStitches({{1, 1, false, false}});
    design.setThreads({VLMThread()});
    design.setDesignVersion(99);
    design.setXMax(5);
    EXPECT_FALSE(importDesignFromURLerror(design, folder.path() / "x.txt", nullptr));
    EXPECT_TRUE(design.stitches().empty());
    EXPECT_TRUE(design.threads().empty());
    EXPECT_EQ(design.designVersion(), 99);
    EXPECT_EQ(design.xMax(), 5.0F);
}

TEST(Import, FailsAsTheSystemDoesWhereReadingBreaksOff) {
    if (!test::hasUnreadableFile()) GTEST_SKIP() << "no file here fails so";
    for (const Format& format : allFormats()) {
        const TemporaryFolder folder;
        const auto file = folder.path() / ("x." + std::string(format.extension));
        std::filesystem::create_symlink(test::unreadableFile, file);
        for (const bool givesSystemReason : {false, true}) {
            VLMDesign design;
            VLMError error;
            EXPECT_FALSE(importDesignFromURLerror(design, file, &error, {.givesSystemReason = givesSystemReason}));
            EXPECT_EQ(error.domain, systemErrorDomain) << file;
            EXPECT_EQ(error.code, EIO) << file;
            EXPECT_FALSE(format.reader(design, file, nullptr, {}));
        }
    }
}

TEST(Import, RefusesFilesLargerThanAnyDesign) {
    for (const Format& format : allFormats()) {
        const TemporaryFolder folder;
        const auto file = folder.write("x." + std::string(format.extension), "");
        std::filesystem::resize_file(file, std::uintmax_t{6} << 30);  // takes no room
        VLMDesign design;
        VLMError error;
        EXPECT_FALSE(importDesignFromURLerror(design, file, &error));
        EXPECT_EQ(error.domain, systemErrorDomain) << file;
        EXPECT_EQ(error.code, EFBIG) << file;
    }
}

TEST(Import, GivesTheSystemsReasonWhereItIsAsked) {
    const TemporaryFolder folder;
    std::filesystem::create_directory(folder.path() / "folder.dst");
    for (const auto& [name, code] : {std::pair{"missing.dst", ENOENT}, std::pair{"folder.dst", EISDIR}}) {
        VLMDesign design;
        VLMError error;
        EXPECT_FALSE(importDesignFromURLerror(design, folder.path() / name, &error));
        EXPECT_EQ(error.domain, designErrorDomain);
        EXPECT_EQ(error.code, 123);
        EXPECT_FALSE(importDesignFromURLerror(design, folder.path() / name, &error, {.givesSystemReason = true}));
        EXPECT_EQ(error.domain, systemErrorDomain);
        EXPECT_EQ(error.code, code);
    }
}

/// Without them the design would seem to have none, and lose them when it is written.
TEST(Import, TakesASideFileThatCannotBeReadThisTimeForNoneUnlessAskedNotTo) {
    if (!test::hasUnreadableFile()) GTEST_SKIP() << "no file here fails so";
    const TemporaryFolder folder;
    const auto file = folder.write("x.dst", dstFile(bytes(1, 0, 3)));
    std::filesystem::create_symlink(test::unreadableFile, folder.path() / "x.threads");
    VLMDesign design;
    design.setUseThreadFile(true);
    VLMError error;
    EXPECT_TRUE(importDesignFromURLerror(design, file, &error)) << error.message();
    EXPECT_FALSE(design.useThreadFile());
    EXPECT_FALSE(importThreadsForDesign(design, file));
    EXPECT_FALSE(importDesignFromURLerror(design, file, &error, {.givesSystemReason = true}));
    EXPECT_EQ(error.domain, systemErrorDomain);
    EXPECT_EQ(error.code, EIO);
    EXPECT_FALSE(design.useThreadFile());
    EXPECT_EQ(attributesOfFile(file), std::nullopt);
}

TEST(Import, TakesWhatIsNoSideFileForNone) {
    const TemporaryFolder folder;
    const auto file = folder.write("x.dst", dstFile(bytes(1, 0, 3)));
    for (const bool isFolder : {true, false}) {
        std::filesystem::remove(folder.path() / "x.threads");
        if (isFolder) {
            std::filesystem::create_directory(folder.path() / "x.threads");
        } else {
            folder.write("x.threads", "");
            std::filesystem::resize_file(folder.path() / "x.threads", std::uintmax_t{6} << 30);
        }
        VLMDesign design;
        VLMError error;
        EXPECT_TRUE(importDesignFromURLerror(design, file, &error)) << error.message();
        EXPECT_FALSE(design.useThreadFile());
    }
}

TEST(Import, RefusesADesignWithoutStitches) {
    const TemporaryFolder folder;
    VLMDesign design;
    VLMError error;
    EXPECT_FALSE(
        importDesignFromURLerror(design, folder.write("x.dst", dstFile(bytes(0, 0, 0xF3, 0, 0, 0xF3))), &error));
    EXPECT_EQ(error.code, 11);
    EXPECT_EQ(error.message(), "File holds no stitches.");
    EXPECT_EQ(design.threads().size(), 1U);
}

TEST(Import, PassesTheReadersErrorOnAndKeepsWhatWasRead) {
    const TemporaryFolder folder;
    VLMDesign design;
    VLMError error;
    EXPECT_FALSE(importDesignFromURLerror(design, folder.write("x.dst", dstFile(bytes(1, 0, 3, 1, 0, 0))), &error));
    EXPECT_EQ(error.code, 111);
    EXPECT_EQ(error.message(), "Unable to import DST file (invalid function codes).");
    EXPECT_EQ(design.stitches().size(), 1U);
}

TEST(Import, AsksTheSideFileEvenWhenTheReaderFailed) {
    const TemporaryFolder folder;
    folder.write("x.threads", oneThreadFile);
    VLMDesign design;
    VLMError error;
    EXPECT_FALSE(importDesignFromURLerror(design, folder.write("x.dst", dstFile(bytes(1, 0, 3, 1, 0, 0))), &error));
    EXPECT_EQ(error.code, 111);
    EXPECT_TRUE(design.useThreadFile());
    EXPECT_EQ(design.threads()[0].key(), std::nullopt);
}

TEST(Import, OfAFolderOrAMissingFileFindsItTooShort) {
    const TemporaryFolder folder;
    std::filesystem::create_directory(folder.path() / "folder.dst");
    for (const char* name : {"folder.dst", "folder.dst/", "missing.dst"}) {
        VLMDesign design;
        VLMError error;
        EXPECT_FALSE(importDesignFromURLerror(design, folder.path().native() + "/" + name, &error));
        EXPECT_EQ(error.code, 123) << name;
    }
}

TEST(Formats, AreFoundByTheirExtensionInAnyCase) {
    EXPECT_GE(allFormats().size(), 13U);
    for (const Format& format : allFormats()) EXPECT_EQ(formatWithExtension(format.extension), &format);
    ASSERT_NE(formatWithExtension("JEF+"), nullptr);
    EXPECT_EQ(formatWithExtension("JEF+")->type, "JEF+");
    EXPECT_EQ(formatWithExtension("je"), nullptr);
    EXPECT_EQ(formatWithExtension("jef++"), nullptr);
    EXPECT_EQ(formatWithExtension(""), nullptr);
}

TEST(DesignNames, EndInAnExtensionOfOurs) {
    for (const char* name : {"rose.dst", "Rose.DST", "a/rose.jef+", ".old.pes"})
        EXPECT_TRUE(hasDesignName(name)) << name;
    for (const char* name : {"", "rose", "dst", ".dst", "rose.threads", "rose.dst/", "rose.dst.old"})
        EXPECT_FALSE(hasDesignName(name)) << name;
}

}  // namespace
}  // namespace velamo
