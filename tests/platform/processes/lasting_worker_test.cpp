#include "velamo/platform/processes/lasting_worker.h"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <thread>

#include "tests/support/child_processes.h"

namespace velamo {
namespace {

using Reply = WorkerProcess::Reply;
using test::childrenOf;

/// How often "fragile" or "slow" was asked for, whatever process got to know it.
std::atomic<int>& attempts() {
    static auto* const shared =
        new (::mmap(nullptr, sizeof(std::atomic<int>), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0))
            std::atomic<int>(0);
    return *shared;
}

/// What becomes of processes that others end.
std::string obey(const std::string& order) {
    if (order == "killed") std::raise(SIGKILL);
    if (order == "fragile" && ++attempts() == 1) std::raise(SIGKILL);
    if (order == "abort") std::abort();
    if (order == "slow" && ++attempts() == 1)
        for (volatile bool isHanging = true; isHanging;) continue;
    return order + "!";
}

const WorkerTask task{WorkerTask::Service(obey), {.time = std::chrono::milliseconds(5000)}};

void endProcess(pid_t process) {
    ::kill(process, SIGKILL);
    for (int i = 0; i < 500 && ::kill(process, 0) == 0; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
        siginfo_t end = {};
        if (::waitid(P_PID, static_cast<id_t>(process), &end, WEXITED | WNOHANG | WNOWAIT) == 0 && end.si_pid != 0)
            return;
    }
}

TEST(LastingWorker, IsAskedAgainWhatSomebodyElseEnded) {
    attempts() = 0;
    LastingWorker worker(task);
    const std::vector<std::string> requests{"a", "fragile", "b"};
    EXPECT_EQ(worker.ask(requests), (std::vector<Reply>{"a!", "fragile!", "b!"}));
    EXPECT_EQ(attempts(), 2);
}

TEST(LastingWorker, BlamesTheRequestThatEndsTwo) {
    LastingWorker worker(task);
    const std::vector<std::string> requests{"a", "killed", "b", "abort", "c"};
    const std::vector<Reply> replies{"a!", WorkerDeath{SIGKILL}, "b!", WorkerDeath{SIGABRT}, "c!"};
    EXPECT_EQ(worker.ask(requests), replies);
}

TEST(LastingWorker, IsReplacedWithItsGuardian) {
    LastingWorker worker(task);
    const std::vector<std::string> requests{"a", "b"};
    for (int turn = 0; turn < 3; ++turn) {
        EXPECT_EQ(worker.ask(requests), (std::vector<Reply>{"a!", "b!"}));
        ASSERT_EQ(childrenOf(::getpid()).size(), 1U);
        endProcess(childrenOf(::getpid())[0]);
    }
    EXPECT_EQ(worker.ask(requests), (std::vector<Reply>{"a!", "b!"}));
}

/// The nursery's guardians, which are its children.
std::vector<pid_t> guardians() {
    return childrenOf(childrenOf(::getpid()).at(0));
}

TEST(LastingWorkers, AreReplacedInTheMiddleOfARequest) {
    attempts() = 0;
    auto workers = LastingWorker::some(2, task);
    ASSERT_EQ(workers.size(), 2U);
    std::thread other([] {
        while (attempts() == 0) std::this_thread::sleep_for(std::chrono::milliseconds(1));
        for (const pid_t guardian : guardians()) ::kill(guardian, SIGKILL);
    });
    const std::vector<std::string> requests{"a", "slow", "b", "c"};
    const std::vector<Reply> replies{"a!", "slow!", "b!", "c!"};
    EXPECT_EQ(workers[0].ask(requests), replies);
    other.join();
    EXPECT_EQ(workers[1].ask(requests), replies);
    EXPECT_EQ(attempts(), 3);
}

TEST(LastingWorkers, ThatNobodyReplacesAnyMoreAreALoss) {
    auto workers = LastingWorker::some(1, task);
    const auto guardian = guardians().at(0);
    endProcess(childrenOf(::getpid())[0]);
    const std::vector<std::string> requests{"a", "b"};
    EXPECT_EQ(workers[0].ask(requests), (std::vector<Reply>{"a!", "b!"}));
    endProcess(guardian);
    EXPECT_THROW(static_cast<void>(workers[0].ask(requests)), WorkerLoss);
    EXPECT_THROW(static_cast<void>(workers[0].ask(requests)), WorkerLoss);
}

}  // namespace
}  // namespace velamo
