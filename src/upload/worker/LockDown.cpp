#include "upload/worker/LockDown.h"

#include "upload/worker/FileRules.h"
#include "upload/worker/WorkerLimits.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <fstream>

#include <fcntl.h>
#include <linux/sched.h>
#include <seccomp.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

namespace tavrine {
namespace {

LockDownError failed(const char *step, int error) {
    return std::string(step) + ": " + std::strerror(error);
}

LockDownError limit(const char *step, __rlimit_resource resource, rlim_t value) {
    const rlimit both{value, value};
    return setrlimit(resource, &both) == 0 ? LockDownError() : failed(step, errno);
}

/// The address space in use: the engine reserves some gigabytes of it before there is a script.
std::optional<rlim_t> addressSpace() {
    std::ifstream statm("/proc/self/statm");
    rlim_t pages = 0;
    if (!(statm >> pages))
        return std::nullopt;
    return pages * static_cast<rlim_t>(sysconf(_SC_PAGESIZE));
}

LockDownError limitMemory(std::size_t more) {
    const auto used = addressSpace();
    return used ? limit("memory", RLIMIT_AS, *used + more) : LockDownError("memory: /proc cannot be read");
}

/// Rules for one filter; the first failure is kept.
class Filter {
public:
    explicit Filter(std::uint32_t otherwise) : m_context(seccomp_init(otherwise)) {
        if (!m_context)
            m_error = ENOMEM;
    }
    ~Filter() { seccomp_release(m_context); }
    Filter(const Filter &) = delete;
    Filter &operator=(const Filter &) = delete;

