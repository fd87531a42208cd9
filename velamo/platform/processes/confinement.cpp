#include "velamo/platform/processes/confinement.h"

#include <fcntl.h>
#include <seccomp.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/time.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <memory>

#include "velamo/platform/processes/landlock.h"

namespace velamo {
namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define VELAMO_IS_SANITIZED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(memory_sanitizer) || __has_feature(thread_sanitizer)
#define VELAMO_IS_SANITIZED 1
#endif
#endif

/// What a reader needs of the system. Calls that take a descriptor, a path to be opened or a protection are allowed
/// below, with conditions.
constexpr std::array allowedCalls{
    // reading what is open, and looking at files
    SCMP_SYS(read), SCMP_SYS(readv), SCMP_SYS(pread64), SCMP_SYS(lseek), SCMP_SYS(_llseek), SCMP_SYS(close),
    SCMP_SYS(stat), SCMP_SYS(fstat), SCMP_SYS(lstat), SCMP_SYS(stat64), SCMP_SYS(fstat64), SCMP_SYS(lstat64),
    SCMP_SYS(newfstatat), SCMP_SYS(fstatat64), SCMP_SYS(statx), SCMP_SYS(access), SCMP_SYS(faccessat),
    SCMP_SYS(readlink), SCMP_SYS(readlinkat), SCMP_SYS(getcwd),
    // memory
    SCMP_SYS(brk), SCMP_SYS(munmap), SCMP_SYS(mremap), SCMP_SYS(madvise),
    // locks of the C and C++ libraries
    SCMP_SYS(futex), SCMP_SYS(futex_time64),
    // clocks, where they are not read without a call
    SCMP_SYS(clock_gettime), SCMP_SYS(clock_gettime64), SCMP_SYS(gettimeofday), SCMP_SYS(time),
    // the process itself, and its end
    SCMP_SYS(getpid), SCMP_SYS(gettid), SCMP_SYS(restart_syscall), SCMP_SYS(rt_sigreturn), SCMP_SYS(sigreturn),
    SCMP_SYS(exit), SCMP_SYS(exit_group)};

/// Calls that the C library makes before it tries an older one; it must not take them for forbidden.
constexpr std::array missingCalls{SCMP_SYS(openat2),     SCMP_SYS(faccessat2), SCMP_SYS(clone3),
                                  SCMP_SYS(close_range), SCMP_SYS(preadv2),    SCMP_SYS(rseq)};
/// fchmodat2, which older versions of the library that makes the filter do not know; the same on every machine.
constexpr int fchmodat2Call = 452;

#ifdef VELAMO_IS_SANITIZED
/// What sanitizers do besides: they look at the memory's map, write their reports, tell threads apart, and learn by
/// means of a pipe whether an address may be read.
constexpr std::array sanitizerCalls{SCMP_SYS(write),          SCMP_SYS(pipe),        SCMP_SYS(pipe2),
                                    SCMP_SYS(sched_yield),    SCMP_SYS(sigaltstack), SCMP_SYS(rt_sigaction),
                                    SCMP_SYS(rt_sigprocmask), SCMP_SYS(getuid),      SCMP_SYS(getrlimit),
                                    SCMP_SYS(getrusage),      SCMP_SYS(nanosleep),   SCMP_SYS(clock_nanosleep),
                                    SCMP_SYS(uname)};
#endif

using Condition = scmp_arg_cmp;

Condition argumentIs(unsigned argument, std::uint64_t value) noexcept {
    return {argument, SCMP_CMP_EQ, value, 0};
}
/// Whether the argument has none of the bits.
Condition argumentLacks(unsigned argument, std::uint64_t bits) noexcept {
    return {argument, SCMP_CMP_MASKED_EQ, bits, 0};
}
std::uint64_t valueOf(int number) noexcept {
    return static_cast<std::uint64_t>(number);
}

class Filter {
public:
    Filter() noexcept : context_(seccomp_init(SCMP_ACT_ERRNO(EPERM)), seccomp_release) {
        // Calls as programs for other machines make them, such as those of 32 bits, are refused as a whole.
        if (context_) seccomp_attr_set(context_.get(), SCMP_FLTATR_ACT_BADARCH, SCMP_ACT_ERRNO(EPERM));
    }

