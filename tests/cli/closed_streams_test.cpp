// The program where its caller has closed a standard stream: no file that it opens takes the stream's place.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>

#include "tests/cli/support.h"

namespace velamo {
namespace {

struct Row {
    const char* name;
    const char* closed;
    int status;
};
class ClosedStreams : public testing::TestWithParam<Row> {};
TEST_P(ClosedStreams, GetNoMessageIntoAFile) {
    const test::TemporaryFolder folder;
    const std::string broken = "LA:";
    const auto torn = folder.write("designs/torn.dst", broken);
    const std::string place = folder.path().native();
    const std::string command = std::string(VELAMO_PROGRAM) + " index --catalogue " + place + "/own/catalogue.sqlite " +
                                place + "/designs " + GetParam().closed;
    const int status = std::system(command.c_str());
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), GetParam().status);
    EXPECT_EQ(std::filesystem::file_size(folder.path() / "own" / "catalogue.sqlite-lock"), 0U);
    EXPECT_EQ(test::TemporaryFolder::read(torn), broken);
    const auto found = test::call({"search", "--broken", "--catalogue", place + "/own/catalogue.sqlite"});
    EXPECT_EQ(found.status, 0) << found.problems;
    EXPECT_NE(found.out.find("1 broken file"), std::string::npos);
}
INSTANTIATE_TEST_SUITE_P(Rows, ClosedStreams,
                         testing::Values(Row{"Problems", "2>&- >/dev/null", 0}, Row{"Input", "<&- >/dev/null 2>&1", 0},
                                         Row{"Output", ">&- 2>/dev/null", 1},  // whose results nobody gets
                                         Row{"All", "<&- >&- 2>&-", 1}),
                         [](const auto& row) { return std::string(row.param.name); });

}  // namespace
}  // namespace velamo