    void rule(std::uint32_t action, int call, std::vector<scmp_arg_cmp> conditions = {}) {
        if (m_error == 0 && call != __NR_SCMP_ERROR)
            m_error = -seccomp_rule_add_array(m_context, action, call, static_cast<unsigned>(conditions.size()),
                                              conditions.data());
    }
    /// A call that a kernel or libseccomp does not know cannot be made, so it needs no rule.
    void rules(std::uint32_t action, std::initializer_list<const char *> calls) {
        for (const char *call : calls)
            rule(action, seccomp_syscall_resolve_name(call));
    }
    [[nodiscard]] LockDownError load() {
        if (m_error == 0)
            m_error = -seccomp_load(m_context);
        return m_error == 0 ? LockDownError() : failed("seccomp", m_error);
    }

private:
    scmp_filter_ctx m_context;
    int m_error = 0;
};

scmp_arg_cmp argumentHas(unsigned index, std::uint64_t bits, std::uint64_t value) {
    return {index, SCMP_CMP_MASKED_EQ, bits, value};
}
scmp_arg_cmp argumentIs(unsigned index, std::uint64_t value) {
    return {index, SCMP_CMP_EQ, value, 0};
}

const std::uint32_t denied = SCMP_ACT_ERRNO(EPERM);
/// Newer than the libseccomp of Debian 12; one number on every machine.
constexpr int fchmodat2Call = 452;
/// For newer forms of a call whose arguments a filter cannot see: the C library then uses the older one.
const std::uint32_t unknown = SCMP_ACT_ERRNO(ENOSYS);

LockDownError filterScriptProcess() {
    Filter filter(denied);
    filter.rules(SCMP_ACT_ALLOW, {"read",
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
        filter.rule(SCMP_ACT_ALLOW, call, {argumentHas(2, PROT_EXEC, 0)});
    filter.rule(SCMP_ACT_ALLOW, SCMP_SYS(tgkill), {argumentIs(0, static_cast<std::uint64_t>(getpid()))}); // abort()
    return filter.load();
}

// Programs, files other than to read, other processes, what the kernel offers to administrators, and queues.
constexpr std::initializer_list<const char *> deniedToNetwork = {"execve",
                                                                 "execveat",
                                                                 "fork",
                                                                 "vfork",
                                                                 "ptrace",
                                                                 "process_vm_readv",
                                                                 "process_vm_writev",
                                                                 "process_madvise",
                                                                 "pidfd_getfd",
                                                                 "pidfd_open",
                                                                 "kcmp",
                                                                 "unshare",
                                                                 "setns",
                                                                 "mount",
                                                                 "umount2",
                                                                 "pivot_root",
                                                                 "chroot",
                                                                 "fsopen",
                                                                 "fsmount",
                                                                 "fspick",
                                                                 "move_mount",
                                                                 "open_tree",
                                                                 "mount_setattr",
                                                                 "creat",
                                                                 "mkdir",
                                                                 "mkdirat",
                                                                 "mknod",
                                                                 "mknodat",
                                                                 "rename",
                                                                 "renameat",
                                                                 "renameat2",
                                                                 "unlink",
                                                                 "unlinkat",
                                                                 "rmdir",
                                                                 "link",
                                                                 "linkat",
                                                                 "symlink",
                                                                 "symlinkat",
                                                                 "truncate",
                                                                 "chmod",
                                                                 "fchmod",
                                                                 "fchmodat",
                                                                 "chown",
                                                                 "fchown",
                                                                 "lchown",
                                                                 "fchownat",
                                                                 "utime",
                                                                 "utimes",
                                                                 "utimensat",
                                                                 "futimesat",
                                                                 "setxattr",
                                                                 "lsetxattr",
                                                                 "fsetxattr",
                                                                 "removexattr",
                                                                 "lremovexattr",
                                                                 "fremovexattr",
                                                                 "memfd_create",
                                                                 "memfd_secret",
                                                                 "bpf",
                                                                 "perf_event_open",
                                                                 "userfaultfd",
                                                                 "keyctl",
                                                                 "add_key",
                                                                 "request_key",
                                                                 "init_module",
                                                                 "finit_module",
                                                                 "delete_module",
                                                                 "kexec_load",
                                                                 "kexec_file_load",
                                                                 "reboot",
                                                                 "swapon",
                                                                 "swapoff",
                                                                 "setuid",
                                                                 "setgid",
                                                                 "setreuid",
                                                                 "setregid",
                                                                 "setresuid",
                                                                 "setresgid",
                                                                 "setgroups",
                                                                 "capset",
                                                                 "kill",
                                                                 "tkill",
                                                                 "rt_sigqueueinfo",
                                                                 "rt_tgsigqueueinfo",
                                                                 "open_by_handle_at",
                                                                 "name_to_handle_at",
                                                                 "acct",
                                                                 "quotactl",
                                                                 "settimeofday",
                                                                 "clock_settime",
                                                                 "sethostname",
                                                                 "setdomainname",
                                                                 "iopl",
                                                                 "ioperm",
                                                                 "shmget",
                                                                 "shmat",
                                                                 "msgget",
                                                                 "mq_open"};

LockDownError filterNetworkProcess() {
    Filter filter(SCMP_ACT_ALLOW);
    filter.rules(denied, deniedToNetwork);
    filter.rules(unknown, {"clone3", "openat2", "io_uring_setup", "io_uring_enter", "io_uring_register"});
    filter.rule(unknown, fchmodat2Call);
    // A thread may be made (names are looked up in one), a process may not.
    filter.rule(denied, SCMP_SYS(clone), {argumentHas(0, CLONE_THREAD, 0)});
    filter.rule(denied, SCMP_SYS(tgkill), {{0, SCMP_CMP_NE, static_cast<std::uint64_t>(getpid()), 0}});
    for (const std::uint64_t flag : {O_WRONLY, O_RDWR, O_CREAT, O_TRUNC, O_APPEND}) {
        filter.rule(denied, SCMP_SYS(open), {argumentHas(1, flag, flag)});
        filter.rule(denied, SCMP_SYS(openat), {argumentHas(2, flag, flag)});
    }
    return filter.load();
}

/// Steps in order until one fails.
template <std::size_t count>
LockDownError inOrder(const std::array<LockDownError (*)(), count> &steps) {
    for (const auto step : steps) {
        if (LockDownError error = step())
            return error;
    }
    return std::nullopt;
}

LockDownError noNewPrivileges() {
    return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 ? LockDownError() : failed("no_new_privs", errno);
}
LockDownError notDumpable() {
    return prctl(PR_SET_DUMPABLE, 0, 0, 0, 0) == 0 ? LockDownError() : failed("dumpable", errno);
}
LockDownError noCore() {
    return limit("core", RLIMIT_CORE, 0);
}
} // namespace

LockDownError lockScriptProcess() {
    return inOrder(std::array{
        +[] { return limitMemory(limits::scriptMemory); }, +[] { return limit("file size", RLIMIT_FSIZE, 0); }, &noCore,
        &notDumpable, &noNewPrivileges, +[] { return allowFilesOnlyIn({}); },
        // Standard input takes the one number there is; what the engine has open above it stays open.
        +[] { return limit("descriptors", RLIMIT_NOFILE, 1); }, &filterScriptProcess});
}

LockDownError lockNetworkProcess(const std::vector<std::string> &readableFolders) {
    if (LockDownError error = inOrder(
            std::array{+[] { return limitMemory(limits::networkMemory); }, &noCore, &notDumpable, &noNewPrivileges}))
        return error;
    if (LockDownError error = allowFilesOnlyIn(readableFolders))
        return error;
    if (LockDownError error = limit("descriptors", RLIMIT_NOFILE, 128))
        return error;
    return filterNetworkProcess();
}

} // namespace tavrine
