#include "velamo/platform/system/text_input.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <thread>

#include "tests/support/standard_stream.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/unreadable_file.h"

namespace velamo {
namespace {

using test::TemporaryFolder;

TEST(TextInput, IsAllOfAFile) {
    const TemporaryFolder folder;
    std::error_code error = std::make_error_code(std::errc::io_error);
    EXPECT_EQ(textOfFile(folder.write("empty", std::string_view()), error), "");
    EXPECT_FALSE(error);
    const std::string text(200000, 'x');
    EXPECT_EQ(textOfFile(folder.write("long", text), error), text);
    EXPECT_FALSE(error);
}

TEST(TextInput, IsAllOfThePipeThatIsWaitedFor) {
    const TemporaryFolder folder;
    const auto pipe = folder.path() / "pipe";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    std::thread writer([&] {
        const int descriptor = ::open(pipe.c_str(), O_WRONLY | O_CLOEXEC);
        for (const char* part : {"cen", "ter\n"}) EXPECT_GT(::write(descriptor, part, std::string(part).size()), 0);
        ::close(descriptor);
    });
    std::error_code error;
    EXPECT_EQ(textOfFile(pipe, error), "center\n");
    EXPECT_FALSE(error);
    writer.join();
}

TEST(TextInput, IsTheStandardInput) {
    const TemporaryFolder folder;
    const test::StandardStreamOf input(STDIN_FILENO, folder.write("input", "center\n"), O_RDONLY);
    std::error_code error;
    EXPECT_EQ(textOfStandardInput(error), "center\n");
    EXPECT_FALSE(error);
}

struct Row {
    const char* name;
    const char* file;
    int error;
};
class UnreadText : public testing::TestWithParam<Row> {};
TEST_P(UnreadText, TellsTheSystemsReason) {
    std::error_code error;
    EXPECT_EQ(textOfFile(GetParam().file, error), "");
    EXPECT_EQ(error, std::error_code(GetParam().error, std::generic_category()));
}
INSTANTIATE_TEST_SUITE_P(Rows, UnreadText,
                         testing::Values(Row{"Missing", "/nowhere/script", ENOENT}, Row{"Folder", "/", EISDIR},
                                         Row{"Endless", "/dev/zero", EFBIG}),
                         [](const auto& row) { return row.param.name; });

TEST(UnreadText, TellsTheSystemsReasonWhereReadingBreaksOff) {
    if (!test::hasUnreadableFile()) GTEST_SKIP() << "no file here fails so";
    std::error_code error;
    EXPECT_EQ(textOfFile(test::unreadableFile, error), "");
    EXPECT_EQ(error, std::errc::io_error);
}

TEST(TextInput, OfAStandardInputThatCannotBeReadIsAnError) {
    const test::StandardStreamOf input(STDIN_FILENO, "/", O_RDONLY);
    std::error_code error;
    EXPECT_EQ(textOfStandardInput(error), "");
    EXPECT_EQ(error, std::errc::is_a_directory);
}

}  // namespace
}  // namespace velamo
