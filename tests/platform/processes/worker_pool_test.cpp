#include "velamo/platform/processes/worker_pool.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <set>

#include "velamo/platform/processes/confinement.h"

namespace velamo {
namespace {

using Pool = WorkerPool<int, int>;

/// The squares of 0 to 99, worked out by as many threads as can be had.
std::multiset<int> squares(std::size_t threads) {
    Pool pool(std::vector<Pool::Work>(threads, [](int&& number) { return number * number; }), 8);
    std::multiset<int> results;
    for (int number = 0; number < 100; ++number) {
        while (pool.isFull()) results.insert(*pool.take());
        pool.submit(number);
        while (const auto result = pool.takeIfDone()) results.insert(*result);
    }
    while (const auto result = pool.take()) results.insert(*result);
    return results;
}

std::multiset<int> expectedSquares() {
    std::multiset<int> results;
    for (int number = 0; number < 100; ++number) results.insert(number * number);
    return results;
}

TEST(WorkerPool, GivesEveryResultOnce) {
    for (const std::size_t threads : {1U, 2U, 7U}) EXPECT_EQ(squares(threads), expectedSquares());
}

struct Row {
    const char* name;
    rlim_t memory;  // more than the process has
    std::size_t wanted;
};
class WorkerPoolWithoutMemory : public testing::TestWithParam<Row> {};
TEST_P(WorkerPoolWithoutMemory, GoesOnWithTheThreadsThereAre) {
    if (!canLimitMemory()) GTEST_SKIP() << "sanitizers need the address space";
    const pid_t child = ::fork();
    if (child == 0) {
        rlim_t pages = 0;
        std::ifstream("/proc/self/statm") >> pages;
        const rlim_t most = pages * static_cast<rlim_t>(::sysconf(_SC_PAGESIZE)) + GetParam().memory;
        const rlimit limit{.rlim_cur = most, .rlim_max = most};
        ::setrlimit(RLIMIT_AS, &limit);
        ::_exit(squares(GetParam().wanted) == expectedSquares() ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
}
INSTANTIATE_TEST_SUITE_P(Rows, WorkerPoolWithoutMemory,
                         testing::Values(Row{"None", rlim_t{4} << 20, 16}, Row{"Few", rlim_t{160} << 20, 1024}),
                         [](const auto& row) { return row.param.name; });

}  // namespace
}  // namespace velamo
