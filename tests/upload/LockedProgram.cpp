// Does one forbidden thing natively, from inside the locks, and prints what came of it: locked-program script|network
// THING. Prints "done" or the name of the error.

#include "upload/worker/LockDown.h"
#include "upload/worker/ScriptWorld.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <functional>
#include <map>
#include <string>
#include <thread>

#include <fcntl.h>
#include <netinet/in.h>
#include <sched.h>
#include <sys/mman.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/ptrace.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

/// What the system said, as the caller of the call sees it.
bool isDone(long result) {
    return result >= 0;
}

bool canFork() {
    const pid_t child = fork();
    if (child == 0)
        _exit(0);
    return isDone(child);
}

/// By the oldest of the calls, which the C library has no function for.
bool canClone() {
    const long child = syscall(SYS_clone, SIGCHLD, nullptr, nullptr, nullptr, nullptr);
    if (child == 0)
        _exit(0);
    return isDone(child);
}

bool canExecute() {
    char *const none[] = {nullptr};
    execve("/bin/true", none, none); // prints nothing if it works: the test then sees no word
    return false;
}

bool canMapCode() {
    void *page = mmap(nullptr, 4096, PROT_READ | PROT_WRITE | PROT_EXEC, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    return page != MAP_FAILED;
}

bool canMakeCode() {
    void *page = mmap(nullptr, 4096, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    return page != MAP_FAILED && isDone(mprotect(page, 4096, PROT_READ | PROT_EXEC));
}

bool canMapMemory() {
    void *pages = mmap(nullptr, 1200ul << 20, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    return pages != MAP_FAILED;
}

bool canMapSomeMemory() {
    void *pages = mmap(nullptr, 200ul << 20, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    return pages != MAP_FAILED;
}

bool canMakeThread() {
    pthread_t thread;
    errno = pthread_create(
        &thread, nullptr, [](void *) -> void * { return nullptr; }, nullptr);
    return errno == 0;
}

bool canConnect() {
    const int tcp = socket(AF_INET, SOCK_STREAM, 0);
    return isDone(tcp);
}

const std::map<std::string, std::function<bool()>> &things() {
    static const std::map<std::string, std::function<bool()>> all{
        {"read", [] { return isDone(open("/etc/hostname", O_RDONLY)); }},
        {"read-proc", [] { return isDone(open("/proc/self/environ", O_RDONLY)); }},
        {"read-private", [] { return isDone(open(getenv("PRIVATE_FILE"), O_RDONLY)); }},
        {"write", [] { return isDone(open(getenv("PRIVATE_FILE"), O_WRONLY)); }},
        {"write-both", [] { return isDone(open(getenv("PRIVATE_FILE"), O_RDWR)); }},
        {"create", [] { return isDone(open("/tmp/tavrine-locked", O_CREAT | O_RDONLY, 0600)); }},
        {"create-old", [] { return isDone(syscall(SYS_creat, "/tmp/tavrine-locked", 0600)); }},
        {"openat2", [] { return isDone(syscall(437, AT_FDCWD, "/etc/hostname", nullptr, 0)); }},
        {"remove", [] { return isDone(unlink(getenv("PRIVATE_FILE"))); }},
        {"rename", [] { return isDone(rename(getenv("PRIVATE_FILE"), "/tmp/tavrine-renamed")); }},
        {"change-mode", [] { return isDone(chmod(getenv("PRIVATE_FILE"), 0777)); }},
        {"make-folder", [] { return isDone(mkdir("/tmp/tavrine-folder", 0700)); }},
        {"link", [] { return isDone(symlink("/etc", "/tmp/tavrine-link")); }},
        {"execute", canExecute},
        {"fork", canFork},
        {"clone", canClone},
        {"thread", canMakeThread},
        {"trace", [] { return isDone(ptrace(PTRACE_TRACEME, 0, nullptr, nullptr)); }},
        {"read-parent",
         [] {
             char byte = 0;
             iovec local{&byte, 1};
             iovec remote{reinterpret_cast<void *>(0x400000), 1};
             return isDone(syscall(SYS_process_vm_readv, getppid(), &local, 1, &remote, 1, 0));
         }},
        {"namespace", [] { return isDone(unshare(CLONE_NEWUSER)); }},
        {"mount", [] { return isDone(mount("none", "/mnt", "tmpfs", 0, nullptr)); }},
        {"signal", [] { return isDone(kill(getppid(), 0)); }},
        {"pidfd", [] { return isDone(syscall(SYS_pidfd_open, getppid(), 0)); }},
        {"socket", canConnect},
        {"local-socket", [] { return isDone(socket(AF_UNIX, SOCK_STREAM, 0)); }},
        {"socket-pair",
         [] {
             int pair[2];
             return isDone(socketpair(AF_UNIX, SOCK_STREAM, 0, pair));
         }},
        {"duplicate", [] { return isDone(fcntl(0, F_DUPFD, 0)); }},
        {"map-code", canMapCode},
        {"make-code", canMakeCode},
        {"map-memory", canMapMemory},
        {"map-some-memory", canMapSomeMemory},
        {"memory-file", [] { return isDone(syscall(SYS_memfd_create, "x", 0)); }},
        {"io-uring",
         [] {
             char parameters[120] = {};
             return isDone(syscall(425, 1, parameters));
         }},
        {"user-fault", [] { return isDone(syscall(SYS_userfaultfd, 0)); }},
        {"bpf", [] { return isDone(syscall(SYS_bpf, 0, nullptr, 0)); }},
        {"key-ring", [] { return isDone(syscall(SYS_keyctl, 0, -1, 1)); }},
        {"raise-limit",
         [] {
             const rlimit more{RLIM_INFINITY, RLIM_INFINITY};
             return isDone(setrlimit(RLIMIT_AS, &more));
         }},
        {"undo-privileges",
         [] { return prctl(PR_SET_NO_NEW_PRIVS, 0, 0, 0, 0) == 0 || prctl(PR_GET_NO_NEW_PRIVS, 0, 0, 0, 0) == 0; }},
    };
    return all;
}

} // namespace

int main(int argc, char **argv) {
    if (argc != 3 || !things().contains(argv[2]))
        return 2;
    std::optional<tavrine::ScriptWorld> world;
    const bool isScript = std::strcmp(argv[1], "script") == 0;
    const bool isNetwork = std::strcmp(argv[1], "network") == 0;
    if (isScript)
        world.emplace(tavrine::ScriptWorld::Outside{});
    if (const auto error = isScript    ? tavrine::lockScriptProcess()
                           : isNetwork ? tavrine::lockNetworkProcess({"/etc", "/usr", "/lib"})
                                       : std::nullopt) {
        std::printf("not locked: %s", error->c_str());
        return 1;
    }
    errno = 0;
    const bool done = things().at(argv[2])();
    std::string line = done              ? "done"
                       : errno == EPERM  ? "EPERM"
                       : errno == EACCES ? "EACCES"
                       : errno == ENOSYS ? "ENOSYS"
                                         : std::strerror(errno);
    // The kernel would write to a pipe for us whatever the locks are: both halves of the worker need that.
    return write(STDOUT_FILENO, line.data(), line.size()) > 0 ? (_exit(0), 0) : 1;
}
