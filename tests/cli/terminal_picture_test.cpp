#include "cli/terminal_picture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

#include "tests/cli/support.h"

namespace velamo {
namespace {

using test::call;
using testing::HasSubstr;
using testing::StartsWith;

constexpr GraphicsColor red{1, 0, 0};
constexpr GraphicsColor blue{0, 0, 1};

/// Pixels in their rows from the top down: "r" red, "b" blue, "." transparent.
Bitmap bitmapOf(const std::vector<std::string>& rows) {
    auto bitmap = Bitmap::make(static_cast<std::int64_t>(rows.front().size()), static_cast<std::int64_t>(rows.size()));
    EXPECT_TRUE(bitmap->paint([&](GraphicsContext& context) {
        for (std::size_t row = 0; row < rows.size(); ++row)
            for (std::size_t column = 0; column < rows[row].size(); ++column) {
                if (rows[row][column] == '.') continue;
                context.setFillColor(rows[row][column] == 'r' ? red : blue);
                context.addRectangle({static_cast<double>(column), static_cast<double>(rows.size() - 1 - row), 1, 1});
                context.fillPath();
            }
    }));
    return std::move(*bitmap);
}

const std::string upper = "\u2580";
const std::string lower = "\u2584";
const std::string plain = "\x1b[0m";

TEST(TerminalPicture, InAllColorsTakesOneBlockForTwoPixels) {
    EXPECT_EQ(terminalPicture(bitmapOf({"r.b.", "br.."}), TerminalPictures::blocksOfAllColors),
              "\x1b[38;2;255;0;0;48;2;0;0;255m" + upper + plain + "\x1b[38;2;255;0;0m" + lower + plain +
                  "\x1b[38;2;0;0;255m" + upper + plain + "\n");
}

TEST(TerminalPicture, In256ColorsTakesTheNearestOfTheCube) {
    EXPECT_EQ(terminalPicture(bitmapOf({"r", "b", "."}), TerminalPictures::blocksOf256Colors),
              "\x1b[38;5;196;48;5;21m" + upper + plain + "\n\n");
}

TEST(TerminalPicture, ShowsThinLinesInTheirColor) {
    auto bitmap = Bitmap::make(1, 2);
    EXPECT_TRUE(bitmap->paint([](GraphicsContext& context) {
        context.setFillColor({1, 0, 0, 0.3});
        context.addRectangle({0, 1, 1, 1});
        context.fillPath();
        context.setFillColor({1, 0, 0, 0.05});
        context.addRectangle({0, 0, 1, 1});
        context.fillPath();
    }));
    EXPECT_THAT(terminalPicture(*bitmap, TerminalPictures::blocksOfAllColors),
                StartsWith("\x1b[38;2;255;0;0m" + upper));
}

TEST(TerminalPicture, InSixelsHasABandForSixRowsAndARunForEachColor) {
    const std::string sixel =
        terminalPicture(bitmapOf({"rb.....", "r......", "r......", "r......", "r......", "rrrrrrr", "......b"}),
                        TerminalPictures::sixel);
    EXPECT_THAT(sixel, StartsWith("\x1bP0;1;0q\"1;1;7;7#0;2;0;0;0#1;2;0;0;20"));
    EXPECT_THAT(sixel, HasSubstr("#180;2;100;0;0"));
    // Blue is register 5, red 180; a character is 63 and the sum of its pixels, 1 on top.
    EXPECT_THAT(sixel, HasSubstr("#215;2;100;100;100#5?@!5?$#180~!6_$-#5!6?@$-\x1b\\\n"));
}

TEST(TerminalPicture, ForKittyIsAPngFileInPieces) {
    const auto small = terminalPicture(bitmapOf({"r"}), TerminalPictures::kitty);
    EXPECT_THAT(small, StartsWith("\x1b_Gf=100,a=T,q=2,m=0;iVBORw0KGgo"));  // the mark of PNG files in base 64
    EXPECT_EQ(small.substr(small.size() - 3), "\x1b\\\n");
    auto noise = Bitmap::make(80, 80);
    EXPECT_TRUE(noise->paint([](GraphicsContext& context) {
        std::mt19937 random(1);
        for (int i = 0; i < 6400; ++i) {
            const auto component = [&random] { return static_cast<double>(random() % 256) / 255; };
            context.setFillColor({component(), component(), component()});
            context.addRectangle({static_cast<double>(i % 80), static_cast<double>((i - i % 80)) / 80, 1, 1});
            context.fillPath();
        }
    }));
    const auto large = terminalPicture(*noise, TerminalPictures::kitty);
    EXPECT_THAT(large, StartsWith("\x1b_Gf=100,a=T,q=2,m=1;"));
    const std::size_t second = large.find("\x1b_Gm=");
    EXPECT_EQ(second, std::string("\x1b_Gf=100,a=T,q=2,m=1;").size() + 4096 + 2);
    EXPECT_THAT(large, HasSubstr("\x1b_Gm=0;"));
    EXPECT_EQ(large.rfind("\x1b_Gm="), large.find("\x1b_Gm=0;"));  // the last piece, and no other, is the last
}

TEST(TerminalPicture, IsNotThereWhereNoneCanBe) {
    EXPECT_EQ(terminalPicture(bitmapOf({"r"}), TerminalPictures::none), "");
}

TEST(TerminalPicture, FitsTheTerminal) {
    EXPECT_EQ(pixelsOnTerminal(TerminalPictures::kitty, {10, 10}), 256);
    EXPECT_EQ(pixelsOnTerminal(TerminalPictures::sixel, {200, 60}), 256);
    EXPECT_EQ(pixelsOnTerminal(TerminalPictures::blocksOfAllColors, {80, 24}), 40);
    EXPECT_EQ(pixelsOnTerminal(TerminalPictures::blocksOfAllColors, {30, 50}), 30);
    EXPECT_EQ(pixelsOnTerminal(TerminalPictures::blocksOf256Colors, {300, 100}), 72);
    EXPECT_EQ(pixelsOnTerminal(TerminalPictures::blocksOf256Colors, {1, 1}), 8);
}

TEST(InfoPicture, StandsAboveTheDescription) {
    const test::TemporaryFolder folder;
    const auto twoStitches = test::dstFile(test::bytes(0x81, 0x81, 0x03, 0x84, 0x04, 0x03));
    const std::string design = folder.write("small.dst", twoStitches);
    const auto plainOutcome = call({"info", design, design});
    const auto outcome = call({"info", "--picture", design, design});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.out, HasSubstr("\x1b[38;2;"));
    const std::string description = plainOutcome.out.substr(0, plainOutcome.out.find("\n\n"));
    EXPECT_GT(outcome.out.find(description), 40U);
    EXPECT_EQ(call({"info", "--picture", "--json", design}).status, 2);
}

}  // namespace
}  // namespace velamo
