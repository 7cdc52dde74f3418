// Does one forbidden thing natively, from inside the locks, and prints what came of it: locked-program
// script|network|player THING. Prints "done" or the name of the error.

#include "programs/player/Walls.h"
#include "upload/worker/HttpLoader.h"
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
#include <sys/prctl.h>
#include <sys/ptrace.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <sys/xattr.h>
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
    return errno == 0 && pthread_join(thread, nullptr) == 0;
}

bool canConnect() {
    const int tcp = socket(AF_INET, SOCK_STREAM, 0);
    return isDone(tcp);
}

bool canReadProcess() {
    char from = 'x';
    char byte = 0;
    const iovec local{&byte, 1};
    const iovec remote{&from, 1};
    return isDone(syscall(SYS_process_vm_readv, getpid(), &local, 1, &remote, 1, 0));
}

/// Of the session's bus and whoever else listens: any socket of this machine.
bool canCallLocalSocket() {
    const int file = socket(AF_UNIX, SOCK_STREAM, 0);
    const sockaddr_un address{.sun_family = AF_UNIX, .sun_path = "/run/nobody"};
    return isDone(static_cast<int>(
        syscall(SYS_connect, file, reinterpret_cast<const sockaddr *>(&address), socklen_t{sizeof address})));
}

bool canMakePair(int type) {
    int pair[2];
    return isDone(socketpair(AF_UNIX, type, 0, pair));
}

/// A limit that any process may lower.
bool canLowerLimit(pid_t process) {
    rlimit now{};
    getrlimit(RLIMIT_CORE, &now);
    const rlimit lower{0, now.rlim_max};
    return isDone(syscall(SYS_prlimit64, process, RLIMIT_CORE, &lower, nullptr));
}

bool canReadLimitOf(pid_t process) {
    rlimit now{};
    return isDone(syscall(SYS_prlimit64, process, RLIMIT_CORE, nullptr, &now));
}

using Things = std::map<std::string, std::function<bool()>>;

const char *privateFile() {
    return getenv("PRIVATE_FILE");
}

const Things files{
    {"read", [] { return isDone(open("/etc/hostname", O_RDONLY)); }},
    {"read-proc", [] { return isDone(open("/proc/self/environ", O_RDONLY)); }},
    {"read-run", [] { return isDone(open("/run", O_RDONLY | O_DIRECTORY)); }},
    {"read-private", [] { return isDone(open(privateFile(), O_RDONLY)); }},
    {"write", [] { return isDone(open(privateFile(), O_WRONLY)); }},
    {"write-both", [] { return isDone(open(privateFile(), O_RDWR)); }},
    {"create", [] { return isDone(open("tavrine-locked", O_CREAT | O_RDONLY, 0600)); }},
    {"create-old", [] { return isDone(syscall(SYS_creat, "tavrine-locked", 0600)); }},
    {"open-newer", [] { return isDone(syscall(437, AT_FDCWD, "/etc/hostname", nullptr, 0)); }},
    {"remove", [] { return isDone(unlink(privateFile())); }},
    {"rename", [] { return isDone(rename(privateFile(), "tavrine-renamed")); }},
    {"truncate", [] { return isDone(truncate(privateFile(), 0)); }},
    {"change-mode", [] { return isDone(chmod(privateFile(), 0777)); }},
    {"change-owner", [] { return isDone(chown(privateFile(), static_cast<uid_t>(-1), static_cast<gid_t>(-1))); }},
    {"change-time", [] { return isDone(utimensat(AT_FDCWD, privateFile(), nullptr, 0)); }},
    {"read-attribute", [] { return isDone(listxattr(privateFile(), nullptr, 0)); }},
    {"remove-attribute", [] { return isDone(removexattr(privateFile(), "user.none")); }},
    {"make-folder", [] { return isDone(mkdir("tavrine-folder", 0700)); }},
    {"link", [] { return isDone(symlink("/etc", "tavrine-link")); }},
    {"memory-file", [] { return isDone(syscall(SYS_memfd_create, "x", 0)); }},
    {"mount", [] { return isDone(syscall(SYS_mount, nullptr, nullptr, 1, 0, nullptr)); }},
};

