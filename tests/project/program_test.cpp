// The program as it is called from a shell.
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

/// What the command says on its standard error; its standard output goes to the file.
Outcome called(const std::string& environment, const std::string& arguments, const std::string& output) {
    Outcome outcome;
    const std::string command =
        environment + "LC_ALL=C.UTF-8 '" + VELAMO_PROGRAM + "' " + arguments + " 2>&1 >" + output + " </dev/null";
    std::FILE* const pipe = ::popen(command.c_str(), "r");
    if (pipe == nullptr) return outcome;
    std::array<char, 4096> part{};
    while (std::fgets(part.data(), part.size(), pipe) != nullptr) outcome.problems += part.data();
    const int status = ::pclose(pipe);
    outcome.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return outcome;
}

/// Goes to the folder, with the samples under $S.
std::string in(const test::TemporaryFolder& folder) {
    const std::string path = folder.path().native();
    return "cd '" + path + "' && S='" + VELAMO_SOURCE_FOLDER + "/samples' && export XDG_DATA_HOME='" + path +
           "/data' && ";
}

class FullDisk : public testing::TestWithParam<const char*> {};
TEST_P(FullDisk, IsTheReasonThatIsTold) {
    const test::TemporaryFolder folder;
    const std::string environment = in(folder);
    if (std::string(GetParam()).starts_with("search")) {
        EXPECT_EQ(called(environment, "index \"$S\"", "/dev/full").status, 1);
    }
    const Outcome outcome = called(environment, GetParam(), "/dev/full");
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

/// The samples' colors are in side files, which travel along.
struct Losses {
    const char* extension;
    const char* said;
    int status;
};
class Samples : public testing::TestWithParam<Losses> {};
TEST_P(Samples, AreConvertedWithAWordOnlyWhereSomethingIsLost) {
    const test::TemporaryFolder folder;
    const Outcome outcome =
        called(in(folder), std::string("convert --all \"$S\" --out new --to ") + GetParam().extension, "/dev/null");
    EXPECT_EQ(outcome.problems, GetParam().said);
    EXPECT_EQ(outcome.status, GetParam().status);
}
INSTANTIATE_TEST_SUITE_P(Formats, Samples,
                         testing::Values(Losses{"dst", "", 0}, Losses{"exp", "", 0}, Losses{"jef", "", 0},
                                         Losses{"pes", "", 0}, Losses{"pec", "", 0},
                                         Losses{"pcs",
                                                "velamo: new/heart.pcs: written without the last stitch\n"
                                                "velamo: new/spirograph.pcs: written without the last 3 stitches\n"
                                                "velamo: new/sunflower.pcs: written without the last stitch\n"
                                                "velamo: new/rose.pcs: Stitches ouside the current hoop. (error 62)\n",
                                                1}),
                         [](const auto& row) { return row.param.extension; });

}  // namespace
}  // namespace velamo
