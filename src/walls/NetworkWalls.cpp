#include "walls/NetworkWalls.h"

#include "walls/FileRules.h"
#include "walls/SystemCalls.h"

#include <cstdlib>
#include <memory>

#include <fcntl.h>
#include <linux/netlink.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/socket.h>

namespace tavrine {
namespace {

constexpr rlim_t mostDescriptors = 128;

// Newer than the libseccomp of Debian 12; one number on every machine.
constexpr int openat2Call = 437;
constexpr int fchmodat2Call = 452;

/// Reading, never writing.
void allowFiles(SystemCalls &calls) {
    calls.allow({"stat", "lstat", "newfstatat", "fstatat64", "statx", "statfs", "fstatfs", "access", "faccessat",
                 "faccessat2", "readlink", "readlinkat", "getdents64", "getcwd", "fadvise64"});
    constexpr std::uint64_t writing = O_WRONLY | O_RDWR | O_CREAT | O_TRUNC | O_APPEND;
    calls.allow(SCMP_SYS(open), {argumentHas(1, writing, 0)});
    calls.allow(SCMP_SYS(openat), {argumentHas(2, writing, 0)});
    calls.sayUnknown({openat2Call, fchmodat2Call});
    // Libraries may be loaded at the first request. What is executable is never writable, and never becomes so.
    calls.allow(SCMP_SYS(mmap), {argumentHas(2, PROT_EXEC | PROT_WRITE, PROT_EXEC)});
}

/// The internet, and the kernel's word on which addresses this machine has. No sockets of this machine's programs: by
/// those of the session a process is as good as the person. A pair of connected ones leads nowhere but to itself.
void allowNetwork(SystemCalls &calls) {
    for (const std::uint64_t family : {AF_INET, AF_INET6})
        calls.allow(SCMP_SYS(socket), {argumentIs(0, family)});
    calls.allow(SCMP_SYS(socket), {argumentIs(0, AF_NETLINK), argumentIs(2, NETLINK_ROUTE)});
    constexpr std::uint64_t typeBits = 0xF; // without the flags; one of datagrams could be sent elsewhere
    calls.allow(SCMP_SYS(socketpair), {argumentIs(0, AF_UNIX), argumentHas(1, typeBits, SOCK_STREAM)});
    calls.allow({"connect", "bind", "getsockname", "getpeername", "setsockopt", "getsockopt", "shutdown", "recvmsg",
                 "recvmmsg", "sendmsg", "sendmmsg", "readv", "writev"});
}

/// How a library waits and asks.
void allowTheRest(SystemCalls &calls) {
    calls.allow({"select",
                 "pselect6",
                 "epoll_create1",
                 "epoll_ctl",
                 "epoll_wait",
                 "epoll_pwait",
                 "pipe2",
                 "eventfd2",
                 "time",
                 "times",
                 "uname",
                 "getuid",
                 "geteuid",
                 "getgid",
                 "getegid",
                 "getppid",
                 "sched_getaffinity",
                 "get_robust_list",
                 "mincore",
                 "getcpu"});
    // The others of these two make the kernel send signals.
    for (const std::uint64_t command : {F_GETFD, F_SETFD, F_GETFL, F_SETFL, F_DUPFD, F_DUPFD_CLOEXEC})
        calls.allow(SCMP_SYS(fcntl), {argumentIs(1, command)});
    for (const std::uint64_t request : {FIONBIO, FIONREAD})
        calls.allow(SCMP_SYS(ioctl), {argumentIs(1, request)});
    calls.allow(SCMP_SYS(prctl), {argumentIs(0, PR_SET_NAME)});
    // Our own limits, to be read: the C library makes the stack of a thread by them.
    calls.allow(SCMP_SYS(prlimit64), {argumentIs(0, 0), argumentIs(2, 0)});
    calls.allow({"getrlimit"});
    calls.sayUnknown({SCMP_SYS(io_uring_setup), SCMP_SYS(io_uring_enter), SCMP_SYS(io_uring_register)});
}

LockDownError filterNetworkProcess(std::initializer_list<const char *> more) {
    SystemCalls calls;
    calls.allowComputing();
    calls.allowThreads(); // names are looked up in one
    allowFiles(calls);
    allowNetwork(calls);
    allowTheRest(calls);
    calls.allow(more);
    return calls.load();
}

} // namespace

std::vector<std::string> placesOfNetwork() {
    std::vector<std::string> places{"/etc", "/usr", "/lib", "/lib64", "/var/lib/ca-certificates"};
    // Who looks names up for this machine keeps their file elsewhere, mostly below /run. The rest of that folder is
    // none of our business: the session's sockets are there, and the keys to the screen.
    for (const char *linked : {"/etc/resolv.conf", "/etc/hosts", "/etc/nsswitch.conf"}) {
        if (const std::unique_ptr<char, decltype(&std::free)> path{realpath(linked, nullptr), &std::free})
            places.emplace_back(path.get());
    }
    return places;
}

LockDownError lockNetworkProcess(const std::vector<std::string> &readablePlaces, const NetworkWalls &walls) {
    if (LockDownError error = limitMemory(walls.memory))
        return error;
    if (LockDownError error = keepToOurselves())
        return error;
    if (LockDownError error = allowFilesOnlyIn(readablePlaces))
        return error;
    if (LockDownError error = limit("descriptors", RLIMIT_NOFILE, mostDescriptors))
        return error;
    return filterNetworkProcess(walls.calls);
}

} // namespace tavrine
