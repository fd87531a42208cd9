#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/cli/support.h"

namespace velamo {
namespace {

using test::bytes;
using test::call;
using test::TemporaryFolder;
using testing::HasSubstr;

/// A design with places from (-121, -121) to (121, 121): 24.2 mm wide and high, its middle at the origin.
const test::Bytes squareDst =
    test::dstFile(bytes(0xA5, 0xA5, 0x27, 0x5A, 0x5A, 0x1B, 0x5A, 0x5A, 0x1B, 0xA5, 0xA5, 0x27));

class Edit : public testing::Test {
protected:
    test::Outcome edited(const std::vector<std::string>& commands, const std::vector<std::string>& more = {}) {
        std::vector<std::string> arguments{"edit", folder_.write("square.dst", squareDst)};
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
    const auto script = folder_.write("script", "# the hoop\n\n  hoop Janome 28\r\n\tfits \"Janome\" '28'\n");
    const auto outcome = edited({"hoop Janome -1"}, {"-f", script, "--dump"});
    EXPECT_EQ(outcome.json()["results"].dump(), "[true,true,false]");
    EXPECT_TRUE(outcome.json()["design"]["hoop"].is_null());
}

TEST_F(Edit, WithoutCommandsHasNoResults) {
    EXPECT_EQ(edited({}).json()["results"].dump(), "[]");
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
        call({"edit", folder.write("square.dst", squareDst), "-e", "hoop Janome 28", "-e", GetParam().command});
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
                    WrongRow{"OpenQuote", "find-hoop \"Janome", "a quote is not closed"}),
    [](const auto& row) { return row.param.name; });

TEST_F(Edit, NamesTheLineOfAScriptThatIsWrong) {
    const auto script = folder_.write("script", "hoop Janome 28\n\n# fine so far\nfits Janome\n");
    const auto outcome = edited({}, {"-f", script});
    EXPECT_EQ(outcome.status, 2);
    EXPECT_THAT(outcome.problems, HasSubstr(script.native() + ", line 4: expected 'fits VENDOR CODE'"));
    EXPECT_EQ(edited({}, {"-f", "/nowhere/script"}).status, 2);
}

TEST_F(Edit, OfAnUnreadableDesignFails) {
    const auto outcome = call({"edit", "/nowhere/rose.dst", "-e", "find-hoop Janome"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.problems, "velamo: /nowhere/rose.dst: Unable to import DST file (missing header). (error 123)\n");
}

TEST_F(Edit, ExplainsEveryCommandWithAnExample) {
    const auto help = call({"edit", "--help"}).out;
    for (const char* example : {"hoop Janome 28", "find-hoop Janome", "fits Pfaff 3", "outside Janome 4"})
        EXPECT_THAT(help, HasSubstr(std::string("for example: ") + example));
}

}  // namespace
}  // namespace velamo
