// The program as it is called, with a full disk under its standard output.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <string>

#include "tests/support/temporary_folder.h"

namespace velamo {
namespace {

struct Outcome {
    std::string problems;
    int status = 0;
};

Outcome onFullDisk(const std::string& environment, const std::string& arguments) {
    Outcome outcome;
    const std::string command =
        environment + "LC_ALL=C.UTF-8 '" + VELAMO_PROGRAM + "' " + arguments + " 2>&1 >/dev/full </dev/null";
    std::FILE* const pipe = ::popen(command.c_str(), "r");
    if (pipe == nullptr) return outcome;
    std::array<char, 4096> part{};
    while (std::fgets(part.data(), part.size(), pipe) != nullptr) outcome.problems += part.data();
    const int status = ::pclose(pipe);
    outcome.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return outcome;
}

class FullDisk : public testing::TestWithParam<const char*> {};
TEST_P(FullDisk, IsTheReasonThatIsTold) {
    const test::TemporaryFolder folder;
    const std::string environment = "cd '" + folder.path().native() + "' && S='" + VELAMO_SOURCE_FOLDER +
                                    "/samples' && export XDG_DATA_HOME='" + folder.path().native() + "/data' && ";
    if (std::string(GetParam()).starts_with("search")) {
        EXPECT_EQ(onFullDisk(environment, "index \"$S\"").status, 1);
    }
    const Outcome outcome = onFullDisk(environment, GetParam());
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.problems, "velamo: standard output: No space left on device (error 28)\n");
}
INSTANTIATE_TEST_SUITE_P(Commands, FullDisk,
                         testing::Values("--version", "--help", "convert --help", "info \"$S/rose.dst\"",
                                         "info --json \"$S/rose.dst\"", "info --picture \"$S/rose.dst\"",
                                         "dump \"$S/rose.dst\"", "index \"$S\"", "search", "search --json",
                                         "search --print0", "search --broken", "edit \"$S/rose.dst\" -e trim",
                                         "convert \"$S/rose.dst\" new.pes --dump",
                                         "convert --all \"$S\" --to pes --out new", "palettes", "palettes --json",
                                         "hoops", "hoops --json", "format-length 3", "parse-length 3"));

}  // namespace
}  // namespace velamo
