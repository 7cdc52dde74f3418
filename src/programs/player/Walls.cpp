#include "programs/player/Walls.h"

#include "base/ErrorText.h"
#include "walls/FileRules.h"
#include "walls/SystemCalls.h"

#include <array>
#include <cerrno>
#include <functional>

#include <fcntl.h>
#include <linux/memfd.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/socket.h>

namespace tavrine {
namespace {

/// Beyond the libraries; the decoders of common formats take a tenth.
constexpr std::size_t mostMemory = std::size_t(1) << 30;
constexpr rlim_t mostDescriptors = 64;

/// The use of sockets that are connected.
void allowServers(SystemCalls &calls) {
    calls.allow({"getsockname", "getpeername", "setsockopt", "getsockopt", "shutdown", "recvmsg", "sendmsg", "writev",
                 "readv"});
    // Sound travels through memory that both map; it has no name.
    calls.allow({"memfd_create", "ftruncate", "fallocate"});
    for (const std::uint64_t command : {F_GETFD, F_SETFD, F_GETFL, F_SETFL, F_DUPFD_CLOEXEC, F_ADD_SEALS, F_GET_SEALS})
        calls.allow(SCMP_SYS(fcntl), {argumentIs(1, command)});
    calls.allow(SCMP_SYS(ioctl), {argumentIs(1, FIONREAD)});
}

/// How libraries wait, and ask about themselves.
void allowTheRest(SystemCalls &calls) {
    calls.allow({"select", "pselect6", "epoll_create1", "epoll_ctl", "epoll_wait", "epoll_pwait", "uname", "getuid",
                 "geteuid", "getgid", "getegid", "getppid", "getcpu", "times", "newfstatat", "fstatfs", "fadvise64",
                 "statx", "umask"});
    calls.allow(SCMP_SYS(prctl), {argumentIs(0, PR_GET_NAME)});
    calls.allow(SCMP_SYS(prlimit64), {argumentIs(0, 0), argumentIs(2, 0)});
    // Files that a library would like are not there.
    calls.sayMissing(
        {"open", "openat", "access", "faccessat", "faccessat2", "stat", "lstat", "readlink", "readlinkat"});
    calls.sayUnknown({SCMP_SYS(io_uring_setup), SCMP_SYS(io_uring_enter), SCMP_SYS(io_uring_register)});
}

LockDownError filter(const std::function<void(SystemCalls &calls)> &allowWay) {
    SystemCalls calls;
    calls.allowComputing();
    calls.allowThreads();
    allowServers(calls);
    allowTheRest(calls);
    allowWay(calls);
    return calls.load();
}

LockDownError filterSoundPlayer() {
    return filter([](SystemCalls &calls) {
        for (const int call : {SCMP_SYS(socket), SCMP_SYS(socketpair)})
            calls.allow(call, {argumentIs(0, AF_UNIX)});
        calls.allow({"connect"});
    });
}

/// Sockets are made, and take the place of those that are open already. They cannot be connected; those of other types
/// would not need to be.
LockDownError filterMoviePlayer() {
    return filter([](SystemCalls &calls) {
        constexpr std::uint64_t typeBits = 0xF;
        for (const int call : {SCMP_SYS(socket), SCMP_SYS(socketpair)})
            calls.allow(call, {argumentIs(0, AF_UNIX), argumentHas(1, typeBits, SOCK_STREAM)});
        calls.allow({"dup3"});
    });
}

LockDownError forbidNewRights() {
    return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 ? LockDownError()
                                                       : std::string("no_new_privs: ") + errorText(errno);
}

LockDownError lock(LockDownError (*filterCalls)()) {
    return inOrder(std::array{+[] { return limitMemory(mostMemory); }, +[] { return limit("core", RLIMIT_CORE, 0); },
                              +[] { return limit("descriptors", RLIMIT_NOFILE, mostDescriptors); }, &forbidNewRights,
                              +[] { return allowFilesOnlyIn({}); }, filterCalls});
}

} // namespace

LockDownError lockSoundPlayer() {
    return lock(&filterSoundPlayer);
}

LockDownError lockMoviePlayer() {
    return lock(&filterMoviePlayer);
}

} // namespace tavrine
