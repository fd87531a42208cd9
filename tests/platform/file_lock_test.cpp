#include "velamo/platform/system/file_lock.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <iterator>
#include <stdexcept>
#include <thread>

#include "tests/support/temporary_folder.h"

namespace velamo {
namespace {

TEST(FileLock, IsHeldByOneAtATime) {
    const test::TemporaryFolder folder;
    const auto file = folder.path() / "lock";
    auto first = std::make_unique<FileLock>(file, [] { FAIL() << "nobody holds it"; });
    std::atomic<bool> isWaiting = false;
    std::atomic<bool> isHeld = false;
    std::thread second([&] {
        const FileLock lock(file, [&] { isWaiting = true; });
        isHeld = true;
    });
    for (int i = 0; i < 500 && !isWaiting; ++i) std::this_thread::sleep_for(std::chrono::milliseconds(10));
    EXPECT_TRUE(isWaiting);
    EXPECT_FALSE(isHeld);
    first.reset();
    second.join();
    EXPECT_TRUE(isHeld);
    EXPECT_TRUE(std::filesystem::exists(file));
}

TEST(FileLock, IsLetGoWhenWaitingIsGivenUp) {
    const auto descriptors = [] {
        const std::filesystem::directory_iterator entries("/dev/fd");
        return std::distance(begin(entries), end(entries));
    };
    const test::TemporaryFolder folder;
    const auto file = folder.path() / "lock";
    {
        const FileLock first(file, [] {});
        const auto before = descriptors();
        EXPECT_THROW(FileLock(file, [] { throw std::runtime_error("given up"); }), std::runtime_error);
        EXPECT_EQ(descriptors(), before);
    }
    const FileLock next(file, [] { FAIL() << "nobody holds it"; });
}

TEST(FileLock, ThatCannotBeMadeIsASystemError) {
    EXPECT_THROW(FileLock("/nowhere/lock", [] {}), std::system_error);
}

}  // namespace
}  // namespace velamo
