#include "upload/worker/LockDown.h"

#include "upload/worker/WorkerLimits.h"
#include "walls/NetworkWalls.h"

namespace tavrine {

LockDownError lockScriptProcess() {
    return lockComputingProcess(limits::scriptMemory, Threads::one);
}

LockDownError lockNetworkProcess(const std::vector<std::string> &readablePlaces) {
    // The script's process is signalled by the descriptor that is held: none can be made.
    return lockNetworkProcess(readablePlaces, {.memory = limits::networkMemory, .calls = {"pidfd_send_signal"}});
}

} // namespace tavrine
