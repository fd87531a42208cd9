#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <ostream>

#include "cli/command_line.h"
#include "tests/cli/support.h"

namespace velamo {
namespace {

using test::call;
using testing::HasSubstr;

struct Row {
    std::vector<std::string> arguments;
    const char* message;
};
void PrintTo(const Row& row, std::ostream* out) {
    *out << testing::PrintToString(row.arguments);
}
class WrongUsage : public testing::TestWithParam<Row> {};

TEST_P(WrongUsage, EndsWithTwoAndSaysWhatIsWrong) {
    const auto outcome = call(GetParam().arguments);
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.out, "");
    EXPECT_THAT(outcome.problems, HasSubstr(GetParam().message));
}

INSTANTIATE_TEST_SUITE_P(
    Rows, WrongUsage,
    testing::Values(
        Row{{}, "Usage: velamo"}, Row{{"frobnicate"}, "frobnicate"}, Row{{"info"}, "FILE"}, Row{{"dump"}, "FILE"},
        Row{{"dump", "a.dst", "b.dst"}, "b.dst"}, Row{{"info", "--frob", "a"}, "--frob"}, Row{{"format-length"}, "MM"},
        Row{{"format-length", "abc"}, "abc"}, Row{{"format-length", "--unit", "3", "1"}, "--unit"},
        Row{{"parse-length", "--unit", "x", "1"}, "--unit"}, Row{{"index", "--jobs", "0", "x"}, "--jobs"},
        Row{{"index", "--jobs", "many", "x"}, "--jobs"},
        Row{{"search", "--width", "abc"},
            "--width: expected a number such as 50, or a range such as 50..100, ..100 or 50.., not 'abc'"},
        Row{{"search", "--colors", "4..1"}, "--colors: expected"}, Row{{"search", "--height", ""}, "--height"},
        Row{{"search", "--stitches", "-5"}, "--stitches"}, Row{{"search", "--sort", "size"}, "--sort"},
        Row{{"search", "--limit", "0"}, "--limit"}, Row{{"search", "--json", "--print0"}, "--print0"},
        Row{{"search", "--format", "hus"}, "--format: 'hus' is none of jef, jef+, jpx, pes"},
        Row{{"search", "--hoop", "big"}, "--hoop: expected a size in millimetres such as 100x100"},
        Row{{"search", "--has", "nice"}, "--has: expected a color such as red or rot, or #rrggbb, not 'nice'"},
        Row{{"search", "--has", "#12345"}, "--has"}, Row{{"search", "--broken", "--has", "red"}, "--broken"},
        Row{{"search", "--offset", "-1"}, "--offset"}, Row{{"search", "--broken", "--format", "pes"}, "--broken"},
        Row{{"search", "--broken", "--hoop", "9x9"}, "--broken"},
        Row{{"info", "--plugin", "--picture", "a.dst"}, "--picture"},
        Row{{"search", "--broken", "--width", "5"}, "--broken"}, Row{{"palettes", "x"}, "x"},
        Row{{"desktop"}, "subcommand"}, Row{{"desktop", "refresh", "--frob"}, "--frob"}));

TEST(Help, IsThereForEveryCommand) {
    EXPECT_EQ(call({"--help"}).status, 0);
    EXPECT_THAT(call({"--help"}).out, HasSubstr("Exit status"));
    for (const char* command : {"info", "index", "search", "forget", "dump", "convert", "edit", "render", "palettes",
                                "hoops", "desktop", "format-length", "parse-length"}) {
        EXPECT_THAT(call({"--help"}).out, HasSubstr(command));
        const auto outcome = call({command, "--help"});
        EXPECT_EQ(outcome.status, 0);
        EXPECT_THAT(outcome.out, HasSubstr(std::string("Usage: velamo ") + command));
        EXPECT_EQ(outcome.problems, "");
    }
}

TEST(Version, IsPrinted) {
    const auto outcome = call({"--version"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.out, testing::MatchesRegex("velamo [0-9]+\\.[0-9]+\\.[0-9]+\n"));
}

TEST(Usage, TakesAFileNamedLikeACommand) {
    EXPECT_THAT(call({"info", "search", "info"}).problems,
                HasSubstr("velamo: search: No such file or directory (error 2)\nvelamo: info: "));
}

TEST(Usage, ShowsArgumentsHarmlesslyOnATerminal) {
    EXPECT_THAT(call({"search", "--width", "\x1b[31m"}, true).problems, HasSubstr("not '\\x1b[31m'"));
}

/// An output that takes nothing, as a full disk does.
class FullOutput : public std::streambuf {
protected:
    int_type overflow(int_type) override { return traits_type::eof(); }
};

TEST(Output, ThatCannotBeWrittenIsAFailure) {
    FullOutput full;
    std::ostream out(&full);
    std::ostringstream problems;
    EXPECT_EQ(runCommandLine({"--version"}, {.out = out, .problems = problems}), 1);
    EXPECT_THAT(problems.str(), HasSubstr("velamo: standard output: Input/output error (error 5)"));
    const std::error_code reason = std::make_error_code(std::errc::no_space_on_device);
    out.clear();
    EXPECT_EQ(runCommandLine({"--version"}, {.out = out, .problems = problems, .outFailure = &reason}), 1);
    EXPECT_THAT(problems.str(), HasSubstr("velamo: standard output: No space left on device (error 28)"));
}

}  // namespace
}  // namespace velamo
