// The program itself, on a terminal: texts of designs, catalogues, libraries and arguments are shown there and never
// obeyed, while its own pictures and its progress are.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "catalogue/catalogue.h"
#include "tests/cli/support.h"
#include "tests/support/environment.h"
#include "tests/support/pseudo_terminal.h"
#include "tests/support/vp3_file.h"
#include "velamo/platform/text/harmless_text.h"

namespace velamo {
namespace {

using test::PseudoTerminal;
using testing::HasSubstr;

/// What commands terminals: a title, the clipboard, clearing, a C1 control in both its forms, marks of direction.
const std::string commands = "\x1b]0;title\x07\x1b]52;c;cm0=\x07\x1b[2J\x7f\u009B31m\x9b\u202E\u200F\u2028\r";
const std::string shownCommands =
    "\\x1b]0;title\\x07\\x1b]52;c;cm0=\\x07\\x1b[2J\\x7f\\xc2\\x9b31m\\x9b\\xe2\\x80\\xae\\xe2\\x80\\x8f\\xe2\\x80\\xa8"
    "\\x0d";

/// Whether a terminal would find nothing to obey, but for line ends.
bool isHarmless(const std::string& shown) {
    return shown == linesForTerminal(shown);
}

class OnTerminal : public testing::Test {
protected:
    [[nodiscard]] test::TerminalOutcome run(std::vector<std::string> arguments, int columns = 80) const {
        arguments.insert(arguments.begin(), VELAMO_PROGRAM);
        return PseudoTerminal(columns).run(std::move(arguments));
    }
    [[nodiscard]] std::string shown(std::vector<std::string> arguments) const {
        const auto outcome = run(std::move(arguments));
        EXPECT_TRUE(isHarmless(outcome.shown)) << outcome.shown;
        return outcome.shown;
    }
    [[nodiscard]] std::string catalogue() const { return (folder_.path() / "catalogue.sqlite").native(); }

