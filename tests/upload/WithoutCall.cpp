// Starts a program in which one system call fails: without-call CALL PROGRAM [ARGUMENT…].

#include <cerrno>
#include <cstdint>
#include <vector>

#include <seccomp.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

namespace {

/// The conditions under which the call fails; none: always.
std::vector<scmp_arg_cmp> conditionsOf(int call) {
    // Only the step that the worker's lock takes with it, for other code of the process needs the rest.
    if (call == SCMP_SYS(prlimit64))
        return {{1, SCMP_CMP_EQ, RLIMIT_AS, 0}, {2, SCMP_CMP_NE, 0, 0}};
    if (call == SCMP_SYS(prctl))
        return {{0, SCMP_CMP_EQ, PR_SET_NO_NEW_PRIVS, 0}};
    return {};
}

} // namespace

int main(int argc, char **argv) {
    const scmp_filter_ctx filter = argc >= 3 ? seccomp_init(SCMP_ACT_ALLOW) : nullptr;
    if (!filter)
        return 2;
    const std::uint32_t denied = SCMP_ACT_ERRNO(EPERM);
    constexpr int landlockCreateRuleset = 444; // libseccomp has no name for it
    int call = seccomp_syscall_resolve_name(argv[1]);
    if (call == __NR_SCMP_ERROR)
        call = landlockCreateRuleset;
    const std::vector<scmp_arg_cmp> conditions = conditionsOf(call);
    int error =
        seccomp_rule_add_array(filter, denied, call, static_cast<unsigned>(conditions.size()), conditions.data());
    if (call == SCMP_SYS(seccomp)) { // and its older form, which libseccomp falls back to
        const scmp_arg_cmp older{0, SCMP_CMP_EQ, PR_SET_SECCOMP, 0};
        error |= seccomp_rule_add_array(filter, denied, SCMP_SYS(prctl), 1, &older);
    }
    if (error != 0 || seccomp_load(filter) != 0)
        return 2;
    execv(argv[2], argv + 2);
    return 3;
}
