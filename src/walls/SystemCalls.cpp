#include "walls/SystemCalls.h"

#include "base/ErrorText.h"

#include <cerrno>

#include <linux/sched.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <unistd.h>

namespace tavrine {

scmp_arg_cmp argumentIs(unsigned index, std::uint64_t value) {
    return {index, SCMP_CMP_EQ, value, 0};
}
scmp_arg_cmp argumentHas(unsigned index, std::uint64_t bits, std::uint64_t value) {
    return {index, SCMP_CMP_MASKED_EQ, bits, value};
}

SystemCalls::SystemCalls() : m_context(seccomp_init(SCMP_ACT_ERRNO(EPERM))), m_error(m_context ? 0 : ENOMEM) {}

SystemCalls::~SystemCalls() {
    seccomp_release(m_context);
}

void SystemCalls::rule(std::uint32_t action, int call, const std::vector<scmp_arg_cmp> &conditions) {
    if (m_error == 0 && call != __NR_SCMP_ERROR)
        m_error = -seccomp_rule_add_array(m_context, action, call, static_cast<unsigned>(conditions.size()),
                                          conditions.data());
}

void SystemCalls::allow(std::initializer_list<const char *> calls) {
    for (const char *call : calls)
        rule(SCMP_ACT_ALLOW, seccomp_syscall_resolve_name(call));
}

void SystemCalls::allow(int call, std::vector<scmp_arg_cmp> conditions) {
    rule(SCMP_ACT_ALLOW, call, conditions);
}

void SystemCalls::sayUnknown(std::initializer_list<int> calls) {
    for (const int call : calls)
        rule(SCMP_ACT_ERRNO(ENOSYS), call);
}

void SystemCalls::sayMissing(std::initializer_list<const char *> calls) {
    for (const char *call : calls)
        rule(SCMP_ACT_ERRNO(ENOENT), seccomp_syscall_resolve_name(call));
}

void SystemCalls::allowComputing() {
    allow({"read",
           "write",
           "pread64",
           "recvfrom",
           "sendto",
           "poll",
           "ppoll",
           "close",
           "fstat",
           "lseek",
           "brk",
           "munmap",
           "mremap",
           "madvise",
           "futex",
           "sched_yield",
           "nanosleep",
           "clock_gettime",
           "clock_getres",
           "clock_nanosleep",
           "gettimeofday",
           "getrandom",
           "getpid",
           "gettid",
           "getrusage",
           "sysinfo",
           "sigaltstack",
           "rt_sigaction",
           "rt_sigprocmask",
           "rt_sigreturn",
           "exit",
           "exit_group",
           "restart_syscall",
           "sched_getaffinity",
           "membarrier",
           "rseq",
           "set_robust_list"});
    for (const int call : {SCMP_SYS(mmap), SCMP_SYS(mprotect)})
        allow(call, {argumentHas(2, PROT_EXEC, 0)});
    allow(SCMP_SYS(tgkill), {argumentIs(0, static_cast<std::uint64_t>(getpid()))}); // abort()
}

void SystemCalls::allowThreads() {
    constexpr std::uint64_t namespaces =
        CLONE_NEWNS | CLONE_NEWCGROUP | CLONE_NEWUTS | CLONE_NEWIPC | CLONE_NEWUSER | CLONE_NEWPID | CLONE_NEWNET;
    allow(SCMP_SYS(clone), {argumentHas(0, CLONE_THREAD | namespaces, CLONE_THREAD)});
    sayUnknown({SCMP_SYS(clone3)});
    // What a toolkit's thread wakes and names itself with.
    allow({"eventfd2", "pipe2"});
    allow(SCMP_SYS(prctl), {argumentIs(0, PR_SET_NAME)});
    allow({"sched_getparam", "sched_getscheduler", "sched_get_priority_min", "sched_get_priority_max"});
}

std::optional<std::string> SystemCalls::load() {
    if (m_error == 0)
        m_error = -seccomp_load(m_context);
    return m_error == 0 ? std::nullopt : std::optional(std::string("seccomp: ") + errorText(m_error));
}

} // namespace tavrine
