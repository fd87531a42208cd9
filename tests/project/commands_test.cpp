// Whatever tells people of the program's commands knows all of them, and no others.
#include <gtest/gtest.h>

#include <filesystem>
#include <regex>
#include <set>
#include <string>

#include "tests/support/program_output.h"
#include "tests/support/temporary_folder.h"

namespace velamo {
namespace {

using Names = std::set<std::string>;

/// What the pattern's group holds wherever it is found in the text.
Names allFound(const std::string& text, const std::string& pattern) {
    const std::regex expression(pattern);
    Names found;
    for (std::sregex_iterator one(text.begin(), text.end(), expression), none; one != none; ++one)
        found.insert((*one)[1]);
    return found;
}

/// The subcommands as the program's own help lists them.
Names commands() {
    const std::string help = test::outputOf(std::string("'") + VELAMO_PROGRAM + "' --help");
    const std::size_t list = help.find("\nSubcommands:\n");
    return list == help.npos ? Names{} : allFound(help.substr(list), R"(\n  ([a-z-]+) )");
}

struct Row {
    const char* name;
    const char* file;
    const char* list;     // its group holds the part of the file
    const char* command;  // its group holds a command in that
};
class Commands : public testing::TestWithParam<Row> {};
TEST_P(Commands, AreThoseOfTheProgram) {
    const auto text = test::TemporaryFolder::read(std::filesystem::path(VELAMO_SOURCE_FOLDER) / GetParam().file);
    std::smatch list;
    ASSERT_TRUE(std::regex_search(text, list, std::regex(GetParam().list)));
    EXPECT_GE(commands().size(), 12U);
    EXPECT_EQ(allFound(list[1], GetParam().command), commands());
}
INSTANTIATE_TEST_SUITE_P(
    Rows, Commands,
    testing::Values(
        Row{"Synopsis", "docs/velamo.1", R"(\.SH SYNOPSIS([\s\S]*)\.SH DESCRIPTION)", R"(fBvelamo ([a-z-]+))"},
        Row{"Manual", "docs/velamo.1", R"(\.SH COMMANDS([\s\S]*?)\n\.SH )", R"(\.SS velamo ([a-z-]+))"},
        Row{"Bash", "integrations/completions/velamo.bash", "local commands='([^']*)'", "([a-z-]+)"},
        Row{"Fish", "integrations/completions/velamo.fish", R"(([\s\S]*))", "__fish_use_subcommand -a ([a-z-]+)"},
        Row{"Zsh", "integrations/completions/_velamo", R"(commands=\(([\s\S]*?)\n\))", "'([a-z-]+):"}),
    [](const auto& row) { return std::string(row.param.name); });

}  // namespace
}  // namespace velamo
