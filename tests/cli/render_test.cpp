#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "cli/render.h"
#include "tests/cli/support.h"
#include "velamo/formats/import.h"

namespace velamo {
namespace {

using test::bytes;
using test::call;
using test::TemporaryFolder;
using testing::HasSubstr;
using testing::StartsWith;

/// Sewn from (121, 121) down to the origin and back, then in another thread to the right: 13 mm by 12.1 mm.
const test::Bytes cornerDst = test::dstFile(
    bytes(0xA5, 0xA5, 0x27, 0x5A, 0x5A, 0x1B, 0xA5, 0xA5, 0x27, 0, 0, 0xC3, 0x04, 0, 0x03, 0x08, 0x00, 0x03));

class Render : public testing::Test {
protected:
    test::Outcome rendered(const std::string& picture, const std::vector<std::string>& more = {}) {
        std::vector<std::string> arguments{"render", design_, folder_.path() / picture};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return call(arguments);
    }
    std::string bytesOf(const std::string& picture) { return TemporaryFolder::read(folder_.path() / picture); }
    /// Width and height of a PNG file.
    std::vector<int> sizeOf(const std::string& picture) {
        const std::string png = bytesOf(picture);
        EXPECT_THAT(png, StartsWith("\x89PNG\r\n"));
        const auto number = [&png](std::size_t at) {
            return static_cast<std::uint8_t>(png.at(at + 2)) * 256 + static_cast<std::uint8_t>(png.at(at + 3));
        };
        return {number(16), number(20)};
    }
    /// Files in the folder, besides the design.
    std::vector<std::string> written() {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(folder_.path()))
            if (entry.path() != design_) names.push_back(entry.path().filename());
        return names;
    }

