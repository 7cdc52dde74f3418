#include "programs/recorder/Walls.h"

#include "walls/FileRules.h"
#include "walls/SystemCalls.h"

#include <array>

namespace tavrine {
namespace {

/// Pictures of the largest screens, as many as a stream has at a time, the encoder's own, and what waits for the disk.
constexpr std::size_t mostMemory = std::size_t(4) << 30;
constexpr rlim_t mostDescriptors = 16;

LockDownError filterRecorder() {
    SystemCalls calls;
    calls.allowComputing();
    calls.allowThreads();
    calls.allow({"pwrite64", "fdatasync", "ftruncate", "recvmsg", "sendmsg", "shutdown", "alarm", "setitimer"});
    return calls.load();
}

} // namespace

LockDownError lockRecorder() {
    return inOrder(std::array{+[] { return limitMemory(mostMemory); }, &keepToOurselves,
                              +[] { return allowFilesOnlyIn({}); },
                              +[] { return limit("descriptors", RLIMIT_NOFILE, mostDescriptors); }, &filterRecorder});
}

} // namespace tavrine
