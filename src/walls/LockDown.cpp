#include "walls/LockDown.h"

#include "base/ErrorText.h"
#include "walls/FileRules.h"
#include "walls/SystemCalls.h"

#include <cerrno>
#include <fstream>

#include <sys/prctl.h>
#include <unistd.h>

namespace tavrine {
namespace {

/// A pool of threads has one or two each.
constexpr rlim_t descriptorsOfThreads = 64;

LockDownError failed(const char *step, int error) {
    return std::string(step) + ": " + errorText(error);
}

LockDownError setOption(const char *step, int option, unsigned long value) {
    return prctl(option, value, 0, 0, 0) == 0 ? LockDownError() : failed(step, errno);
}

/// The address space in use.
std::optional<rlim_t> addressSpace() {
    std::ifstream statm("/proc/self/statm");
    rlim_t pages = 0;
    if (!(statm >> pages))
        return std::nullopt;
    return pages * static_cast<rlim_t>(sysconf(_SC_PAGESIZE));
}

LockDownError filterComputingProcess(Threads threads) {
    SystemCalls calls;
    calls.allowComputing();
    if (threads == Threads::several)
        calls.allowThreads();
    return calls.load();
}

} // namespace

LockDownError limit(const char *step, __rlimit_resource resource, rlim_t value) {
    const rlimit both{value, value};
    return setrlimit(resource, &both) == 0 ? LockDownError() : failed(step, errno);
}

LockDownError limitMemory(std::size_t more) {
    const auto used = addressSpace();
    return used ? limit("memory", RLIMIT_AS, *used + more) : LockDownError("memory: /proc cannot be read");
}

LockDownError keepToOurselves() {
    return inOrder(std::array{+[] { return limit("core", RLIMIT_CORE, 0); },
                              +[] { return setOption("dumpable", PR_SET_DUMPABLE, 0); },
                              +[] { return setOption("no_new_privs", PR_SET_NO_NEW_PRIVS, 1); }});
}

LockDownError lockComputingProcess(std::size_t memory, Threads threads) {
    if (LockDownError error = limitMemory(memory))
        return error;
    if (LockDownError error = inOrder(std::array{+[] { return limit("file size", RLIMIT_FSIZE, 0); }, &keepToOurselves,
                                                 +[] { return allowFilesOnlyIn({}); }}))
        return error;
    // Standard input takes the one number there is; what is open above it stays open. Threads make some of their own.
    if (LockDownError error = limit("descriptors", RLIMIT_NOFILE, threads == Threads::one ? 1 : descriptorsOfThreads))
        return error;
    return filterComputingProcess(threads);
}

} // namespace tavrine
