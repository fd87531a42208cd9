// What a confined process is refused, tried from inside one.
#include "velamo/platform/processes/confinement.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/inotify.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/mount.h>
#include <sys/personality.h>
#include <sys/prctl.h>
#include <sys/ptrace.h>
#include <sys/resource.h>
#include <sys/shm.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <fstream>
#include <functional>

#include "tests/support/temporary_folder.h"
#include "tests/support/without_filters.h"
#include "velamo/platform/processes/worker_process.h"

namespace velamo {
namespace {

using test::withoutFilters;

/// What the worker may reach of its surroundings.
struct Target {
    std::string file;    // that is there, and its owner's
    std::string folder;  // around it
    pid_t owner = 0;
};

/// One attempt at something that is not reading. Calls are made by their numbers where they are new or the C library
/// would make another one.
struct Escape {
    const char* name;
    int error;
    std::function<long(const Target&)> attempt;
    bool areSanitizersAllowed = false;
};

constexpr long fchmodat2Call = 452;
constexpr long openTreeCall = 428;
constexpr long mountSetattrCall = 442;
constexpr long landlockCreateRulesetCall = 444;
constexpr long processMadviseCall = 440;
constexpr long unknownCall = 100'000;

template <class... Arguments>
std::function<long(const Target&)> call(long number, Arguments... arguments) {
    return [=](const Target&) { return ::syscall(number, arguments...); };
}

std::string inWorker(const std::function<std::string()>& body) {
    WorkerProcess worker([body](const std::string&) { return body(); });
    const std::string request;
    const auto reply = worker.ask({&request, 1}).at(0);
    const auto* answer = std::get_if<std::string>(&reply);
    return answer != nullptr ? *answer : "died: " + std::get<WorkerDeath>(reply).description();
}

std::string errorOf(long result) {
    return result < 0 ? std::to_string(errno) : "done";
}

class Escapes : public testing::TestWithParam<Escape> {};
TEST_P(Escapes, AreRefused) {
    if (GetParam().areSanitizersAllowed && !canLimitMemory()) GTEST_SKIP() << "sanitizers need this call";
    const test::TemporaryFolder folder;
    const Target target{.file = folder.write("rose", std::string("petals")).native(),
                        .folder = folder.path().native(),
                        .owner = ::getpid()};
    EXPECT_EQ(inWorker([&] { return errorOf(GetParam().attempt(target)); }), std::to_string(GetParam().error));
    EXPECT_EQ(test::TemporaryFolder::read(target.file), "petals");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path()), {}), 1);
}

int openFile(const Target& target, int flags) {
    return ::open(target.file.c_str(), flags, 0600);
}

const char letter = 'x';