    test::TemporaryFolder folder_;
    test::Variable term_{"TERM", "xterm-256color"};
};

TEST_F(OnTerminal, NamesOfThreadsAreShown) {
    test::Vp3File file;
    file.sections.front().description = test::bytes(
        "\x1b]0;t\x07\x9b"
        "2J\nred\\");
    EXPECT_THAT(shown({"info", folder_.write("rose.vp3", test::vp3File(file))}),
                HasSubstr("\n1. \\x1b]0;t\\x07\\xc2\\x9b2J\\nred\\\\ (1234)\n"));
}

TEST_F(OnTerminal, TextsOfSideFilesAreShown) {
    const auto entry =
        "<dict><key>threadfileversion</key><integer>2</integer><key>name</key><string>\u202Ered\u009B"
        "</string><key>palette</key><string>pal\u200F\u009Dette</string><key>red</key><real>1</real></dict>";
    folder_.write("rose.threads", std::string("<plist version=\"1.0\"><array>") + entry + entry + "</array></plist>");
    EXPECT_THAT(shown({"info", folder_.write("rose.dst", test::smallDst)}),
                HasSubstr("\n2. \\xe2\\x80\\xaered\\xc2\\x9b, pal\\xe2\\x80\\x8f\\xc2\\x9dette\n"));
}

TEST_F(OnTerminal, NamesOfFilesAreShown) {
    const auto design = folder_.write("a\n" + commands + ".dst", test::smallDst);
    const auto torn = folder_.write("b\n" + commands + ".dst", std::string("LA:"));
    EXPECT_THAT(shown({"info", design, torn}), HasSubstr("a\\n" + shownCommands + ".dst (DST Version 1.0)\n"));
    EXPECT_THAT(shown({"info", torn}), HasSubstr("b\\n" + shownCommands + ".dst: Unable to import"));
    EXPECT_THAT(shown({"index", "--catalogue", catalogue(), folder_.path()}), HasSubstr("b\\n" + shownCommands));
    EXPECT_THAT(shown({"search", "--catalogue", catalogue()}), HasSubstr("a\\n" + shownCommands + ".dst\n"));
    EXPECT_THAT(shown({"search", "--catalogue", catalogue(), "--broken"}), HasSubstr("b\\n" + shownCommands));
    for (const char* command : {"info", "dump", "convert", "edit", "render"})
        EXPECT_THAT(shown({command, commands, "--frob" + commands}), HasSubstr("velamo: ")) << command;
}

TEST_F(OnTerminal, TextsOfACatalogueAreShown) {
    {
        auto foreign = Catalogue::openForIndexing(catalogue());
        const auto folder = foreign.putFolder("/" + commands, "words");
        foreign.putDesign(folder, "a.dst", {}, {.content = DesignFailure{commands, 1, "first\n" + commands}});
        foreign.putDesign(folder, "b.dst", {}, {.content = DesignFacts{}});
        foreign.addRoot("/" + commands);
        foreign.commit();
    }
    EXPECT_EQ(shown({"search", "--catalogue", catalogue(), "--broken"}),
              "/" + shownCommands + "/a.dst: first\\n" + shownCommands + " (error 1)\n1 broken file\n");
    for (const char* option : {"--json", "--reverse"})
        EXPECT_THAT(shown({"search", "--catalogue", catalogue(), option}), HasSubstr("b.dst"));
    EXPECT_THAT(shown({"index", "--catalogue", catalogue()}), HasSubstr("/" + shownCommands + ": No such file"));
}

TEST_F(OnTerminal, WhatALoaderSaysIsShown) {
    const test::Variable importer("VELAMO_IMPORTER", folder_.write("\x1b[2J.so", "no module"));
    EXPECT_THAT(shown({"info", "--plugin", "rose.dst"}), HasSubstr("\\x1b[2J.so"));
}

TEST_F(OnTerminal, PalettesAreShown) {
    folder_.write("en.lproj/Evil.strings", std::string("\"Evil\" = \"\x1b[2JEvil\";\n\"k\x07\" = \"red\u009B31m\";\n"));
    folder_.write("Evil.clr/Evil.clr", std::string("index red green blue alpha key\n1 1.0 0.0 0.0 1.0 k\x07\n"));
    const test::Variable resources("VELAMO_RESOURCES", folder_.path());
    EXPECT_THAT(shown({"palettes"}), HasSubstr("\\x1b[2JEvil (Evil, 1 color)\n  k\\x07  #FF0000  red\\xc2\\x9b31m\n"));
    EXPECT_THAT(shown({"hoops"}), HasSubstr("Janome"));
}

TEST_F(OnTerminal, PathsForOtherProgramsEndWithTheirZeroByte) {
    folder_.write("a\x1b[2J.dst", test::smallDst);
    static_cast<void>(run({"index", "--catalogue", catalogue(), folder_.path()}));
    const auto path = std::filesystem::canonical(folder_.path()).native() + "/a\\x1b[2J.dst";
    EXPECT_EQ(run({"search", "--catalogue", catalogue(), "--print0"}).shown, path + '\0');
}

TEST_F(OnTerminal, JsonStaysJson) {
    folder_.write("a" + commands + ".dst", test::smallDst);
    const auto text = shown({"info", "--json", folder_.write("a" + commands + ".dst", test::smallDst)});
    EXPECT_THAT(text, HasSubstr(R"(\u001b]0;title\u0007)"));
    EXPECT_THAT(text, HasSubstr(R"(\u007f\u009b31m)"));
    EXPECT_EQ(test::Json::parse(text)[0]["statistics"]["numberOfStitches"], 3);
}

/// In a pipe as well: whatever shows it later may be a terminal.
TEST(JsonInAPipe, HoldsNothingThatATerminalObeys) {
    const test::TemporaryFolder folder;
    test::Vp3File file;
    file.sections.front().description = test::bytes(
        "\x1b]0;t\x07\x7f\x9b"
        "2J");
    const auto design = folder.write("a" + commands + ".vp3", test::vp3File(file));
    const auto catalogue = (folder.path() / "catalogue.sqlite").native();
    static_cast<void>(test::call({"index", "--catalogue", catalogue, folder.path()}));
    for (const auto& arguments :
         std::vector<std::vector<std::string>>{{"info", "--json", design},
                                               {"dump", design},
                                               {"edit", design, "--dump"},
                                               {"search", "--json", "--catalogue", catalogue},
                                               {"info", "--json", (folder.path() / ("b" + commands)).native()}}) {
        const auto outcome = test::call(arguments);
        EXPECT_TRUE(isHarmless(outcome.out)) << outcome.out;
        EXPECT_THAT(outcome.out, HasSubstr(R"(\u009b)"));
        EXPECT_TRUE(test::Json::accept(outcome.out));
    }
}

TEST_F(OnTerminal, APictureIsDrawn) {
    const auto design = folder_.write("a\x1b[2J.dst", test::diagonalDst);
    EXPECT_THAT(run({"info", "--picture", design}).shown, HasSubstr("\x1b[38;5;"));
    EXPECT_THAT(run({"info", "--picture", design}).shown, HasSubstr("a\\x1b[2J.dst (DST"));
}

TEST_F(OnTerminal, ProgressFillsNoLine) {
    for (int i = 0; i < 500; ++i) folder_.write("designs/" + std::to_string(i) + ".dst", test::smallDst);
    for (const int columns : {30, 12}) {
        std::filesystem::remove(catalogue());
        const auto outcome = run({"index", "--catalogue", catalogue(), folder_.path() / "designs"}, columns);
        EXPECT_EQ(outcome.status, 0);
        for (std::size_t at = 0, end = 0; (end = outcome.shown.find("\r\x1b[K", at)) != std::string::npos; at = end + 4)
            EXPECT_LT(end - at, static_cast<std::size_t>(columns)) << outcome.shown.substr(at, end - at);
    }
}

}  // namespace
}  // namespace velamo
