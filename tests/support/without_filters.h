#pragma once

#include <seccomp.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>

namespace velamo::test {

/// Runs the body in a process in which no filter of calls can be loaded any more, as in some containers and emulators.
template <class Body>
bool withoutFilters(const Body& body) {
    const pid_t child = ::fork();
    if (child == 0) {
        const scmp_filter_ctx filter = seccomp_init(SCMP_ACT_ALLOW);
        seccomp_rule_add(filter, SCMP_ACT_ERRNO(EINVAL), SCMP_SYS(seccomp), 0);
        seccomp_rule_add(filter, SCMP_ACT_ERRNO(EINVAL), SCMP_SYS(prctl), 1,
                         scmp_arg_cmp{0, SCMP_CMP_EQ, PR_SET_SECCOMP, 0});
        if (seccomp_load(filter) != 0) ::_exit(2);
        ::_exit(body() ? 0 : 1);
    }
    int status = 0;
    return ::waitpid(child, &status, 0) == child && status == 0;
}

}  // namespace velamo::test