const std::vector<Escape> escapes{
    // the terminal and other devices
    {"TypingIntoTheTerminal", EPERM, call(SYS_ioctl, 0, TIOCSTI, &letter)},
    {"TypingIntoTheTerminalWithHighBits", EPERM, call(SYS_ioctl, 0, 0xFFFFFFFF00000000UL | TIOCSTI, &letter)},
    {"AskingForATerminal", EPERM, call(SYS_ioctl, 0, TCGETS, nullptr)},
    {"CopyingIntoTheClipboardOfTheConsole", EPERM, call(SYS_ioctl, 0, TIOCLINUX, &letter)},
    // changing files
    {"OpeningForWriting", EPERM, [](const Target& t) { return openFile(t, O_WRONLY); }},
    {"OpeningForBoth", EPERM, [](const Target& t) { return openFile(t, O_RDWR); }},
    {"OpeningForControl", EPERM, [](const Target& t) { return openFile(t, O_ACCMODE); }},
    {"Appending", EPERM, [](const Target& t) { return openFile(t, O_WRONLY | O_APPEND); }},
    {"Truncating", EPERM, [](const Target& t) { return openFile(t, O_RDONLY | O_TRUNC); }},
    {"Creating", EPERM, [](const Target& t) { return ::open((t.folder + "/new").c_str(), O_RDONLY | O_CREAT, 0600); }},
    {"CreatingANamelessFile", EPERM,
     [](const Target& t) { return ::open(t.folder.c_str(), O_RDWR | O_TMPFILE, 0600); }},
    {"OpenInTheOldWay", EPERM, [](const Target& t) { return ::syscall(SYS_open, t.file.c_str(), O_RDWR); }},
    {"Openat2", ENOSYS, call(SYS_openat2, AT_FDCWD, "/", nullptr, 0)},
    {"WritingWhereItMayRead", EPERM, [](const Target& t) { return ::write(openFile(t, O_RDONLY), "x", 1); }, true},
    {"ChangingAMode", EPERM, [](const Target& t) { return ::chmod(t.file.c_str(), 0); }},
    {"Fchmodat", EPERM, [](const Target& t) { return ::syscall(SYS_fchmodat, AT_FDCWD, t.file.c_str(), 0); }},
    {"Fchmodat2", ENOSYS, [](const Target& t) { return ::syscall(fchmodat2Call, AT_FDCWD, t.file.c_str(), 0, 0); }},
    {"ChangingAnOwner", EPERM, [](const Target& t) { return ::chown(t.file.c_str(), 1, 1); }},
    {"ChangingATime", EPERM, [](const Target& t) { return ::utimensat(AT_FDCWD, t.file.c_str(), nullptr, 0); }},
    {"Removing", EPERM, [](const Target& t) { return ::unlink(t.file.c_str()); }},
    {"Renaming", EPERM, [](const Target& t) { return ::rename(t.file.c_str(), (t.file + "2").c_str()); }},
    {"Linking", EPERM, [](const Target& t) { return ::link(t.file.c_str(), (t.file + "2").c_str()); }},
    {"MakingALink", EPERM, [](const Target& t) { return ::symlink("/", (t.file + "2").c_str()); }},
    {"MakingAFolder", EPERM, [](const Target& t) { return ::mkdir((t.folder + "/new").c_str(), 0700); }},
    {"MakingAPipe", EPERM, [](const Target& t) { return ::mkfifo((t.folder + "/new").c_str(), 0600); }},
    {"TruncatingByName", EPERM, [](const Target& t) { return ::truncate(t.file.c_str(), 0); }},
    {"Mounting", EPERM, [](const Target& t) { return ::mount("none", t.folder.c_str(), "tmpfs", 0, nullptr); }},
    {"OpenTree", EPERM, call(openTreeCall, AT_FDCWD, "/", 1)},
    {"MountSetattr", EPERM, call(mountSetattrCall, -1, "", 0, nullptr, 0)},
    {"Watching", EPERM, call(SYS_inotify_init1, 0)},
    {"Fanotify", EPERM, call(SYS_fanotify_init, 0, 0)},
    {"ListingAFolder", EPERM,
     [](const Target& t) {
         std::array<char, 1024> entries{};
         return ::syscall(SYS_getdents64, ::open(t.folder.c_str(), O_RDONLY | O_DIRECTORY), entries.data(), 1024);
     }},
    {"ChangingFlags", EPERM, [](const Target& t) { return ::fcntl(openFile(t, O_RDONLY), F_SETFL, O_NONBLOCK); }},
    {"Locking", EPERM, [](const Target& t) { return ::syscall(SYS_flock, openFile(t, O_RDONLY), 2); }},
    {"ChangingTheRoot", EPERM, [](const Target& t) { return ::chroot(t.folder.c_str()); }},
    {"ChangingTheFolder", EPERM, [](const Target& t) { return ::chdir(t.folder.c_str()); }},
    // other processes
    {"Signalling", EPERM, [](const Target& t) { return ::kill(t.owner, 0); }},
    {"SignallingItself", EPERM, [](const Target&) { return ::kill(::getpid(), 0); }},
    {"SignallingAll", EPERM, [](const Target&) { return ::kill(-1, 0); }},
    {"SignallingAThread", EPERM, [](const Target& t) { return ::syscall(SYS_tgkill, t.owner, t.owner, 0); }},
    {"SignallingAThreadInTheOldWay", EPERM, [](const Target& t) { return ::syscall(SYS_tkill, t.owner, 0); }},
    {"SignallingWithAValue", EPERM,
     [](const Target& t) { return ::syscall(SYS_rt_sigqueueinfo, t.owner, 0, nullptr); }},
    {"Pidfd", EPERM, [](const Target& t) { return ::syscall(SYS_pidfd_open, t.owner, 0); }},
    {"Tracing", EPERM, [](const Target& t) { return ::ptrace(PTRACE_ATTACH, t.owner, nullptr, nullptr); }},
    {"ReadingMemory", EPERM, [](const Target& t) { return ::syscall(SYS_process_vm_readv, t.owner, 0, 0, 0, 0, 0); }},
    {"WritingMemory", EPERM, [](const Target& t) { return ::syscall(SYS_process_vm_writev, t.owner, 0, 0, 0, 0, 0); }},
    {"AdvisingOnMemory", EPERM, call(processMadviseCall, 0, 0, 0, 0, 0)},
    {"Limits", EPERM,
     [](const Target& t) {
         const rlimit none{0, 0};
         return ::syscall(SYS_prlimit64, t.owner, RLIMIT_NOFILE, &none, nullptr);
     }},
    {"OwnLimits", EPERM,
     [](const Target&) {
         const rlimit none{0, 0};
         return ::syscall(SYS_prlimit64, 0, RLIMIT_CORE, &none, nullptr);
     }},
    {"Priority", EPERM, [](const Target& t) { return ::setpriority(PRIO_PROCESS, static_cast<id_t>(t.owner), 5); }},
    {"Affinity", EPERM, [](const Target& t) { return ::syscall(SYS_sched_setaffinity, t.owner, 0, nullptr); }},
    {"Scheduler", EPERM, [](const Target& t) { return ::syscall(SYS_sched_setscheduler, t.owner, 0, nullptr); }},
    {"Group", EPERM, [](const Target&) { return ::setpgid(0, 0); }},
    {"Session", EPERM, [](const Target&) { return ::setsid(); }},
    {"Comparing", EPERM, [](const Target& t) { return ::syscall(SYS_kcmp, t.owner, t.owner, 0, 0, 0); }},
    // new processes and programs
    {"Fork", EPERM, [](const Target&) { return ::syscall(SYS_fork); }},
    {"Vfork", EPERM, [](const Target&) { return ::syscall(SYS_clone, CLONE_VFORK | SIGCHLD, 0, 0, 0, 0); }},
    {"ForkByTheLibrary", EPERM, [](const Target&) { return ::fork(); }},
    {"Clone3", ENOSYS, call(SYS_clone3, nullptr, 0)},
    {"Executing", EPERM, [](const Target&) { return ::execl("/bin/true", "true", nullptr); }},
    {"ExecutingADescriptor", EPERM, call(SYS_execveat, -1, "/bin/true", nullptr, nullptr, 0)},
    {"Namespaces", EPERM, [](const Target&) { return ::unshare(CLONE_NEWUSER); }},
    {"OtherNamespaces", EPERM, call(SYS_setns, 0, 0)},
    // memory and descriptors
    {"ExecutableMemory", EPERM,
     [](const Target&) {
         return ::mmap(nullptr, 4096, PROT_READ | PROT_EXEC, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0) == MAP_FAILED ? -1 : 0;
     }},
    {"MakingMemoryExecutable", EPERM,
     [](const Target&) {
         void* const memory = ::mmap(nullptr, 4096, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
         return ::mprotect(memory, 4096, PROT_READ | PROT_EXEC);
     }},
    {"MakingMemoryExecutableByKey", EPERM, call(SYS_pkey_mprotect, nullptr, 0, PROT_EXEC, -1)},
    {"MemoryFile", EPERM, call(SYS_memfd_create, "x", 0)},
    {"SharedMemory", EPERM, [](const Target&) { return ::shmget(IPC_PRIVATE, 4096, IPC_CREAT); }},
    {"Semaphores", EPERM, call(SYS_semget, 0, 1, 0)},
    {"Queues", EPERM, call(SYS_msgget, 0, 0)},
    {"MessageQueue", EPERM, call(SYS_mq_open, "x", 0, 0, nullptr)},
    {"FaultsByUser", EPERM, call(SYS_userfaultfd, 0)},
    {"Pipe", EPERM,
     [](const Target&) {
         int ends[2];
         return ::syscall(SYS_pipe2, ends, 0);
     },
     true},
    {"Duplicating", EPERM, [](const Target&) { return ::dup2(0, 9); }},
    {"DuplicatingByControl", EPERM, [](const Target&) { return ::fcntl(0, F_DUPFD, 9); }},
    {"Eventfd", EPERM, call(SYS_eventfd2, 0, 0)},
    {"Timerfd", EPERM, call(SYS_timerfd_create, 0, 0)},
    {"Signalfd", EPERM, call(SYS_signalfd4, -1, nullptr, 8, 0)},
    {"Epoll", EPERM, call(SYS_epoll_create1, 0)},
    // the network, and messages to others
    {"Network", EPERM, [](const Target&) { return ::socket(AF_INET, SOCK_STREAM, 0); }},
    {"Socket", EPERM, [](const Target&) { return ::socket(AF_UNIX, SOCK_STREAM, 0); }},
    {"Netlink", EPERM, [](const Target&) { return ::socket(AF_NETLINK, SOCK_RAW, 0); }},
    {"Socketpair", EPERM,
     [](const Target&) {
         int ends[2];
         return ::socketpair(AF_UNIX, SOCK_STREAM, 0, ends);
     }},
    {"Connecting", EPERM, call(SYS_connect, 3, nullptr, 0)},
    {"SendingOnAnotherDescriptor", EPERM, call(SYS_sendto, 9, "x", 1, 0, nullptr, 0)},
    {"SendingToAnAddress", EPERM, call(SYS_sendto, 3, "x", 1, 0, "address", 7)},
    {"SendingDescriptors", EPERM, call(SYS_sendmsg, 3, nullptr, 0)},
    {"ReceivingDescriptors", EPERM, call(SYS_recvmsg, 3, nullptr, 0)},
    {"SocketOptions", EPERM, call(SYS_setsockopt, 3, SOL_SOCKET, SO_RCVBUF, nullptr, 0)},
    // ways round all that
    {"IoUring", EPERM, call(SYS_io_uring_setup, 1, nullptr)},
    {"Aio", EPERM, call(SYS_io_setup, 1, nullptr)},
    {"Bpf", EPERM, call(SYS_bpf, 0, nullptr, 0)},
    {"Perf", EPERM, call(SYS_perf_event_open, nullptr, 0, 0, 0, 0)},
    {"Keys", EPERM, call(SYS_add_key, "user", "x", "y", 1, -3)},
    {"AskingForKeys", EPERM, call(SYS_request_key, "user", "x", nullptr, 0)},
    {"KeyControl", EPERM, call(SYS_keyctl, 0, -3, 0)},
    {"Personality", EPERM, [](const Target&) { return ::personality(ADDR_NO_RANDOMIZE); }},
    {"Handles", EPERM, call(SYS_open_by_handle_at, -1, nullptr, 0)},
    {"Modules", EPERM, call(SYS_init_module, nullptr, 0, "")},
    {"Kexec", EPERM, call(SYS_kexec_load, 0, 0, nullptr, 0)},
    {"Clock", EPERM, call(SYS_clock_settime, 0, nullptr)},
    {"HostName", EPERM, call(SYS_sethostname, "x", 1)},
    {"User", EPERM, call(SYS_setuid, 1)},
    {"Capabilities", EPERM, call(SYS_capset, nullptr, nullptr)},
    {"Prctl", EPERM, [](const Target&) { return ::prctl(PR_SET_DUMPABLE, 1, 0, 0, 0); }},
    {"AnotherFilter", EPERM, call(SYS_seccomp, 1, 0, nullptr)},
    {"AnotherRuleset", EPERM, call(landlockCreateRulesetCall, nullptr, 0, 1)},
    {"SystemLog", EPERM, call(SYS_syslog, 3, nullptr, 0)},
    {"AnotherTimer", EPERM, call(SYS_timer_create, 0, nullptr, nullptr)},
    {"ACallOfTomorrow", EPERM, call(unknownCall)},
#ifdef __x86_64__
    {"ACallOfX32", EPERM, call(0x40000000L | SYS_getpid)},
#endif
};
INSTANTIATE_TEST_SUITE_P(Rows, Escapes, testing::ValuesIn(escapes), [](const auto& row) { return row.param.name; });

std::ostream& operator<<(std::ostream& out, const Escape& escape) {
    return out << escape.name;
}

#ifdef __x86_64__
/// getpid, as a program of 32 bits asks for it.
long callOf32Bits() {
    constexpr long getpidOf32Bits = 20;
    long result = getpidOf32Bits;
    asm volatile("int $0x80" : "+a"(result) : : "memory", "r8", "r9", "r10", "r11");
    return result;
}

TEST(Confined, CannotCallAs32BitsDo) {
    const pid_t child = ::fork();
    if (child == 0) ::_exit(callOf32Bits() > 0 ? 0 : 1);
    int status = 0;
    ::waitpid(child, &status, 0);
    if (status != 0) GTEST_SKIP() << "this system has no such calls";
    EXPECT_EQ(inWorker([] { return std::to_string(callOf32Bits()); }), std::to_string(-EPERM));
}
#endif

TEST(Confined, HasNothingOpenThatItsOwnerHas) {
    const int own = ::open("/dev/null", O_RDONLY);
    const auto answer = inWorker([] {
        std::string open;
        for (int descriptor = 0; descriptor < 1024; ++descriptor)
            if (::fcntl(descriptor, F_GETFD) >= 0) open += ' ' + std::to_string(descriptor);
        struct stat nowhere = {};
        struct stat stream = {};
        ::stat("/dev/null", &nowhere);
        for (int descriptor = 0; descriptor < 3; ++descriptor)
            if (::fstat(descriptor, &stream) != 0 || stream.st_rdev != nowhere.st_rdev) open += " stream";
        return open;
    });
    EXPECT_EQ(answer, " 0 1 2 3");
    ::close(own);
}

/// The system's own words on a process, which a process that cannot be dumped keeps from others.
std::string statusOf(pid_t process, const std::string& key) {
    std::ifstream in("/proc/" + std::to_string(process) + "/status");
    for (std::string line; std::getline(in, line);)
        if (line.starts_with(key + ":\t")) return line.substr(key.size() + 2);
    return "";
}

TEST(Confined, BelongsToASessionOfItsOwnWithoutPrivilegesToGain) {
    WorkerProcess worker([](const std::string&) { return std::to_string(::getpid()); });
    const std::string request;
    const pid_t process = std::stoi(std::get<std::string>(worker.ask({&request, 1}).at(0)));
    EXPECT_NE(::getsid(process), ::getsid(0));
    EXPECT_NE(::getsid(process), process);  // nobody's leader gets a terminal
    EXPECT_EQ(statusOf(process, "NoNewPrivs"), "1");
    EXPECT_EQ(statusOf(process, "Seccomp"), "2");
}

struct LimitRow {
    const char* name;
    decltype(RLIMIT_AS) resource;
    rlim_t most;
};
class ConfinedLimits : public testing::TestWithParam<LimitRow> {};
TEST_P(ConfinedLimits, CannotBePassed) {
    WorkerProcess worker([](const std::string&) { return std::to_string(::getpid()); }, {.memory = 1U << 30});
    const std::string request;
    const pid_t process = std::stoi(std::get<std::string>(worker.ask({&request, 1}).at(0)));
    rlimit limit{};
    if (::prlimit(process, GetParam().resource, nullptr, &limit) != 0) GTEST_SKIP() << "only the superuser can look";
    EXPECT_EQ(limit.rlim_cur, GetParam().most);
    EXPECT_EQ(limit.rlim_max, GetParam().most);
}
INSTANTIATE_TEST_SUITE_P(Rows, ConfinedLimits,
                         testing::Values(LimitRow{"Core", RLIMIT_CORE, 0}, LimitRow{"Processes", RLIMIT_NPROC, 0},
                                         LimitRow{"Files", RLIMIT_NOFILE, 32},
                                         LimitRow{"FileSize", RLIMIT_FSIZE, 1U << 30}),
                         [](const auto& row) { return row.param.name; });

TEST(Unconfined, WorkersSayThatTheyAre) {
    EXPECT_TRUE(withoutFilters([] {
        WorkerProcess worker(
            [](const std::string&) { return std::to_string(::prctl(PR_GET_NO_NEW_PRIVS, 0, 0, 0, 0)); });
        const std::string request;
        return !worker.isConfined() && std::get<std::string>(worker.ask({&request, 1}).at(0)) == "1";
    }));
}

TEST(Unconfined, WorkersStillChangeNoFiles) {
    const test::TemporaryFolder folder;
    const std::string file = folder.write("rose", std::string("petals")).native();
    if (::syscall(landlockCreateRulesetCall, nullptr, 0, 1) < 1) GTEST_SKIP() << "this system has no Landlock";
    EXPECT_TRUE(withoutFilters([&file] {
        WorkerProcess worker([&file](const std::string&) {
            const bool isReadable = ::open(file.c_str(), O_RDONLY) >= 0;
            return (isReadable ? "read " : "unread ") + errorOf(::open(file.c_str(), O_WRONLY)) + ' ' +
                   errorOf(::unlink(file.c_str()));
        });
        const std::string request;
        return std::get<std::string>(worker.ask({&request, 1}).at(0)) == "read 13 13";
    }));
}

TEST(Unconfined, WorkersServeNobodyWhoWantsThemConfined) {
    EXPECT_TRUE(withoutFilters([] {
        WorkerProcess worker([](const std::string&) { return std::string("served"); }, {.isConfinedOnly = true});
        const std::string request;
        return !worker.isConfined() && worker.ask({&request, 1}).empty();
    }));
}

}  // namespace
}  // namespace velamo
