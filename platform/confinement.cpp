#include "platform/confinement.h"

#include <fcntl.h>
#include <seccomp.h>
#include <sys/resource.h>

#include <array>
#include <cerrno>
#include <memory>

namespace velamo {
namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool isSanitized = true;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(memory_sanitizer) || __has_feature(thread_sanitizer)
constexpr bool isSanitized = true;
#else
constexpr bool isSanitized = false;
#endif
#else
constexpr bool isSanitized = false;
#endif

/// Calls that a reader never makes.
constexpr std::array refusedCalls{
    // sockets
    SCMP_SYS(socket), SCMP_SYS(socketpair), SCMP_SYS(connect), SCMP_SYS(bind), SCMP_SYS(listen), SCMP_SYS(accept),
    SCMP_SYS(accept4),
    // changes of the file system
    SCMP_SYS(creat), SCMP_SYS(openat2), SCMP_SYS(open_by_handle_at), SCMP_SYS(unlink), SCMP_SYS(unlinkat),
    SCMP_SYS(rename), SCMP_SYS(renameat), SCMP_SYS(renameat2), SCMP_SYS(mkdir), SCMP_SYS(mkdirat), SCMP_SYS(rmdir),
    SCMP_SYS(mknod), SCMP_SYS(mknodat), SCMP_SYS(link), SCMP_SYS(linkat), SCMP_SYS(symlink), SCMP_SYS(symlinkat),
    SCMP_SYS(truncate), SCMP_SYS(ftruncate), SCMP_SYS(chmod), SCMP_SYS(fchmod), SCMP_SYS(fchmodat), SCMP_SYS(chown),
    SCMP_SYS(fchown), SCMP_SYS(lchown), SCMP_SYS(fchownat), SCMP_SYS(utime), SCMP_SYS(utimes), SCMP_SYS(utimensat),
    SCMP_SYS(futimesat), SCMP_SYS(setxattr), SCMP_SYS(lsetxattr), SCMP_SYS(fsetxattr), SCMP_SYS(removexattr),
    SCMP_SYS(lremovexattr), SCMP_SYS(fremovexattr), SCMP_SYS(mount), SCMP_SYS(umount2),
    // other processes, and threads
    SCMP_SYS(fork), SCMP_SYS(vfork), SCMP_SYS(clone), SCMP_SYS(clone3), SCMP_SYS(execve), SCMP_SYS(execveat),
    SCMP_SYS(ptrace), SCMP_SYS(kill), SCMP_SYS(process_vm_readv), SCMP_SYS(process_vm_writev), SCMP_SYS(pidfd_open),
    SCMP_SYS(pidfd_getfd), SCMP_SYS(pidfd_send_signal),
    // ways round all that
    SCMP_SYS(io_uring_setup), SCMP_SYS(bpf), SCMP_SYS(perf_event_open), SCMP_SYS(keyctl)};

struct Filter {
    explicit Filter(scmp_filter_ctx made) : context(made, seccomp_release) {}

    /// A call that the machine does not have needs no refusal.
    template <class... Conditions>
    void refuse(int call, Conditions... conditions) noexcept {
        seccomp_rule_add(context.get(), SCMP_ACT_ERRNO(EPERM), call, sizeof...(conditions), conditions...);
    }
    /// Opening with any of the flags.
    void refuseOpening(int call, unsigned flagsArgument) noexcept {
        const auto has = [flagsArgument](unsigned mask, unsigned flags) {
            return scmp_arg_cmp{flagsArgument, SCMP_CMP_MASKED_EQ, mask, flags};
        };
        refuse(call, has(O_ACCMODE, O_WRONLY));
        refuse(call, has(O_ACCMODE, O_RDWR));
        refuse(call, has(O_CREAT, O_CREAT));
        refuse(call, has(O_TRUNC, O_TRUNC));
    }

    std::unique_ptr<void, decltype(&seccomp_release)> context;
};

void refuseCalls() noexcept {
    Filter filter(seccomp_init(SCMP_ACT_ALLOW));
    if (!filter.context) return;
    for (const int call : refusedCalls) filter.refuse(call);
    filter.refuseOpening(SCMP_SYS(open), 1);
    filter.refuseOpening(SCMP_SYS(openat), 2);
    seccomp_load(filter.context.get());
}

void limit(decltype(RLIMIT_AS) resource, rlim_t most) noexcept {
    const rlimit limit{.rlim_cur = most, .rlim_max = most};
    ::setrlimit(resource, &limit);
}

}  // namespace

bool canLimitMemory() noexcept {
    return !isSanitized;
}

void confineToReading(std::uint64_t memory) noexcept {
    limit(RLIMIT_CORE, 0);
    if (canLimitMemory()) limit(RLIMIT_AS, memory);
    refuseCalls();
}

}  // namespace velamo
