#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>

#include "cli/edit_words.h"
#include "tests/cli/support.h"
#include "tests/support/standard_stream.h"

namespace velamo {
namespace {

using test::call;
using test::TemporaryFolder;
using testing::HasSubstr;

class Edit : public testing::Test {
protected:
    test::Outcome edited(const std::vector<std::string>& commands, const std::vector<std::string>& more = {}) {
        std::vector<std::string> arguments{"edit", folder_.write("square.dst", test::diagonalDst)};
        for (const auto& command : commands) {
            arguments.emplace_back("-e");
            arguments.push_back(command);
        }
        arguments.insert(arguments.end(), more.begin(), more.end());
        return call(arguments);
    }
    TemporaryFolder folder_;
};

TEST_F(Edit, GivesOneResultForEachCommand) {
    const auto outcome = edited({"fits Janome 8", "outside Janome 8", "outside Janome 19", "find-hoop Janome",
                                 "find-hoop Brother", "hoop Janome 28", "hoop Pfaff 28", "hoop Janome -1"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.problems, "");
    const auto results = outcome.json()["results"];
    ASSERT_EQ(results.size(), 8U);
    EXPECT_EQ(results[0], true);
    EXPECT_EQ(results[1], false);
    EXPECT_EQ(results[2], true);
    EXPECT_EQ(results[3]["name"], "C/FA/M3");
    EXPECT_TRUE(results[4].is_null());
    EXPECT_EQ(results[5], true);
    EXPECT_EQ(results[6], false);
    EXPECT_EQ(results[7], false);
    EXPECT_FALSE(outcome.json().contains("design"));
}

TEST_F(Edit, DumpsTheDesignAsItIsAfterwards) {
    const auto json = edited({"hoop Janome 28"}, {"--dump"}).json();
    EXPECT_EQ(json["design"]["hoop"]["name"], "SQ23");
    EXPECT_EQ(json["design"]["stitches"].size(), 4U);
    EXPECT_EQ(json["design"]["statistics"]["designWidth"], 242);
    EXPECT_TRUE(edited({"find-hoop Janome"}, {"--dump"}).json()["design"]["hoop"].is_null());
}

TEST_F(Edit, ReadsScriptsBeforeSingleCommands) {
    const auto script =
        folder_.write("script", "# the hoop\n\n  hoop Janome 28\r\n\tfits \"Janome\" '28' # too large?\n  # done\n");
    const auto outcome = edited({"hoop Janome -1"}, {"-f", script, "--dump"});
    EXPECT_EQ(outcome.json()["results"].dump(), "[true,true,false]");
    EXPECT_TRUE(outcome.json()["design"]["hoop"].is_null());
}

TEST_F(Edit, WithoutCommandsHasNoResults) {
    EXPECT_EQ(edited({}).json()["results"].dump(), "[]");
}

struct ResultRow {
    const char* name;
    std::vector<std::string> commands;
    std::string lastResult;
};
class EditResults : public testing::TestWithParam<ResultRow> {};

/// A diagonal, sewn from the middle to (121, 121), through the middle to (-121, -121) and back to the middle.
TEST_P(EditResults, AreThoseOfTheRow) {
    const TemporaryFolder folder;
    std::vector<std::string> arguments{"edit", folder.write("square.dst", test::diagonalDst)};
    for (const auto& command : GetParam().commands) {
        arguments.emplace_back("-e");
        arguments.push_back(command);
    }
    const auto outcome = call(arguments);
    EXPECT_EQ(outcome.status, 0) << outcome.problems;
    EXPECT_EQ(outcome.json()["results"].back().dump(), GetParam().lastResult);
}
INSTANTIATE_TEST_SUITE_P(
    Rows, EditResults,
    testing::Values(
        ResultRow{"SelectAll", {"select-all"}, "null"}, ResultRow{"DeselectAll", {"deselect-all"}, "null"},
        ResultRow{"RectOfTheDesign", {"selection-rect"}, "[-121.0,-121.0,242.0,242.0]"},
        ResultRow{"RectOfAll", {"select-all", "selection-rect"}, "[-121.0,-121.0,242.0,242.0]"},
        ResultRow{"RectOfNothing",
                  {"select-all", "invert", "select-all", "select-rect 0 0 1 1", "selection-rect"},
                  "[-121.0,-121.0,242.0,242.0]"},
        ResultRow{"SelectRect", {"select-rect -130 -130 135 135", "selection-rect"}, "[-121.0,-121.0,121.0,121.0]"},
        ResultRow{"UnselectRect",
                  {"select-all", "select-rect -130 -130 260 260 unselect", "is-selected-at -60 -60 4"},
                  "false"},
        ResultRow{"SelectStitch", {"select-stitch -60 -60 4", "is-selected-at -60 -60 4"}, "true"},
        ResultRow{
            "UnselectStitch", {"select-all", "select-stitch -60 -60 4 unselect", "is-selected-at -60 -60 4"}, "false"},
        ResultRow{"SelectBlock", {"select-block -60 -60 4", "is-selected-at 60 60 4"}, "true"},
        ResultRow{
            "UnselectBlock", {"select-all", "select-block -60 -60 4 unselect", "is-selected-at 60 60 4"}, "false"},
        ResultRow{"StitchAt", {"stitch-at -60 -60 4"}, "3"}, ResultRow{"NoStitchAt", {"stitch-at 0 500 4"}, "-1"},
        ResultRow{"ThreadAt", {"thread-at -60 -60 4"}, "0"}, ResultRow{"NoThreadAt", {"thread-at 0 500 4"}, "-1"},
        ResultRow{"Center", {"center"}, "true"}, ResultRow{"PlusSigns", {"move +5 +0.5"}, "true"},
        ResultRow{"Move", {"select-all", "move 10 -20.5"}, "true"},
        ResultRow{"Moved",
                  {"select-all", "move 10 -20.5", "select-all", "invert", "selection-rect"},
                  "[-111.0,-141.5,242.0,242.0]"},
        ResultRow{"Rotated", {"select-all", "rotate 90", "deselect-all", "stitch-at 60 -60 4"}, "7"},
        ResultRow{
            "Resized", {"select-all", "resize 0.5", "deselect-all", "selection-rect"}, "[-60.5,-60.5,121.0,121.0]"},
        ResultRow{"FlipV", {"select-all", "flip V"}, "true"}, ResultRow{"FlipH", {"flip H"}, "true"},
        ResultRow{"Delete", {"select-stitch -60 -60 4", "delete", "stitch-at -60 -60 4"}, "4"},
        ResultRow{"JumpsOn", {"select-all", "jumps on"}, "true"}, ResultRow{"JumpsOff", {"jumps off"}, "true"},
        ResultRow{"SplitThread", {"select-stitch -60 -60 4", "split-thread"}, "true"},
        ResultRow{"DeleteThread", {"delete-thread 0"}, "true"}, ResultRow{"MoveThread", {"move-thread 0 1"}, "true"},
        ResultRow{"InsertJump", {"insert-jump 1 2 2"}, "4"},
        ResultRow{"InsertJumpBehindAll", {"insert-jump 1 2 99"}, "99"}, ResultRow{"Optimize", {"optimize VP3"}, "null"},
        ResultRow{"Trim", {"trim"}, "false"}, ResultRow{"Trimmed", {"insert-jump 1 1 0", "select-all", "trim"}, "true"},
        ResultRow{"Basted", {"baste 5 2", "selection-rect"}, "[-141.0,-141.0,282.0,282.0]"},
        ResultRow{"Recolor", {"recolor 0 1 0 0.5 \"\""}, "true"},
        ResultRow{"RecolorToAPalette", {"recolor 0 1 0 0 Janome"}, "true"},
        ResultRow{"RecolorToNoPalette", {"recolor 0 1 0 0 ../x"}, "false"},
        ResultRow{"HideThread", {"show-thread 0 off"}, "null"}, ResultRow{"ThreadFile", {"thread-file on"}, "null"},
        ResultRow{"Type", {"type PES"}, "null"}, ResultRow{"Version", {"version 10"}, "null"},
        ResultRow{"Range", {"range 1 2"}, "null"}),
    [](const auto& row) { return row.param.name; });

TEST_F(Edit, AppendsAnotherDesign) {
    const auto other = folder_.write("small.dst", test::smallDst);
    const auto outcome = edited({"append '" + other.native() + "'"}, {"--dump"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.json()["results"].dump(), "[true]");
    EXPECT_EQ(outcome.json()["design"]["threads"].size(), 3U);
}

TEST_F(Edit, SetsTheFieldsOfTheDesign) {
    const auto design =
        edited({"thread-file on", "type PES", "version 20", "range 1 2", "show-thread 0 off", "recolor 0 1 0 0.5 ''"},
               {"--dump"})
            .json()["design"];
    EXPECT_EQ(design["useThreadFile"], true);
    EXPECT_EQ(design["designType"], "PES");
    EXPECT_EQ(design["designVersion"], 20);
    EXPECT_EQ(design["displayRange"].dump(), "[1,2]");
    EXPECT_EQ(design["threads"][0]["isShown"], false);
    EXPECT_EQ(design["threads"][0]["color"].dump(), "[1.0,0.0,0.5]");
    EXPECT_EQ(design["threads"][0]["palette"], "");
}

/// A failing command ends the run: what stood before it is done, what comes behind it is not.
TEST_F(Edit, StopsAtACommandThatFails) {
    const auto outcome = edited({"version 30", "flip v", "version 40"}, {"--dump"});
    EXPECT_EQ(outcome.status, 1);
    const auto results = outcome.json()["results"];
    ASSERT_EQ(results.size(), 2U);
    EXPECT_EQ(results[1]["error"]["code"], 70);
    EXPECT_EQ(results[1]["error"]["message"], "Unable to flip the design (invalid orientation).");
    EXPECT_EQ(outcome.json()["design"]["designVersion"], 30);
    EXPECT_THAT(outcome.problems, HasSubstr("square.dst: Unable to flip the design (invalid orientation). (error 70)"));
}

TEST_F(Edit, SaysWhyACommandFails) {
    const auto codeOf = [this](const std::string& command) {
        const auto outcome = edited({"select-all", command});
        EXPECT_EQ(outcome.status, 1) << command;
        return outcome.json()["results"].back()["error"]["code"].get<int>();
    };
    EXPECT_EQ(codeOf("resize 1e38"), 71);
    EXPECT_EQ(codeOf("move inf 0"), 71);
    EXPECT_EQ(codeOf("baste 0 1"), 73);
    EXPECT_EQ(codeOf("append /nowhere/rose.dst"), ENOENT);
    const auto outcome = edited({"insert-jump inf 0 1", "optimize DST"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.json()["results"][1]["error"]["code"], 71);
}

TEST_F(Edit, NamesTheFileThatCouldNotBeAppended) {
    EXPECT_EQ(edited({"append /nowhere/leaf.dst"}).problems,
              "velamo: /nowhere/leaf.dst: No such file or directory (error 2)\n");
}

TEST_F(Edit, NamesNoThreadThatIsNotThere) {
    for (const std::string command : {"recolor 1 0 0 0 ''", "recolor -1 0 0 0 ''", "show-thread 1 on"}) {
        const auto outcome = edited({command});
        EXPECT_EQ(outcome.status, 2);
        EXPECT_EQ(outcome.out, "");
        EXPECT_THAT(outcome.problems, HasSubstr("there is no thread " + command.substr(command.find(' ') + 1, 1)));
        EXPECT_THAT(outcome.problems, HasSubstr("the design has 1, counted from 0"));
    }
}

struct WrongRow {
    const char* name;
    std::string command;
    std::string problem;
};
class WrongCommands : public testing::TestWithParam<WrongRow> {};
TEST_P(WrongCommands, AreWrongUsage) {
    const TemporaryFolder folder;
    const auto outcome =
        call({"edit", folder.write("square.dst", test::diagonalDst), "-e", "hoop Janome 28", "-e", GetParam().command});
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.out, "");
    EXPECT_THAT(outcome.problems, HasSubstr("-e '" + GetParam().command + "': " + GetParam().problem));
}
INSTANTIATE_TEST_SUITE_P(
    Rows, WrongCommands,
    testing::Values(WrongRow{"Empty", " ", "a command is missing"},
                    WrongRow{"Unknown", "twirl 3", "there is no command 'twirl'"},
                    WrongRow{"TooFew", "hoop Janome", "expected 'hoop VENDOR CODE'"},
                    WrongRow{"TooMany", "find-hoop Janome 3", "expected 'find-hoop VENDOR'"},
                    WrongRow{"NoNumber", "hoop Janome SQ", "CODE is a whole number, not 'SQ'"},
                    WrongRow{"HalfANumber", "hoop Janome 28.5", "CODE is a whole number, not '28.5'"},
                    WrongRow{"HugeNumber", "fits Janome 99999999999", "CODE is a whole number, not '99999999999'"},
                    WrongRow{"NoSuchHoop", "fits Pfaff 28", "there is no hoop 28 of 'Pfaff'"},
                    WrongRow{"OptionalWord", "select-rect 1 2 3 4 unselected",
                             "[unselect] is 'unselect' or nothing, not 'unselected'"},
                    WrongRow{"TooManyWithOptionalWord", "select-stitch 1 2 3 unselect 4",
                             "expected 'select-stitch X Y TOL [unselect]'"},
                    WrongRow{"NoParameters", "center 3", "expected 'center'"},
                    WrongRow{"NoReal", "move 1 2mm", "DY is a number, not '2mm'"},
                    WrongRow{"TwoSigns", "move +-1 2", "DX is a number, not '+-1'"},
                    WrongRow{"NoSwitch", "jumps yes", "on|off is 'on' or 'off', not 'yes'"},
                    WrongRow{"NoShare", "recolor 0 1 255 0 Janome", "G is a number from 0 to 1, not '255'"},
                    WrongRow{"NegativeRange", "range -1 2", "LOCATION is a whole number, 0 or more, not '-1'"},
                    WrongRow{"OpenQuote", "find-hoop \"Janome", "a quote is not closed"}),
    [](const auto& row) { return row.param.name; });

TEST_F(Edit, NamesTheLineOfAScriptThatIsWrong) {
    const auto script = folder_.write("script", "hoop Janome 28\n\n# fine so far\nfits Janome\n");
    const auto outcome = edited({}, {"-f", script});
    EXPECT_EQ(outcome.status, 2);
    EXPECT_THAT(outcome.problems, HasSubstr(script.native() + ", line 4: expected 'fits VENDOR CODE'"));
}

TEST_F(Edit, SaysWhyAScriptCannotBeRead) {
    const std::string folder = folder_.path().native();
    for (const auto& [script, reason] :
         {std::pair<std::string, std::string>{"/nowhere/script", "No such file or directory (error 2)"},
          {folder, "Is a directory (error 21)"},
          {"/proc/self/mem", "Input/output error (error 5)"}}) {
        const auto outcome = edited({"center"}, {"-f", script, "-o", folder + "/new.dst"});
        EXPECT_EQ(outcome.status, 1);
        EXPECT_EQ(outcome.out, "");
        EXPECT_EQ(outcome.problems, std::string("velamo: ").append(script).append(": ").append(reason).append("\n"));
        EXPECT_FALSE(std::filesystem::exists(folder + "/new.dst"));
    }
}

TEST_F(Edit, ReadsAScriptFromTheStandardInput) {
    const auto script = folder_.write("script", "hoop Janome 28\nfits Janome 28");
    {
        const test::StandardStreamOf input(STDIN_FILENO, script, O_RDONLY);
        EXPECT_EQ(edited({}, {"-f", "-"}).json()["results"].dump(), "[true,true]");
    }
    const test::StandardStreamOf input(STDIN_FILENO, folder_.path(), O_RDONLY);
    const auto outcome = edited({}, {"-f", "-"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.problems, "velamo: standard input: Is a directory (error 21)\n");
}

struct Script {
    const char* name;
    std::string text;
    const char* results;
};
class Scripts : public Edit, public testing::WithParamInterface<Script> {};
TEST_P(Scripts, AreReadByTheirLines) {
    const auto outcome = edited({}, {"-f", folder_.write("script", GetParam().text)});
    EXPECT_EQ(outcome.status, 0) << outcome.problems;
    EXPECT_EQ(outcome.json()["results"].dump(), GetParam().results);
}
INSTANTIATE_TEST_SUITE_P(Rows, Scripts,
                         testing::Values(Script{"Empty", "", "[]"}, Script{"OneBreak", "\n", "[]"},
                                         Script{"WithoutLastBreak", "\nhoop Janome 28", "[true]"},
                                         Script{"ByteOrderMark", "\xEF\xBB\xBFhoop Janome 28\n", "[true]"},
                                         Script{"ByteOrderMarkOfAComment", "\xEF\xBB\xBF# hoop\n", "[]"},
                                         Script{"ByteOrderMarkAlone", "\xEF\xBB\xBF", "[]"}),
                         [](const auto& row) { return row.param.name; });

TEST_F(Edit, TakesAByteOrderMarkInTheMiddleForText) {
    const auto outcome = edited({}, {"-f", folder_.write("script", "\n\xEF\xBB\xBFhoop Janome 28\n")});
    EXPECT_EQ(outcome.status, 2);
    EXPECT_THAT(outcome.problems, HasSubstr("line 2: there is no command"));
}

TEST_F(Edit, OfAnUnreadableDesignFails) {
    const auto outcome = call({"edit", "/nowhere/rose.dst", "-e", "find-hoop Janome"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.problems, "velamo: /nowhere/rose.dst: No such file or directory (error 2)\n");
}

TEST_F(Edit, ExplainsEveryCommandWithAnExample) {
    const auto help = call({"edit", "--help"}).out;
    for (const EditWord& word : editWords()) {
        EXPECT_THAT(help, HasSubstr("\n  " + std::string(word.name)));
        EXPECT_THAT(help, HasSubstr("for example: " + std::string(word.example)));
        EXPECT_TRUE(word.example.starts_with(word.name)) << word.example;
        EXPECT_NO_THROW(static_cast<void>(parseEditCommand(word.example))) << word.example;
    }
}

}  // namespace
}  // namespace velamo