    /// A call that the machine does not have needs no rule.
    template <class... Conditions>
    void allow(int call, Conditions... conditions) noexcept {
        if (context_) seccomp_rule_add(context_.get(), SCMP_ACT_ALLOW, call, sizeof...(conditions), conditions...);
    }
    void deny(int call) noexcept {
        if (context_) seccomp_rule_add(context_.get(), SCMP_ACT_ERRNO(ENOSYS), call, 0);
    }
    [[nodiscard]] bool load() noexcept { return context_ && seccomp_load(context_.get()) == 0; }

private:
    std::unique_ptr<void, decltype(&seccomp_release)> context_;
};

void allowOpeningForReading(Filter& filter) noexcept {
    constexpr std::uint64_t changing = O_ACCMODE | O_CREAT | O_TRUNC | (O_TMPFILE & ~O_DIRECTORY);
    filter.allow(SCMP_SYS(open), argumentLacks(1, changing));
    filter.allow(SCMP_SYS(openat), argumentLacks(2, changing));
}

void allowMemory(Filter& filter) noexcept {
    for (const int call : {SCMP_SYS(mmap), SCMP_SYS(mmap2), SCMP_SYS(mprotect)})
        filter.allow(call, argumentLacks(2, PROT_EXEC));
}

/// Messages carry no address and no descriptors.
void allowMessages(Filter& filter, int socket) noexcept {
    for (const int call : {SCMP_SYS(sendto), SCMP_SYS(recvfrom)})
        filter.allow(call, argumentIs(0, valueOf(socket)), argumentIs(4, 0));
    filter.allow(SCMP_SYS(send), argumentIs(0, valueOf(socket)));
    filter.allow(SCMP_SYS(recv), argumentIs(0, valueOf(socket)));
}

void allowWriting(Filter& filter, int file) noexcept {
    if (file >= 0) filter.allow(SCMP_SYS(pwrite64), argumentIs(0, valueOf(file)));
}

/// The alarm that bounds a request's time, and the signal with which abort() ends the process: to itself alone.
void allowOwnEnd(Filter& filter) noexcept {
    filter.allow(SCMP_SYS(setitimer), argumentIs(0, ITIMER_REAL));
    filter.allow(SCMP_SYS(tgkill), argumentIs(0, valueOf(::getpid())));
}

void allowLooks(Filter& filter) noexcept {
    for (const int call : {SCMP_SYS(fcntl), SCMP_SYS(fcntl64)})
        for (const int command : {F_GETFD, F_GETFL}) filter.allow(call, argumentIs(1, valueOf(command)));
}

bool refuseCalls(const Allowance& allowance) noexcept {
    Filter filter;
    for (const int call : allowedCalls) filter.allow(call);
    for (const int call : missingCalls) filter.deny(call);
    filter.deny(fchmodat2Call);
    allowOpeningForReading(filter);
    allowMemory(filter);
    allowMessages(filter, allowance.socket);
    allowWriting(filter, allowance.attachment);
    allowOwnEnd(filter);
    allowLooks(filter);
#ifdef VELAMO_IS_SANITIZED
    for (const int call : sanitizerCalls) filter.allow(call);
    filter.allow(SCMP_SYS(prlimit64), argumentIs(2, 0));
#endif
    return filter.load();
}

/// A lower one that nobody may raise stays.
bool limit(decltype(RLIMIT_AS) resource, rlim_t most) noexcept {
    rlimit limit{};
    if (::getrlimit(resource, &limit) != 0) return false;
    limit.rlim_cur = limit.rlim_max = std::min(limit.rlim_max, most);
    return ::setrlimit(resource, &limit) == 0;
}

bool limitResources(std::uint64_t memory) noexcept {
    constexpr rlim_t mostOpenFiles = 32;
    bool isLimited = limit(RLIMIT_CORE, 0);
    isLimited = limit(RLIMIT_NPROC, 0) && isLimited;
    isLimited = limit(RLIMIT_NOFILE, mostOpenFiles) && isLimited;
    isLimited = limit(RLIMIT_FSIZE, memory) && isLimited;
    return (!canLimitMemory() || limit(RLIMIT_AS, memory)) && isLimited;
}

}  // namespace

bool canLimitMemory() noexcept {
#ifdef VELAMO_IS_SANITIZED
    return false;
#else
    return true;
#endif
}

Confinement confineToReading(const Allowance& allowance) noexcept {
    ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
    ::prctl(PR_SET_DUMPABLE, 0, 0, 0, 0);
    const bool isReadOnly = restrictToReading();
    const bool isLimited = limitResources(allowance.memory);
    return {.areCallsRefused = refuseCalls(allowance), .isReadOnly = isReadOnly, .isLimited = isLimited};
}

}  // namespace velamo