const Things processes{
    {"execute", canExecute},
    {"fork", canFork},
    {"clone", canClone},
    {"thread", canMakeThread},
    {"trace", [] { return isDone(ptrace(PTRACE_TRACEME, 0, nullptr, nullptr)); }},
    {"read-process", canReadProcess},
    {"namespace", [] { return isDone(unshare(CLONE_FS | 0x1)); }},
    {"signal", [] { return isDone(kill(getppid(), 0)); }},
    {"signal-by-file", [] { return isDone(fcntl(STDOUT_FILENO, F_SETOWN, getpid())); }},
    {"pidfd", [] { return isDone(syscall(SYS_pidfd_open, getppid(), 0)); }},
    {"read-limit", [] { return canReadLimitOf(0); }},
    {"lower-limit", [] { return canLowerLimit(0); }},
    {"read-limit-of-another", [] { return canReadLimitOf(getppid()); }},
    {"lower-limit-of-another", [] { return canLowerLimit(getppid()); }},
    {"undo-privileges",
     [] { return prctl(PR_SET_NO_NEW_PRIVS, 0, 0, 0, 0) == 0 || prctl(PR_GET_NO_NEW_PRIVS, 0, 0, 0, 0) == 0; }},
};

const Things others{
    {"socket", canConnect},
    {"local-socket", [] { return isDone(socket(AF_UNIX, SOCK_STREAM, 0)); }},
    {"local-datagram-socket", [] { return isDone(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0)); }},
    {"call-local-socket", canCallLocalSocket},
    {"socket-pair", [] { return canMakePair(SOCK_STREAM); }},
    {"datagram-pair", [] { return canMakePair(SOCK_DGRAM | SOCK_CLOEXEC); }},
    {"duplicate", [] { return isDone(fcntl(0, F_DUPFD, 0)); }},
    {"map-code", canMapCode},
    {"make-code", canMakeCode},
    {"map-memory", canMapMemory},
    {"map-some-memory", canMapSomeMemory},
    {"measure", [] { return isDone(syscall(SYS_perf_event_open, nullptr, 0, -1, -1, 0)); }},
    {"call-that-nobody-knows", [] { return isDone(syscall(9999)); }},
};

const std::function<bool()> *thingNamed(const std::string &name) {
    for (const Things *things : {&files, &processes, &others}) {
        if (const auto found = things->find(name); found != things->end())
            return &found->second;
    }
    return nullptr;
}

} // namespace

int main(int argc, char **argv) {
    const std::function<bool()> *const thing = argc == 3 ? thingNamed(argv[2]) : nullptr;
    if (!thing)
        return 2;
    std::optional<tavrine::ScriptWorld> world;
    const bool isScript = std::strcmp(argv[1], "script") == 0;
    const bool isNetwork = std::strcmp(argv[1], "network") == 0;
    const bool isPlayer = std::strcmp(argv[1], "player") == 0;
    const bool isMoviePlayer = std::strcmp(argv[1], "movie-player") == 0;
    if (isScript)
        world.emplace(tavrine::ScriptWorld::Outside{});
    if (const auto error = isScript        ? tavrine::lockScriptProcess()
                           : isNetwork     ? tavrine::lockNetworkProcess(tavrine::HttpLoader().places())
                           : isPlayer      ? tavrine::lockSoundPlayer()
                           : isMoviePlayer ? tavrine::lockMoviePlayer()
                                           : std::nullopt) {
        std::printf("not locked: %s", error->c_str());
        return 1;
    }
    errno = 0;
    const bool done = (*thing)();
    std::string line = done              ? "done"
                       : errno == EPERM  ? "EPERM"
                       : errno == EACCES ? "EACCES"
                       : errno == ENOSYS ? "ENOSYS"
                                         : std::strerror(errno);
    // The kernel would write to a pipe for us whatever the locks are: both halves of the worker need that.
    return write(STDOUT_FILENO, line.data(), line.size()) > 0 ? (_exit(0), 0) : 1;
}
