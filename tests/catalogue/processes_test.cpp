// What happens when several processes, or a killed one, have to do with one catalogue.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <thread>

#include "tests/catalogue/support.h"

namespace velamo {
namespace {

using std::chrono::milliseconds;

class Processes : public testing::Test {
protected:
    Processes() {
        for (int i = 0; i < designCount; ++i)
            folder_.write("designs/" + std::to_string(i % 9) + "/" + std::to_string(i) + ".dst", test::soundDst());
    }
    /// A process that indexes, a little slower than it could, once the file `signal` is there (if one is named), and
    /// that says "waiting" by making a file.
    [[nodiscard]] pid_t startIndexing(const std::filesystem::path& signal = {}) const {
        const pid_t child = ::fork();
        if (child != 0) return child;
        while (!signal.empty() && !std::filesystem::exists(signal)) std::this_thread::sleep_for(milliseconds(5));
        try {
            auto catalogue = Catalogue::openForIndexing(catalogue_, [this] { std::ofstream(waiting_) << "waiting"; });
            test::Told told;
            test::runIndexer(catalogue, {designs_}, told, 1, [](const std::filesystem::path& file) {
                std::this_thread::sleep_for(milliseconds(1));
                return readFacts(file);
            });
        } catch (...) {
            ::_exit(1);
        }
        ::_exit(0);
    }
    static bool endedWell(pid_t child) {
        int status = 0;
        return ::waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
    }

    static constexpr int designCount = 1200;
    test::TemporaryFolder folder_;
    std::filesystem::path designs_ = folder_.path() / "designs";
    std::filesystem::path catalogue_ = folder_.path() / "catalogue.sqlite";
    std::filesystem::path waiting_ = folder_.path() / "waiting";
};

TEST_F(Processes, KilledAtAnyMomentLeaveASoundCatalogue) {
    std::size_t most = 0;
    for (int attempt = 0; attempt < 12; ++attempt) {
        const pid_t child = startIndexing();
        ASSERT_GT(child, 0);
        std::this_thread::sleep_for(milliseconds(1 + 57 * attempt));
        ::kill(child, SIGKILL);
        ASSERT_EQ(::waitpid(child, nullptr, 0), child);
        if (!std::filesystem::exists(catalogue_)) continue;
        EXPECT_EQ(test::runSql(catalogue_, "PRAGMA integrity_check"), "ok");
        auto catalogue = Catalogue::openForIndexing(catalogue_);  // nobody is waited for: the dead hold no lock
        const std::size_t known = catalogue.search({}).size();
        EXPECT_GE(known, most);  // what was committed stays
        most = known;
    }
    EXPECT_GT(most, 0U);
    auto catalogue = Catalogue::openForIndexing(catalogue_);
    test::Told told;
    const auto summary = test::runIndexer(catalogue, {designs_}, told);
    EXPECT_EQ(summary.designs(), designCount);
    EXPECT_EQ(summary.unchanged, static_cast<std::int64_t>(most));
    EXPECT_EQ(catalogue.search({}).size(), static_cast<std::size_t>(designCount));
}

TEST_F(Processes, WaitForEachOther) {
    const auto signal = folder_.path() / "go";
    const pid_t other = startIndexing(signal);  // now: a child shares the locks that its parent has
    {
        const auto held = Catalogue::openForIndexing(catalogue_);
        std::ofstream(signal) << "go";
        for (int i = 0; i < 500 && !std::filesystem::exists(waiting_); ++i)
            std::this_thread::sleep_for(milliseconds(10));
        EXPECT_TRUE(std::filesystem::exists(waiting_));
        EXPECT_EQ(::waitpid(other, nullptr, WNOHANG), 0);
        EXPECT_TRUE(held.search({}).empty());
    }
    EXPECT_TRUE(endedWell(other));
    EXPECT_EQ(Catalogue::openForSearching(catalogue_).search({}).size(), static_cast<std::size_t>(designCount));
}

TEST_F(Processes, AtOnceFillTheCatalogueOnce) {
    const pid_t one = startIndexing();
    const pid_t other = startIndexing();
    EXPECT_TRUE(endedWell(one));
    EXPECT_TRUE(endedWell(other));
    const auto catalogue = Catalogue::openForSearching(catalogue_);
    EXPECT_EQ(catalogue.search({}).size(), static_cast<std::size_t>(designCount));
    EXPECT_EQ(test::runSql(catalogue_, "PRAGMA integrity_check"), "ok");
}

/// Another program that holds the file's own lock is waited for as long as the catalogue says, 10 seconds, then told
/// of.
TEST_F(Processes, GiveUpOnACatalogueThatAnotherProgramHolds) {
    { const auto made = Catalogue::openForIndexing(catalogue_); }
    sqlite3* other = nullptr;
    ASSERT_EQ(::sqlite3_open(catalogue_.c_str(), &other), SQLITE_OK);
    ASSERT_EQ(::sqlite3_exec(other, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr), SQLITE_OK);
    {
        auto catalogue = Catalogue::openForIndexing(catalogue_);
        test::Told told;
        try {
            test::runIndexer(catalogue, {designs_}, told);
            FAIL() << "the catalogue was written";
        } catch (const CatalogueError& error) {
            EXPECT_EQ(error.code() & 0xFF, SQLITE_BUSY) << error.what();
        }
        EXPECT_TRUE(catalogue.search({}).empty());  // reading goes on
    }
    ::sqlite3_close(other);
    auto catalogue = Catalogue::openForIndexing(catalogue_);
    test::Told told;
    EXPECT_EQ(test::runIndexer(catalogue, {designs_}, told).added, designCount);
}

}  // namespace
}  // namespace velamo
