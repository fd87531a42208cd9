// The program that file managers run, as they run it.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <string>
#include <vector>

#include "integrations/thumbnails/thumbnail_of_file.h"
#include "tests/support/designs.h"
#include "tests/support/patches.h"
#include "tests/support/png.h"
#include "tests/support/samples.h"
#include "tests/support/temporary_folder.h"
#include "velamo/formats/format.h"
#include "velamo/render/thumbnail.h"

namespace velamo {
namespace {

using test::TemporaryFolder;

class Thumbnailer : public testing::Test {
protected:
    /// Runs the program in the folder, behind a command of the shell, and gives back its exit status.
    int run(const std::string& arguments, const std::string& before = "") {
        const std::string command = "cd '" + folder_.path().native() + "' && " + before + VELAMO_THUMBNAILER + " " +
                                    arguments + " >said.out 2>said.err";
        const int status = std::system(command.c_str());
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
    [[nodiscard]] std::string output() const { return TemporaryFolder::read(folder_.path() / "said.out"); }
    [[nodiscard]] std::string problems() const { return TemporaryFolder::read(folder_.path() / "said.err"); }
    [[nodiscard]] bool exists(const std::string& name) const { return std::filesystem::exists(folder_.path() / name); }

    TemporaryFolder folder_;
};

// ---- pictures

class ThumbnailerOfFormat : public Thumbnailer, public testing::WithParamInterface<Format> {};
TEST_P(ThumbnailerOfFormat, DrawsADesignWithoutAWord) {
    const std::string design = "patch." + std::string(GetParam().extension);
    ASSERT_TRUE(test::writePatch(folder_.path() / design));
    EXPECT_EQ(run(design + " out.png 128"), 0);
    EXPECT_EQ(output() + problems(), "");
    const auto picture = test::readPng(folder_.path() / "out.png");
    EXPECT_EQ(std::max(picture.width, picture.height), 128);
    EXPECT_NEAR(std::min(picture.width, picture.height), 125, 3);  // some formats know sixths of a millimetre
    const auto alphaAt = [&picture](int column, int row) {
        return picture.rgba[static_cast<std::size_t>(row * picture.width + column) * 4 + 3];
    };
    const int right = picture.width - 1;
    const int bottom = picture.height - 1;
    EXPECT_EQ(alphaAt(right / 2, bottom / 2), 255);
    EXPECT_EQ(alphaAt(0, 0) + alphaAt(right, 0) + alphaAt(0, bottom) + alphaAt(right, bottom), 0);
}
INSTANTIATE_TEST_SUITE_P(Each, ThumbnailerOfFormat, testing::ValuesIn(allFormats().begin(), allFormats().end()),
                         [](const auto& row) {
                             return std::string(row.param.type == "JEF+" ? "JEFPlus" : row.param.type);
                         });

TEST_F(Thumbnailer, TakesAnExtensionInUpperCase) {
    ASSERT_TRUE(test::writePatch(folder_.path() / "ROSE.DST"));
    EXPECT_EQ(run("ROSE.DST out.png 64"), 0);
    EXPECT_TRUE(exists("out.png"));
}

TEST_F(Thumbnailer, ReplacesAnEarlierPicture) {
    ASSERT_TRUE(test::writePatch(folder_.path() / "rose.dst"));
    folder_.write("out.png", std::string_view("an earlier one"));
    EXPECT_EQ(run("rose.dst out.png 256"), 0);
    const auto picture = test::readPng(folder_.path() / "out.png");
    EXPECT_EQ(std::max(picture.width, picture.height), 256);
}

/// Xfce reads the picture from a file that it has made before and holds open.
TEST_F(Thumbnailer, FillsAnEmptyFileThatSomebodyHoldsOpen) {
    ASSERT_TRUE(test::writePatch(folder_.path() / "rose.dst"));
    std::ifstream held(folder_.write("out.png", std::string_view()), std::ios::binary);
    EXPECT_EQ(run("rose.dst out.png 128"), 0);
    const std::string read{std::istreambuf_iterator<char>(held), std::istreambuf_iterator<char>()};
    EXPECT_EQ(read.substr(1, 3), "PNG");
    EXPECT_EQ(read, TemporaryFolder::read(folder_.path() / "out.png"));
}

TEST_F(Thumbnailer, LeavesAnEmptyFileEmptyWhereThereIsNoRoom) {
    ASSERT_TRUE(test::writePatch(folder_.path() / "rose.dst"));
    folder_.write("out.png", std::string_view());
    EXPECT_EQ(run("rose.dst out.png 512", "trap '' XFSZ; ulimit -f 2;"), 1);
    EXPECT_EQ(TemporaryFolder::read(folder_.path() / "out.png"), "");
    EXPECT_EQ(run("rose.dst new.png 512", "trap '' XFSZ; ulimit -f 2;"), 1);
    EXPECT_FALSE(exists("new.png"));
    EXPECT_EQ(output(), "");
    EXPECT_EQ(problems(), "velamo-thumbnailer: new.png: File too large (error 27)\n");
}

TEST_F(Thumbnailer, DrawsNoMorePixelsThanHostsKeep) {
    ASSERT_TRUE(test::writePatch(folder_.path() / "rose.dst"));
    EXPECT_EQ(run("rose.dst out.png 100000"), 0);
    const auto picture = test::readPng(folder_.path() / "out.png");
    EXPECT_EQ(std::max(picture.width, picture.height), 1024);
}

// ---- failures

struct FailureRow {
    const char* name;
    const char* file;
    test::Bytes content;
    const char* reason;
};
class ThumbnailerFailure : public Thumbnailer, public testing::WithParamInterface<FailureRow> {};
TEST_P(ThumbnailerFailure, SaysWhyAndLeavesTheOutputAlone) {
    folder_.write(GetParam().file, GetParam().content);
    EXPECT_EQ(run(std::string(GetParam().file) + " out.png 128"), 1);
    EXPECT_FALSE(exists("out.png"));
    folder_.write("out.png", std::string_view("an earlier one"));
    EXPECT_EQ(run(std::string(GetParam().file) + " out.png 128"), 1);
    EXPECT_EQ(TemporaryFolder::read(folder_.path() / "out.png"), "an earlier one");
    EXPECT_EQ(output(), "");
    EXPECT_EQ(problems(), "velamo-thumbnailer: " + std::string(GetParam().file) + ": " + GetParam().reason + "\n");
}
INSTANTIATE_TEST_SUITE_P(Rows, ThumbnailerFailure,
                         testing::Values(FailureRow{"OfAPoem", "poem.dst", test::bytes("A rose is a rose is a rose.\n"),
                                                    "Unable to import DST file (missing header). (error 123)"},
                                         FailureRow{
                                             "OfAnEmptyFile", "empty.exp", {}, "File holds no stitches. (error 11)"},
                                         FailureRow{"OfADesignWithoutStitches", "none.dst", test::dstFile({}),
                                                    "Unable to import DST file (missing header). (error 123)"},
                                         FailureRow{"OfAnotherExtension", "rose.txt", test::sampleFile("dst"),
                                                    "Unknown file format (UTI). (error 10)"},
                                         FailureRow{"WithoutAnExtension", "rose", test::sampleFile("dst"),
                                                    "Unknown file format (UTI). (error 10)"}),
                         [](const auto& row) { return row.param.name; });

TEST_F(Thumbnailer, SaysWhatIsNoFile) {
    std::filesystem::create_directory(folder_.path() / "folder.dst");
    for (const auto& [input, reason] : {std::pair{"missing.dst", "No such file or directory (error 2)"},
                                        {"folder.dst", "Is a directory (error 21)"},
                                        {"/dev/null", "Invalid argument (error 22)"}}) {
        EXPECT_EQ(run(std::string(input) + " out.png 128"), 1) << input;
        EXPECT_FALSE(exists("out.png")) << input;
        EXPECT_EQ(output(), "") << input;
        EXPECT_EQ(problems(), "velamo-thumbnailer: " + std::string(input) + ": " + reason + "\n");
    }
}

TEST_F(Thumbnailer, SaysWhereItCannotWrite) {
    ASSERT_TRUE(test::writePatch(folder_.path() / "rose.dst"));
    for (const auto& [picture, reason] :
         {std::pair{"missing/out.png", "No such file or directory (error 2)"}, {".", "Is a directory (error 21)"}}) {
        EXPECT_EQ(run(std::string("rose.dst ") + picture + " 128"), 1) << picture;
        EXPECT_EQ(output(), "") << picture;
        EXPECT_EQ(problems(), "velamo-thumbnailer: " + std::string(picture) + ": " + reason + "\n");
    }
}

TEST_F(Thumbnailer, LeavesAPipeAlone) {
    ASSERT_TRUE(test::writePatch(folder_.path() / "rose.dst"));
    EXPECT_EQ(run("rose.dst pipe 128", "mkfifo pipe; "), 1);
    EXPECT_TRUE(std::filesystem::is_fifo(folder_.path() / "pipe"));
}

TEST_F(Thumbnailer, SaysHowItIsUsed) {
    ASSERT_TRUE(test::writePatch(folder_.path() / "rose.dst"));
    for (const char* arguments : {"", "rose.dst", "rose.dst out.png", "rose.dst out.png 128 more", "rose.dst out.png 0",
                                  "rose.dst out.png -128", "rose.dst out.png 12.5", "rose.dst out.png 128px",
                                  "rose.dst out.png ''", "rose.dst out.png 99999999999", "--help"}) {
        EXPECT_EQ(run(arguments), 2) << arguments;
        EXPECT_EQ(output(), "") << arguments;
        EXPECT_EQ(problems(), "usage: velamo-thumbnailer INPUT OUTPUT SIZE\n") << arguments;
        EXPECT_FALSE(exists("out.png")) << arguments;
    }
}

// ---- designs that no machine has

TEST(Thumbnail, OfAwkwardDesignsIsMadeOrNot) {
    for (const VLMDesign& design : test::awkwardDesigns())
        for (const std::int32_t pixels : {1, 128, std::numeric_limits<std::int32_t>::max()}) {
            const auto bitmap = thumbnailOf(design, pixels);
            if (!bitmap) continue;
            EXPECT_LE(std::max(bitmap->width(), bitmap->height()), std::min(pixels, mostPixelsOfThumbnail));
        }
}

}  // namespace
}  // namespace velamo
