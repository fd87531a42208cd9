#include "velamo/platform/processes/program.h"

#include <gtest/gtest.h>

#include <csignal>
#include <system_error>
#include <vector>

#include "tests/support/temporary_folder.h"

namespace velamo {
namespace {

namespace fs = std::filesystem;

class Program : public testing::Test {
protected:
    fs::path write(const std::string& name, const std::string& script, fs::perms permissions = fs::perms::owner_all) {
        auto file = folder_.write(name, "#!/bin/sh\n" + script);
        fs::permissions(file, permissions);
        return file;
    }
    fs::path find(const std::string& name, const std::string& path) const {
        return findProgram(name, [&](const char*) { return path; });
    }

    test::TemporaryFolder folder_;
};

TEST_F(Program, IsFoundInTheFirstFolderThatHasIt) {
    const auto second = write("second/tool", "");
    const auto third = write("third/tool", "");
    write("first/tool", "", fs::perms::owner_read);  // cannot be run
    fs::create_directories(folder_.path() / "zeroth" / "tool");
    std::string path;
    for (const char* name : {"zeroth", "first", "missing", "second", "third"})
        path += (path.empty() ? "" : ":") + (folder_.path() / name).native();
    EXPECT_EQ(find("tool", path), second);
    EXPECT_EQ(find("tool", "::" + third.parent_path().native() + ":"), third);
    EXPECT_EQ(find("other", path), "");
    EXPECT_EQ(find("tool", ""), "");
    EXPECT_EQ(findProgram("tool", [](const char*) { return std::nullopt; }), "");
}

TEST_F(Program, GetsItsArgumentsAsTheyAre) {
    const auto program = write("tool", R"(for word; do echo "<$word>"; done > "$1")");
    const auto said = folder_.path() / "said";
    const std::vector<std::string> arguments{said, "", "two words", "$HOME; 'x' \"y\"", "*\n\xFF"};
    EXPECT_EQ(runProgram(program, arguments), 0);
    EXPECT_EQ(test::TemporaryFolder::read(said),
              "<" + said.native() + ">\n<>\n<two words>\n<$HOME; 'x' \"y\">\n<*\n\xFF>\n");
}

TEST_F(Program, TellsHowItEnded) {
    EXPECT_EQ(runProgram(write("failing", "exit 7"), {}), 7);
    EXPECT_EQ(runProgram(write("killed", "kill -9 $$"), {}), 128 + 9);
}

TEST_F(Program, EndsByTheSignalsThatThisOneIgnores) {
    const auto former = std::signal(SIGXFSZ, SIG_IGN);
    EXPECT_EQ(runProgram(write("ended", "kill -XFSZ $$; exit 0"), {}), 128 + SIGXFSZ);
    std::signal(SIGXFSZ, former);
}

TEST_F(Program, ReadsNothingAndIsNotHeard) {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    EXPECT_EQ(runProgram(write("tool", "echo out; echo error >&2; read line && exit 1; exit 0"), {}), 0);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(Program, ThatCannotBeStartedIsTheSystemsError) {
    try {
        static_cast<void>(runProgram(folder_.path() / "missing", {}));
        FAIL();
    } catch (const std::system_error& error) {
        EXPECT_EQ(error.code(), std::errc::no_such_file_or_directory);
    }
}

}  // namespace
}  // namespace velamo
