// Stands in front of the C library and lets one system call of a program fail, once, as the tests order it.
//
// Of the program as built: loaded by LD_PRELOAD, with the orders in a file that the test has in memory as well
// (`FAULTS_FILE`), so that one start serves many faults. Linked into a test, it takes its orders from `FailingCall`.
// Nothing is asked of the system for a call that is not to fail, but for what kind of file a `write` goes to: a program
// behind walls may load this too.

#include "reliability/FailingCall.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <dlfcn.h>
#include <execinfo.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>

namespace {

using tavrine::testing::FaultKind;
using tavrine::testing::FaultOrders;
using tavrine::testing::FaultRole;

FaultOrders *orders = nullptr;
FaultRole role = FaultRole::worker;
pid_t self = 0;                     // what a fresh process does before it becomes another program is nobody's call
thread_local bool isInside = false; // what is called in here is not counted

template <class Function>
Function next(const char *name) {
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

__attribute__((constructor)) void attach() {
    const char *path = std::getenv("FAULTS_FILE");
    if (!path)
        return;
    const auto file = static_cast<int>(syscall(SYS_openat, AT_FDCWD, path, O_RDWR | O_CLOEXEC));
    if (file < 0)
        return;
    void *memory = reinterpret_cast<void *>(
        syscall(SYS_mmap, nullptr, sizeof(FaultOrders), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0));
    syscall(SYS_close, file);
    if (memory == MAP_FAILED)
        return;
    std::array<char, 4096> program{};
    const auto length = syscall(SYS_readlink, "/proc/self/exe", program.data(), program.size() - 1);
    const char *const name = length > 0 ? std::strrchr(program.data(), '/') : nullptr;
    role = name && std::strcmp(name, "/tavrine") == 0 ? FaultRole::main : FaultRole::worker;
    std::array<void *, 2> frames{};
    backtrace(frames.data(), static_cast<int>(frames.size())); // what it needs is loaded now, and not in the middle
    self = getpid();
    orders = static_cast<FaultOrders *>(memory);
}

bool isMeant() {
    return orders && !isInside && orders->role == role && getpid() == self;
}

void describe(const char *what) {
    std::array<void *, 40> frames{};
    const int count = backtrace(frames.data(), static_cast<int>(frames.size()));
    char *to = orders->story.data();
    const char *const end = to + orders->story.size();
    to += std::snprintf(to, static_cast<size_t>(end - to), "%s\n", what);
    for (int i = 2; i < count && to < end - 300; ++i) {
        Dl_info info{};
        if (dladdr(frames[static_cast<size_t>(i)], &info) == 0 || !info.dli_fname)
            continue;
        const auto offset = static_cast<char *>(frames[static_cast<size_t>(i)]) - static_cast<char *>(info.dli_fbase);
        to += std::snprintf(to, static_cast<size_t>(end - to), "%.200s+0x%tx\n", info.dli_fname, offset);
    }
}

/// True for the one call that is to fail; errno is set then.
bool isToFail(FaultKind kind, const char *what) {
    if (!isMeant())
        return false;
    ++orders->counts[static_cast<size_t>(kind)];
    if (orders->kind != kind || --orders->countdown != 0)
        return false;
    isInside = true;
    describe(what);
    isInside = false;
    orders->firedIn = self;
    errno = orders->error;
    return true;
}

/// Writing fails where a disk can be full. What goes through a pipe or a socket fails as those do, elsewhere.
bool isOnDisk(int file) {
    struct stat status {};
    return ::fstat(file, &status) == 0 && S_ISREG(status.st_mode);
}

bool isWriteToFail(int file) {
    if (!isMeant())
        return false;
    const int before = errno;
    const bool isDisk = isOnDisk(file);
    errno = before;
    std::array<char, 32> what{};
    if (isDisk)
        std::snprintf(what.data(), what.size(), "write to %d", file);
    return isDisk && isToFail(FaultKind::write, what.data());
}

mode_t modeOf(int flags, va_list arguments) {
    return (flags & O_CREAT) != 0 || (flags & O_TMPFILE) == O_TMPFILE ? va_arg(arguments, mode_t) : 0;
}

} // namespace

namespace tavrine::testing {

FailingCall::FailingCall(FaultKind kind, int number, int error) {
    static FaultOrders own{};
    own.countdown = number;
    own.error = error;
    own.role = FaultRole::main;
    own.firedIn = 0;
    own.kind = kind;
    role = FaultRole::main;
    self = getpid();
    orders = &own;
}

FailingCall::~FailingCall() {
    orders = nullptr;
}

bool FailingCall::hasFailed() const {
    return orders->firedIn != 0;
}

} // namespace tavrine::testing

#define TAVRINE_NEXT(name) static const auto passOn = next<decltype(&::name)>(#name)

#define TAVRINE_OPEN(name, ...)                                                                                        \
    va_list list;                                                                                                      \
    va_start(list, flags);                                                                                             \
    const mode_t mode = modeOf(flags, list);                                                                           \
    va_end(list);                                                                                                      \
    TAVRINE_NEXT(name);                                                                                                \
    return isToFail(FaultKind::open, path) ? -1 : passOn(__VA_ARGS__, flags, mode)

#pragma GCC visibility push(default)
extern "C" {

int open(const char *path, int flags, ...) {
    TAVRINE_OPEN(open, path);
}
int open64(const char *path, int flags, ...) {
    TAVRINE_OPEN(open64, path);
}
int openat(int folder, const char *path, int flags, ...) {
    TAVRINE_OPEN(openat, folder, path);
}
int openat64(int folder, const char *path, int flags, ...) {
    TAVRINE_OPEN(openat64, folder, path);
}
FILE *fopen(const char *path, const char *mode) {
    TAVRINE_NEXT(fopen);
    return isToFail(FaultKind::open, path) ? nullptr : passOn(path, mode);
}
FILE *fopen64(const char *path, const char *mode) {
    TAVRINE_NEXT(fopen64);
    return isToFail(FaultKind::open, path) ? nullptr : passOn(path, mode);
}

ssize_t write(int file, const void *from, size_t count) {
    TAVRINE_NEXT(write);
    return isWriteToFail(file) ? -1 : passOn(file, from, count);
}
ssize_t pwrite(int file, const void *from, size_t count, off_t offset) {
    TAVRINE_NEXT(pwrite);
    return isWriteToFail(file) ? -1 : passOn(file, from, count, offset);
}
ssize_t pwrite64(int file, const void *from, size_t count, off64_t offset) {
    TAVRINE_NEXT(pwrite64);
    return isWriteToFail(file) ? -1 : passOn(file, from, count, offset);
}
ssize_t writev(int file, const iovec *from, int count) {
    TAVRINE_NEXT(writev);
    return isWriteToFail(file) ? -1 : passOn(file, from, count);
}
int fallocate(int file, int mode, off_t offset, off_t length) {
    TAVRINE_NEXT(fallocate);
    return isWriteToFail(file) ? -1 : passOn(file, mode, offset, length);
}
int fallocate64(int file, int mode, off64_t offset, off64_t length) {
    TAVRINE_NEXT(fallocate64);
    return isWriteToFail(file) ? -1 : passOn(file, mode, offset, length);
}
int posix_fallocate(int file, off_t offset, off_t length) { // tells its error by what it returns
    TAVRINE_NEXT(posix_fallocate);
    return isWriteToFail(file) ? errno : passOn(file, offset, length);
}
int ftruncate(int file, off_t length) noexcept {
    TAVRINE_NEXT(ftruncate);
    return isWriteToFail(file) ? -1 : passOn(file, length);
}
int ftruncate64(int file, off64_t length) noexcept {
    TAVRINE_NEXT(ftruncate64);
    return isWriteToFail(file) ? -1 : passOn(file, length);
}

int fsync(int file) {
    TAVRINE_NEXT(fsync);
    return isToFail(FaultKind::sync, "fsync") ? -1 : passOn(file);
}
int fdatasync(int file) {
    TAVRINE_NEXT(fdatasync);
    return isToFail(FaultKind::sync, "fdatasync") ? -1 : passOn(file);
}

int rename(const char *from, const char *to) noexcept {
    TAVRINE_NEXT(rename);
    return isToFail(FaultKind::rename, to) ? -1 : passOn(from, to);
}
int renameat(int fromFolder, const char *from, int toFolder, const char *to) noexcept {
    TAVRINE_NEXT(renameat);
    return isToFail(FaultKind::rename, to) ? -1 : passOn(fromFolder, from, toFolder, to);
}
int renameat2(int fromFolder, const char *from, int toFolder, const char *to, unsigned flags) noexcept {
    TAVRINE_NEXT(renameat2);
    return isToFail(FaultKind::rename, to) ? -1 : passOn(fromFolder, from, toFolder, to, flags);
}
int linkat(int fromFolder, const char *from, int toFolder, const char *to, int flags) noexcept {
    TAVRINE_NEXT(linkat);
    return isToFail(FaultKind::rename, to) ? -1 : passOn(fromFolder, from, toFolder, to, flags);
}

void *mmap(void *address, size_t length, int protection, int flags, int file, off_t offset) noexcept {
    TAVRINE_NEXT(mmap);
    return isToFail(FaultKind::map, "mmap") ? MAP_FAILED : passOn(address, length, protection, flags, file, offset);
}
void *mmap64(void *address, size_t length, int protection, int flags, int file, off64_t offset) noexcept {
    TAVRINE_NEXT(mmap64);
    return isToFail(FaultKind::map, "mmap64") ? MAP_FAILED : passOn(address, length, protection, flags, file, offset);
}

int connect(int socket, const sockaddr *address, socklen_t length) {
    TAVRINE_NEXT(connect);
    return isToFail(FaultKind::connect, "connect") ? -1 : passOn(socket, address, length);
}

pid_t fork() noexcept {
    TAVRINE_NEXT(fork);
    return isToFail(FaultKind::spawn, "fork") ? -1 : passOn();
}
int posix_spawn(pid_t *pid, const char *path, const posix_spawn_file_actions_t *actions,
                const posix_spawnattr_t *attributes, char *const arguments[], char *const environment[]) {
    TAVRINE_NEXT(posix_spawn);
    return isToFail(FaultKind::spawn, path) ? errno : passOn(pid, path, actions, attributes, arguments, environment);
}
int posix_spawnp(pid_t *pid, const char *file, const posix_spawn_file_actions_t *actions,
                 const posix_spawnattr_t *attributes, char *const arguments[], char *const environment[]) {
    TAVRINE_NEXT(posix_spawnp);
    return isToFail(FaultKind::spawn, file) ? errno : passOn(pid, file, actions, attributes, arguments, environment);
}

} // extern "C"
#pragma GCC visibility pop