    TemporaryFolder folder_;
    std::string design_ = folder_.write("corner.dst", cornerDst);
};

struct SizeRow {
    const char* name;
    std::vector<std::string> options;
    std::vector<int> size;
};
class RenderSize : public Render, public testing::WithParamInterface<SizeRow> {};
TEST_P(RenderSize, IsThatOfTheRow) {
    const auto outcome = rendered("out.png", GetParam().options);
    EXPECT_EQ(outcome.status, 0) << outcome.problems;
    EXPECT_EQ(outcome.out + outcome.problems, "");
    EXPECT_EQ(sizeOf("out.png"), GetParam().size);
}
INSTANTIATE_TEST_SUITE_P(Rows, RenderSize,
                         testing::Values(SizeRow{"PixelATenth", {}, {150, 141}},
                                         SizeRow{"Scaled", {"--scale", "2.5"}, {375, 353}},
                                         SizeRow{"ScaledDown", {"--scale", "0.01"}, {2, 2}},
                                         SizeRow{"LongerSide", {"--size", "256"}, {256, 241}},
                                         SizeRow{"Edited", {"-e", "select-all", "-e", "resize 2"}, {280, 262}}),
                         [](const auto& row) { return row.param.name; });

TEST_F(Render, DrawsWhatIsAskedFor) {
    EXPECT_EQ(rendered("flat.png").status, 0);
    for (const std::vector<std::string>& options : {std::vector<std::string>{"--3d"},
                                                    {"--jumps"},
                                                    {"--structure"},
                                                    {"--thread", "0"},
                                                    {"--thread", "1"},
                                                    {"-e", "select-all"},
                                                    {"-e", "recolor 0 1 0 0 ''"},
                                                    {"-e", "show-thread 1 off"}}) {
        EXPECT_EQ(rendered("other.png", options).status, 0);
        EXPECT_TRUE(bytesOf("other.png") != bytesOf("flat.png")) << options.front() << " " << options.back();
    }
}

TEST_F(Render, DrawsLinesInTrueSize) {
    EXPECT_EQ(rendered("a.SVG", {"--3d"}).status, 0);
    EXPECT_THAT(bytesOf("a.SVG"), HasSubstr("width=\"15mm\" height=\"14.1mm\""));
    EXPECT_EQ(rendered("a.Pdf").status, 0);
    EXPECT_THAT(bytesOf("a.Pdf"), StartsWith("%PDF"));
    EXPECT_THAT(bytesOf("a.Pdf"), HasSubstr("/MediaBox [ 0 0 42.519685 39.968504 ]"));
}

TEST_F(Render, TellsBrokenDesigns) {
    const std::string torn = folder_.write("torn.dst", std::string("LA:"));
    const auto outcome = call({"render", torn, folder_.path() / "out.png"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.problems, "velamo: " + torn + ": Unable to import DST file (missing header). (error 123)\n");
    EXPECT_EQ(written(), (std::vector<std::string>{"torn.dst"}));
}

TEST_F(Render, TellsPicturesThatAreTooLarge) {
    const auto outcome = rendered("out.png", {"--scale", "1000"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.problems, "velamo: " + (folder_.path() / "out.png").native() +
                                    ": A picture of 150000 by 141000 pixels cannot be drawn. (error 27)\n");
    EXPECT_EQ(rendered("out.png", {"--scale", "200"}).status, 1);  // the sides could be so long, but not both
    EXPECT_EQ(rendered("out.png", {"--scale", "1e300"}).status, 1);
    EXPECT_TRUE(written().empty());
    EXPECT_EQ(rendered("out.svg", {"--scale", "1000"}).status, 0);
}

struct LargeRow {
    const char* name;
    const char* file;
    const char* jump;  // in tenths of a millimetre
    const char* size;  // as it is said, or null where it can be drawn
};
class LargePictures : public Render, public testing::WithParamInterface<LargeRow> {};
TEST_P(LargePictures, SayHowLargeTheyAre) {
    const auto& [name, file, jump, size] = GetParam();
    const auto outcome = rendered(file, {"-e", std::string("insert-jump ") + jump + " 0 2", "-e", "optimize VP3"});
    EXPECT_EQ(outcome.status, size == nullptr ? 0 : 1);
    EXPECT_EQ(outcome.problems, size == nullptr ? ""
                                                : "velamo: " + (folder_.path() / file).native() + ": A picture of " +
                                                      size + " cannot be drawn. (error 27)\n");
    EXPECT_EQ(std::filesystem::exists(folder_.path() / file), size == nullptr);
}
INSTANTIATE_TEST_SUITE_P(Rows, LargePictures,
                         testing::Values(LargeRow{"PageOfFiveMetres", "out.pdf", "50000", nullptr},
                                         LargeRow{"PageOfSixMetres", "out.pdf", "60000", "6015 by 14 mm"},
                                         LargeRow{"LinesOfSixMetres", "out.svg", "60000", nullptr},
                                         LargeRow{"LinesOfTwoHundredMetres", "out.svg", "2e6", "200015 by 14 mm"},
                                         LargeRow{"Pixels", "out.png", "60000", "60150 by 141 pixels"}),
                         [](const auto& row) { return row.param.name; });

TEST_F(Render, TellsWhatCannotBeWritten) {
    const std::string out = folder_.path() / "nowhere" / "out.png";
    const auto outcome = call({"render", design_, out});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.problems, "velamo: " + out + ": No such file or directory (error 2)\n");
    std::filesystem::create_directory(folder_.path() / "folder.png");
    EXPECT_EQ(rendered("folder.png").status, 1);
}

TEST_F(Render, TellsEditsThatFail) {
    const auto outcome = rendered("out.png", {"-e", "flip X"});
    EXPECT_NE(outcome.status, 0);
    EXPECT_TRUE(written().empty());
}

struct UsageRow {
    const char* name;
    std::string picture;
    std::vector<std::string> options;
    const char* message;
};
class RenderUsage : public Render, public testing::WithParamInterface<UsageRow> {};
TEST_P(RenderUsage, IsRefused) {
    const auto outcome = rendered(GetParam().picture, GetParam().options);
    EXPECT_EQ(outcome.status, 2);
    EXPECT_THAT(outcome.problems, HasSubstr(GetParam().message));
    EXPECT_TRUE(written().empty());
}
INSTANTIATE_TEST_SUITE_P(
    Rows, RenderUsage,
    testing::Values(UsageRow{"OtherExtension", "out.gif", {}, "a picture is a .png, .svg or .pdf file, not '"},
                    UsageRow{"NoExtension", "png", {}, "a picture is a .png"},
                    UsageRow{"ScaleAndSize", "out.png", {"--scale", "2", "--size", "5"}, "--size"},
                    UsageRow{"ScaleOfNothing", "out.png", {"--scale", "0"}, "--scale"},
                    UsageRow{"NegativeScale", "out.png", {"--scale", "-1"}, "--scale"},
                    UsageRow{"ScaleThatIsNone", "out.png", {"--scale", "x"}, "--scale"},
                    UsageRow{"SizeOfNothing", "out.png", {"--size", "0"}, "--size"},
                    UsageRow{"SizeTooLarge", "out.png", {"--size", "32768"}, "--size"},
                    UsageRow{
                        "NoSuchThread", "out.png", {"--thread", "2"}, "--thread 2: the design has the threads 0 to 1"},
                    UsageRow{"NegativeThread", "out.png", {"--thread", "-2"}, "--thread"},
                    UsageRow{"NoThreadsAtAll",
                             "out.png",
                             {"-e", "select-all", "-e", "delete", "--thread", "0"},
                             "--thread 0: the design has no threads"},
                    UsageRow{"ScaleThatIsNoNumber", "out.png", {"--scale", "nan"}, "--scale"},
                    UsageRow{"InfiniteScale", "out.png", {"--scale", "inf"}, "--scale"},
                    UsageRow{"NoCommand", "out.png", {"-e", "frobnicate"}, "there is no command 'frobnicate'"}),
    [](const auto& row) { return row.param.name; });

}  // namespace
}  // namespace velamo
