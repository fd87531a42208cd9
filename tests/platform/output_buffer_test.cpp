#include "velamo/platform/system/output_buffer.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <ostream>
#include <string>

#include "tests/support/standard_stream.h"
#include "tests/support/temporary_folder.h"

namespace velamo {
namespace {

using test::TemporaryFolder;

TEST(OutputBuffers, WriteWhatWasGathered) {
    const TemporaryFolder folder;
    const auto file = folder.write("output", std::string_view());
    const std::string text(150001, 'x');
    {
        const test::StandardStreamOf output(STDOUT_FILENO, file, O_WRONLY);
        OutputBuffer buffer(StandardStream::output);
        std::ostream out(&buffer);
        out << "a";
        EXPECT_EQ(TemporaryFolder::read(file), "");
        out << std::flush << text << 'z' << std::flush;
        EXPECT_TRUE(out);
        EXPECT_FALSE(buffer.failure());
    }
    EXPECT_EQ(TemporaryFolder::read(file), "a" + text + "z");
}

class FullDisk : public testing::TestWithParam<std::size_t> {};
TEST_P(FullDisk, IsNamedAsTheReason) {
    constexpr const char* fullDisk = "/dev/full";
    if (!std::filesystem::exists(fullDisk)) GTEST_SKIP() << "no device is always full";
    const test::StandardStreamOf output(STDERR_FILENO, fullDisk, O_WRONLY);
    OutputBuffer buffer(StandardStream::error);
    std::ostream out(&buffer);
    out << std::string(GetParam(), 'x') << std::flush;
    EXPECT_FALSE(out);
    EXPECT_EQ(buffer.failure(), std::errc::no_space_on_device);
    errno = 0;
    out.clear();
    out << std::string(100000, 'y') << std::flush;
    EXPECT_EQ(buffer.failure(), std::errc::no_space_on_device) << "the first reason stays";
}
INSTANTIATE_TEST_SUITE_P(Sizes, FullDisk, testing::Values(1, 65536, 65537, 1000000), testing::PrintToStringParamName());

}  // namespace
}  // namespace velamo
