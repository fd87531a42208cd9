#include "velamo/platform/processes/worker_process.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <memory>
#include <system_error>
#include <thread>
#include <vector>

#include "tests/support/child_processes.h"
#include "tests/support/temporary_folder.h"
#include "velamo/platform/processes/confinement.h"
#include "velamo/platform/system/files.h"

namespace velamo {
namespace {

using std::chrono::milliseconds;
using test::childrenOf;
using Reply = WorkerProcess::Reply;

Reply ask(WorkerProcess& worker, const std::string& request) {
    return worker.ask({&request, 1}).at(0);
}

/// Switches the alarm off that bounds the request's time.
void dodgeTheAlarm() {
    const itimerval none{};
    ::setitimer(ITIMER_REAL, &none, nullptr);
}

/// Says all the time that it is ready, on the first descriptor behind the standard streams.
void chatter() {
    constexpr int socket = 3;
    const std::array<char, 32> message{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 3, 1};
    while (::send(socket, message.data(), message.size(), MSG_NOSIGNAL) > 0) continue;
}

/// What a careless or hostile service would do, by name.
std::string obey(const std::string& order) {
    if (order == "crash") std::raise(SIGSEGV);
    if (order == "abort") std::abort();
    if (order == "throw") throw std::runtime_error("careless");
    if (order == "exit") ::_exit(7);
    if (order.starts_with("dodge")) dodgeTheAlarm();
    if (order == "dodge and chatter") chatter();
    for (volatile bool isHanging = order == "hang" || order == "dodge"; isHanging;) continue;
    if (order == "process") return std::to_string(::getpid());
    return order + "!";
}

TEST(Worker, Answers) {
    WorkerProcess worker(obey);
    EXPECT_EQ(ask(worker, "rose"), Reply("rose!"));
    EXPECT_EQ(ask(worker, ""), Reply("!"));
    const std::string zeros(1000, '\0');
    EXPECT_EQ(ask(worker, zeros), Reply(zeros + "!"));
    EXPECT_NE(ask(worker, "process"), Reply(std::to_string(::getpid())));
}

TEST(Worker, AnswersManyInOrder) {
    WorkerProcess worker(obey);
    std::vector<std::string> requests;
    std::vector<Reply> replies;
    for (int i = 0; i < 500; ++i) {
        requests.push_back(std::to_string(i) + std::string(static_cast<std::size_t>(i) * 37, 'x'));
        replies.emplace_back(requests.back() + "!");
    }
    EXPECT_EQ(worker.ask(requests), replies);
    EXPECT_TRUE(worker.ask({}).empty());
}

TEST(Worker, DeathsAmongManyHitTheirRequestsOnly) {
    WorkerProcess worker(obey, {.time = milliseconds(200)});
    const std::vector<std::string> requests{"a", "abort", "b", "exit", "exit", "c", "hang", "d"};
    const std::vector<Reply> replies{"a!", WorkerDeath{SIGABRT}, "b!", WorkerDeath{}, WorkerDeath{},
                                     "c!", WorkerDeath{SIGALRM}, "d!"};
    EXPECT_EQ(worker.ask(requests), replies);
}

struct DeathRow {
    const char* name;
    const char* order;
    int signal;
};
class WorkerDeaths : public testing::TestWithParam<DeathRow> {};
TEST_P(WorkerDeaths, HitOneRequestOnly) {
    WorkerProcess worker(obey, {.time = milliseconds(300)});
    for (int turn = 0; turn < 3; ++turn) {
        const Reply before = ask(worker, "process");
        const Reply reply = ask(worker, GetParam().order);
        EXPECT_EQ(reply, Reply(WorkerDeath{GetParam().signal}));
        EXPECT_EQ(std::get<WorkerDeath>(reply).isTimeout(), GetParam().signal == SIGALRM);
        EXPECT_FALSE(std::get<WorkerDeath>(reply).description().empty());
        EXPECT_EQ(ask(worker, "next"), Reply("next!"));
        EXPECT_NE(ask(worker, "process"), before);
    }
}
INSTANTIATE_TEST_SUITE_P(Rows, WorkerDeaths,
                         testing::Values(DeathRow{"Abort", "abort", SIGABRT}, DeathRow{"Exception", "throw", SIGABRT},
                                         DeathRow{"End", "exit", 0}, DeathRow{"Timeout", "hang", SIGALRM}),
                         [](const auto& row) { return row.param.name; });

TEST(Worker, SurvivesAWrongAccess) {
    WorkerProcess worker(obey);
    EXPECT_TRUE(std::holds_alternative<WorkerDeath>(ask(worker, "crash")));  // sanitizers end it in their own way
    EXPECT_EQ(ask(worker, "next"), Reply("next!"));
}

TEST(Worker, RefusesWhatIsTooLong) {
    WorkerProcess worker(obey);
    EXPECT_THROW(static_cast<void>(ask(worker, std::string(70'000, 'x'))), std::system_error);
    EXPECT_EQ(ask(worker, "next"), Reply("next!"));
}

TEST(Worker, HasItsLimitOfMemory) {
    if (!canLimitMemory()) GTEST_SKIP() << "sanitizers need the address space";
    const auto allocate = [](const std::string& megabytes) -> std::string {
        try {
            const std::vector<char> memory(std::stoul(megabytes) << 20);
            return memory.back() == 0 ? "given" : "";
        } catch (const std::bad_alloc&) {
            return "refused";
        }
    };
    WorkerProcess worker(allocate, {.memory = std::uint64_t{512} << 20});
    EXPECT_EQ(ask(worker, "10"), Reply("given"));
    EXPECT_EQ(ask(worker, "600"), Reply("refused"));
    EXPECT_EQ(ask(worker, "10"), Reply("given"));
}

TEST(Worker, ReadsFilesAndChangesNothing) {
    const test::TemporaryFolder folder;
    const auto file = folder.write("rose", std::string("petals"));
    const auto tryAll = [path = file.native()](const std::string&) {
        std::string done;
        const auto bytes = readWholeFile(path);
        done.append(bytes.begin(), bytes.end());
        if (std::ofstream(path + ".new")) done += " create";
        if (std::ofstream(path, std::ios::app)) done += " append";
        if (std::ofstream(path)) done += " replace";
        return done;
    };
    WorkerProcess worker(tryAll);
    EXPECT_EQ(ask(worker, ""), Reply("petals"));
    EXPECT_TRUE(worker.isConfined());
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path()), {}), 1);
}

/// Each guardian would keep the others' sockets open, and so alive, if it had them.
TEST(Worker, EndsWithItsOwner) {
    std::vector<std::unique_ptr<WorkerProcess>> workers;
    std::vector<int> processes;
    for (int i = 0; i < 5; ++i) {
        workers.push_back(std::make_unique<WorkerProcess>(obey));
        processes.push_back(std::stoi(std::get<std::string>(ask(*workers.back(), "process"))));
    }
    workers.clear();
    for (const int process : processes) EXPECT_NE(::kill(process, 0), 0);
}

TEST(Worker, EndsWhenItsOwnerIsKilled) {
    int pipe[2];
    ASSERT_EQ(::pipe(pipe), 0);
    const pid_t owner = ::fork();
    if (owner == 0) {
        WorkerProcess worker(obey);
        const int process = std::stoi(std::get<std::string>(ask(worker, "process")));
        static_cast<void>(::write(pipe[1], &process, sizeof process));
        ::pause();
    }
    int process = 0;
    ASSERT_EQ(::read(pipe[0], &process, sizeof process), static_cast<ssize_t>(sizeof process));
    ::kill(owner, SIGKILL);
    ::waitpid(owner, nullptr, 0);
    for (int i = 0; i < 200 && ::kill(process, 0) == 0; ++i) std::this_thread::sleep_for(milliseconds(10));
    EXPECT_NE(::kill(process, 0), 0);
    ::close(pipe[0]);
    ::close(pipe[1]);
}

TEST(Worker, AttachesWhatIsTooLongForAnAnswer) {
    const auto attach = [](const std::string& letters, AttachmentWriter& attachment) -> std::string {
        for (const char letter : letters) {
            const std::vector<char> bytes(100'000, letter);
            if (const auto failure = attachment.append(std::as_bytes(std::span(bytes))))
                return std::to_string(failure.value());
        }
        return "attached";
    };
    WorkerProcess worker{WorkerTask(attach)};
    for (const std::string letters : {"abc", "d", ""}) {
        EXPECT_EQ(ask(worker, letters), Reply("attached"));
        EXPECT_EQ(worker.sizeOfAttachment(), letters.size() * 100'000);
        for (std::size_t i = 0; i < letters.size(); ++i) {
            std::vector<char> bytes(100'000);
            EXPECT_FALSE(worker.readAttachment(std::as_writable_bytes(std::span(bytes)), i * 100'000));
            EXPECT_EQ(bytes, std::vector<char>(100'000, letters[i]));
        }
        std::array<std::byte, 2> beyond{};
        EXPECT_EQ(worker.readAttachment(beyond, letters.empty() ? 0 : worker.sizeOfAttachment() - 1).value(), EIO);
    }
    worker.clearAttachment();
    EXPECT_EQ(worker.sizeOfAttachment(), 0U);
}

TEST(Worker, AttachesNoMoreThanItsMemory) {
    constexpr std::uint64_t most = std::uint64_t{64} << 20;
    const auto attach = [](const std::string& text, AttachmentWriter& attachment) -> std::string {
        const std::vector<char> bytes(1 << 20, 'x');
        for (int i = 0; i < std::stoi(text); ++i)
            if (const auto failure = attachment.append(std::as_bytes(std::span(bytes))))
                return std::to_string(failure.value());
        return "attached";
    };
    WorkerProcess worker{WorkerTask(attach, {.memory = canLimitMemory() ? most * 4 : most})};
    const std::string tooMuch = canLimitMemory() ? "257" : "65";
    EXPECT_EQ(ask(worker, tooMuch), Reply(std::to_string(EFBIG)));
    worker.clearAttachment();
    EXPECT_EQ(ask(worker, "1"), Reply("attached"));
}

/// What the caller of a program ignores or blocks, its workers do not.
TEST(Worker, TakesSignalsInTheUsualWay) {
    const pid_t caller = ::fork();
    if (caller == 0) {
        sigset_t all;
        sigfillset(&all);
        for (const int signal : {SIGALRM, SIGCHLD, SIGPIPE}) std::signal(signal, SIG_IGN);
        sigprocmask(SIG_BLOCK, &all, nullptr);
        WorkerProcess worker(obey, {.time = milliseconds(200)});
        const std::vector<std::string> requests{"hang", "a", "exit", "b"};
        const std::vector<Reply> replies{WorkerDeath{SIGALRM}, "a!", WorkerDeath{}, "b!"};
        ::_exit(worker.ask(requests) == replies ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(caller, &status, 0), caller);
    EXPECT_EQ(status, 0);
}

class HostileWorkers : public testing::TestWithParam<std::string> {};
TEST_P(HostileWorkers, HoldNobodyUp) {
    WorkerProcess worker(obey, {.time = milliseconds(100)});
    EXPECT_EQ(ask(worker, "first"), Reply("first!"));
    EXPECT_EQ(ask(worker, GetParam()), Reply(WorkerDeath{SIGALRM}));
    const std::string next = "next";
    EXPECT_TRUE(worker.ask({&next, 1}).empty());  // it is lost
}
INSTANTIATE_TEST_SUITE_P(Rows, HostileWorkers, testing::Values("dodge", "dodge and chatter"),
                         [](const auto& row) { return row.param == "dodge" ? "Silent" : "Talkative"; });

/// Kills the worker of the guardian, again and again, at moments that nobody chose.
void killWorkers(pid_t guardian, const std::atomic<bool>& isOver) {
    for (unsigned turn = 0; !isOver; ++turn) {
        for (const pid_t worker : childrenOf(guardian)) ::kill(worker, SIGKILL);
        std::this_thread::sleep_for(std::chrono::microseconds(200 + turn * 7919 % 1500));
    }
}

TEST(Worker, ThatIsKilledAtAnyMomentKeepsNobodyWaiting) {
    const std::vector<std::string> requests(16, "a");
    for (int round = 0; round < 40; ++round) {
        WorkerProcess worker(obey, {.time = std::chrono::seconds(20)});
        EXPECT_EQ(ask(worker, "a"), Reply("a!"));
        std::atomic<bool> isOver = false;
        std::thread killer(killWorkers, childrenOf(::getpid()).at(0), std::cref(isOver));
        for (std::size_t turn = 0, answered = requests.size(); turn < 30 && answered == requests.size(); ++turn) {
            const auto replies = worker.ask(requests);
            answered = replies.size();
            for (const Reply& reply : replies)
                EXPECT_TRUE(reply == Reply("a!") || reply == Reply(WorkerDeath{SIGKILL}));
        }
        isOver = true;
        killer.join();
    }
}

TEST(Worker, ThatIsLostAnswersNoMore) {
    WorkerProcess worker(obey);
    EXPECT_EQ(ask(worker, "a"), Reply("a!"));
    ASSERT_EQ(childrenOf(::getpid()).size(), 1U);
    ::kill(childrenOf(::getpid())[0], SIGKILL);
    const std::vector<std::string> requests{"b", "c"};
    for (int i = 0; i < 200 && !worker.ask(requests).empty(); ++i) std::this_thread::sleep_for(milliseconds(10));
    EXPECT_TRUE(worker.ask(requests).empty());
    EXPECT_TRUE(worker.ask({}).empty());
}

TEST(WorkerNursery, MakesWorkersWhileThereAreThreads) {
    WorkerNursery nursery{WorkerTask(obey, {.time = milliseconds(200)})};
    constexpr std::size_t count = 4;
    std::vector<std::thread> threads;
    threads.reserve(count);
    std::atomic<int> answers = 0;
    for (std::size_t i = 0; i < count; ++i)
        threads.emplace_back([&] {
            for (int turn = 0; turn < 5; ++turn) {
                const auto worker = nursery.makeWorker();
                answers += ask(*worker, "rose") == Reply("rose!") && ask(*worker, "exit") == Reply(WorkerDeath{}) &&
                           ask(*worker, "lily") == Reply("lily!");
            }
        });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(answers, 20);
}

TEST(WorkerNursery, EndsItsWorkersWithItself) {
    pid_t process = 0;
    {
        WorkerNursery nursery{WorkerTask(obey)};
        process = std::stoi(std::get<std::string>(ask(*nursery.makeWorker(), "process")));
    }
    for (int i = 0; i < 200 && ::kill(process, 0) == 0; ++i) std::this_thread::sleep_for(milliseconds(10));
    EXPECT_NE(::kill(process, 0), 0);
}

TEST(WorkerNursery, ThatIsLostMakesNoMoreAndHarmsNone) {
    WorkerNursery nursery{WorkerTask(obey)};
    const auto worker = nursery.makeWorker();
    ASSERT_EQ(childrenOf(::getpid()).size(), 1U);
    ::kill(childrenOf(::getpid())[0], SIGKILL);
    siginfo_t end = {};
    ::waitid(P_PID, static_cast<id_t>(childrenOf(::getpid())[0]), &end, WEXITED | WNOWAIT);
    EXPECT_EQ(ask(*worker, "rose"), Reply("rose!"));
    EXPECT_THROW(static_cast<void>(nursery.makeWorker()), std::system_error);
}

}  // namespace
}  // namespace velamo
