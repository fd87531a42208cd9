#include "formats/import.h"

#include <gtest/gtest.h>

#include "formats/format.h"
#include "tests/support/dst.h"
#include "tests/support/temporary_folder.h"

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
    EXPECT_EQ(design.displayRange(), (VLMRange{0, 1}));
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
    EXPECT_EQ(allFormats().size(), 13U);
    for (const Format& format : allFormats()) EXPECT_EQ(formatWithExtension(format.extension), &format);
    ASSERT_NE(formatWithExtension("JEF+"), nullptr);
    EXPECT_EQ(formatWithExtension("JEF+")->type, "JEF+");
    EXPECT_EQ(formatWithExtension("je"), nullptr);
    EXPECT_EQ(formatWithExtension("jef++"), nullptr);
    EXPECT_EQ(formatWithExtension(""), nullptr);
}

}  // namespace
}  // namespace velamo
