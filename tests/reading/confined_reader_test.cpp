#include "reading/confined_reader.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <thread>
#include <tuple>
#include <vector>

#include "reading/read_design.h"
#include "tests/reading/same_design.h"
#include "tests/support/child_processes.h"
#include "tests/support/samples.h"
#include "tests/support/temporary_folder.h"
#include "velamo/formats/format.h"
#include "velamo/formats/thread_file.h"
#include "velamo/platform/processes/confinement.h"

namespace velamo {
namespace {

/// Reads the file here, and in a process of its own: the same must come of it.
void expectSame(ConfinedReader& reader, const std::filesystem::path& file) {
    VLMDesign here;
    VLMDesign there;
    VLMError hereError;
    VLMError thereError;
    const bool isRead = readDesign(here, file, &hereError);
    EXPECT_EQ(reader.readDesign(there, file, &thereError), isRead) << file;
    if (!isRead) {
        EXPECT_EQ(thereError.domain, hereError.domain);
        EXPECT_EQ(thereError.code, hereError.code);
        EXPECT_EQ(thereError.recoverySuggestion, hereError.recoverySuggestion);
        EXPECT_EQ(thereError.failureReason, hereError.failureReason);
    }
    test::expectSame(there, here);
    EXPECT_EQ(there.designLocation(), here.designLocation());
}

class ConfinedReaderOfFormats : public testing::TestWithParam<Format> {};
TEST_P(ConfinedReaderOfFormats, ReadsWhatIsReadHere) {
    const test::TemporaryFolder folder;
    const std::string extension(GetParam().extension);
    const auto sample = test::sampleFile(extension);
    ConfinedReader reader;
    EXPECT_TRUE(reader.isConfined());
    expectSame(reader, folder.write("x." + extension, sample));
    for (std::size_t size = 0; size < sample.size(); size += 1 + sample.size() / 16)
        expectSame(reader,
                   folder.write("x." + extension,
                                test::Bytes(sample.begin(), sample.begin() + static_cast<std::ptrdiff_t>(size))));
}
INSTANTIATE_TEST_SUITE_P(Each, ConfinedReaderOfFormats, testing::ValuesIn(allFormats().begin(), allFormats().end()),
                         [](const auto& row) {
                             return std::string(row.param.type == "JEF+" ? "JEFPlus" : row.param.type);
                         });

TEST(ConfinedReading, ReadsSideFilesAsTheyAreReadHere) {
    const test::TemporaryFolder folder;
    const auto thread = VLMThread::initWithColorandNameforKeyofPalettewithName(
        VLMColor::initWithRedgreenblue(0.5, 0, 0), "Red", "1", "Mine", Text());
    const std::vector<VLMThread> two(2, thread);
    folder.write("rose.threads", threadFileWith(two));
    folder.write("damaged.threads", std::string("threads"));
    std::filesystem::create_symlink("/proc/self/mem", folder.path() / "unread.threads");
    ConfinedReader reader;
    for (const auto& [name, count, found] :
         {std::tuple{"rose.dst", 2U, 2U}, {"rose.dst", 3U, 0U}, {"damaged.dst", 2U, 0U}, {"none.dst", 2U, 0U}}) {
        std::vector<VLMThread> threads(1);
        EXPECT_TRUE(reader.readThreads(threads, folder.path() / name, count, nullptr)) << name;
        ASSERT_EQ(threads.size(), found) << name;
        for (const VLMThread& each : threads) EXPECT_EQ(each.name(), "Red");
    }
    std::vector<VLMThread> threads;
    VLMError error;
    EXPECT_FALSE(reader.readThreads(threads, folder.path() / "unread.dst", 2, &error));
    EXPECT_EQ(error.code, EIO);
}

TEST(ConfinedReading, SaysWhatIsWrongWithAFile) {
    const test::TemporaryFolder folder;
    ConfinedReader reader;
    expectSame(reader, folder.path() / "missing.dst");
    expectSame(reader, folder.write("x.txt", std::string("text")));
    std::filesystem::create_directory(folder.path() / "folder.dst");
    expectSame(reader, folder.path() / "folder.dst");
    VLMDesign design;
    EXPECT_FALSE(reader.readDesign(design, folder.path() / "missing.dst", nullptr));
    VLMError error;
    EXPECT_FALSE(reader.readDesign(design, folder.path() / std::string(70'000, 'x'), &error));
    EXPECT_EQ(error.code, EMSGSIZE);
}

TEST(ConfinedReading, TakesTheSideFile) {
    const test::TemporaryFolder folder;
    folder.write("x.dst", test::sampleFile("dst"));
    folder.write("x.threads", std::string("<plist version=\"1.0\"><array><dict/><dict/></array></plist>"));
    ConfinedReader reader;
    expectSame(reader, folder.path() / "x.dst");
}

/// A design of a million stitches goes from process to process whole.
TEST(ConfinedReading, TakesLargeDesigns) {
    const test::TemporaryFolder folder;
    test::Bytes stitches(2'000'000);
    for (std::size_t i = 0; i < stitches.size(); ++i) stitches[i] = static_cast<std::uint8_t>(i % 251 % 100);
    ConfinedReader reader;
    expectSame(reader, folder.write("large.exp", stitches));
}

TEST(ConfinedReading, RefusesWhatTakesTooLong) {
    const test::TemporaryFolder folder;
    const auto file = folder.write("large.exp", std::string());
    std::filesystem::resize_file(file, std::uintmax_t{60} << 20);
    ConfinedReader reader({.time = std::chrono::milliseconds(2)});
    VLMDesign design;
    VLMError error;
    EXPECT_FALSE(reader.readDesign(design, file, &error));
    EXPECT_EQ(error.code, ETIMEDOUT);
    EXPECT_EQ(error.message(), "reading it takes too long");
}

TEST(ConfinedReading, RefusesWhatTakesTooMuchMemory) {
    if (!canLimitMemory()) GTEST_SKIP() << "sanitizers need the address space";
    const test::TemporaryFolder folder;
    const auto file = folder.write("large.exp", std::string());
    std::filesystem::resize_file(file, std::uintmax_t{100} << 20);
    ConfinedReader reader({.memory = std::uint64_t{300} << 20});
    VLMDesign design;
    VLMError error;
    EXPECT_FALSE(reader.readDesign(design, file, &error));
    EXPECT_EQ(error.code, ENOMEM);
    EXPECT_TRUE(reader.readDesign(design, folder.write("x.dst", test::sampleFile("dst")), &error));
}

TEST(ConfinedReaders, ReadInManyThreadsAndAreReplaced) {
    const test::TemporaryFolder folder;
    const auto file = folder.write("x.dst", test::sampleFile("dst"));
    auto readers = ConfinedReader::some(3);
    const pid_t nursery = test::childrenOf(::getpid()).at(0);
    std::array<std::atomic<int>, 3> read{};
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < readers.size(); ++i)
        threads.emplace_back([&, i] {
            for (int turn = 0; turn < 50; ++turn) {
                VLMDesign design;
                read.at(i) += readers[i].readDesign(design, file, nullptr) ? 1 : 0;
            }
        });
    // Once only: processes end when the system comes to it, and a file that loses two readers is to blame.
    for (const auto& one : read)
        while (one < 10) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    for (const pid_t guardian : test::childrenOf(nursery)) ::kill(guardian, SIGKILL);
    for (std::thread& thread : threads) thread.join();
    for (const auto& one : read) EXPECT_EQ(one, 50);
}

}  // namespace
}  // namespace velamo
