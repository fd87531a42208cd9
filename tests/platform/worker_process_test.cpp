#include "platform/worker_process.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <system_error>
#include <thread>
#include <vector>

#include "platform/confinement.h"
#include "platform/files.h"
#include "tests/support/temporary_folder.h"

namespace velamo {
namespace {

using std::chrono::milliseconds;
using Reply = WorkerProcess::Reply;

Reply ask(WorkerProcess& worker, const std::string& request) {
    return worker.ask({&request, 1}).at(0);
}

/// What a careless service would do, by name.
std::string obey(const std::string& order) {
    if (order == "crash") std::raise(SIGSEGV);
    if (order == "abort") std::abort();
    if (order == "throw") throw std::runtime_error("careless");
    if (order == "exit") ::_exit(7);
    if (order == "hang") std::this_thread::sleep_for(std::chrono::hours(1));
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
        if (::unlink(path.c_str()) == 0) done += " remove";
        if (::rename(path.c_str(), (path + "2").c_str()) == 0) done += " rename";
        if (::socket(AF_INET, SOCK_STREAM, 0) >= 0) done += " network";
        if (::socket(AF_UNIX, SOCK_STREAM, 0) >= 0) done += " socket";
        if (::kill(::getppid(), 0) == 0) done += " kill";
        if (::fork() >= 0) done += " fork";
        ::execl("/bin/true", "true", nullptr);
        return done;
    };
    WorkerProcess worker(tryAll);
    EXPECT_EQ(ask(worker, ""), Reply("petals"));
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

}  // namespace
}  // namespace velamo
