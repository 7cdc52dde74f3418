#pragma once

#include <string_view>

#include <sys/types.h>

namespace tavrine {

/// The half of the worker that was started: locks itself in, lets the script half go on, does HTTP for it, watches its
/// memory, and writes the record once there is a result or the script half has ended without one. Returns then.
int runNetworkProcess(int socket, pid_t scriptProcess);

/// Writes to standard output until all is written or nobody reads any more.
void writeRecord(std::string_view record);

} // namespace tavrine
