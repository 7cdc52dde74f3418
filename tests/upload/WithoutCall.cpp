// Starts a program in which one system call fails: without-call CALL PROGRAM.

#include <cerrno>
#include <cstdint>

#include <seccomp.h>
#include <sys/prctl.h>
#include <unistd.h>

int main(int argc, char **argv) {
    const scmp_filter_ctx filter = argc == 3 ? seccomp_init(SCMP_ACT_ALLOW) : nullptr;
    // By number where libseccomp has no name for it.
    const int call = filter ? seccomp_syscall_resolve_name(argv[1]) : 0;
    const std::uint32_t denied = SCMP_ACT_ERRNO(EPERM);
    const scmp_arg_cmp olderForm{0, SCMP_CMP_EQ, PR_SET_SECCOMP, 0}; // of seccomp, which libseccomp falls back to
    constexpr int landlockCreateRuleset = 444;
    if (!filter || seccomp_rule_add(filter, denied, call == __NR_SCMP_ERROR ? landlockCreateRuleset : call, 0) != 0 ||
        (call == SCMP_SYS(seccomp) && seccomp_rule_add_array(filter, denied, SCMP_SYS(prctl), 1, &olderForm) != 0) ||
        seccomp_load(filter) != 0)
        return 2;
    char *const arguments[] = {argv[2], nullptr};
    execv(argv[2], arguments);
    return 3;
}
