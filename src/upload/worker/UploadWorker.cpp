#include "upload/worker/UploadWorker.h"

#include "base/ErrorText.h"
#include "upload/worker/NetworkProcess.h"
#include "upload/worker/ScriptProcess.h"
#include "upload/worker/WorkerRecord.h"
#include "walls/ForeignDescriptors.h"

#include <cerrno>
#include <csignal>
#include <string>

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace tavrine {
namespace {

/// `descriptors` lead nowhere from now on.
bool leadNowhere(std::initializer_list<int> descriptors) {
    const int nowhere = open("/dev/null", O_RDWR | O_CLOEXEC);
    if (nowhere < 0)
        return false;
    bool isDone = true;
    for (const int descriptor : descriptors)
        isDone = isDone && dup2(nowhere, descriptor) == descriptor;
    if (nowhere > STDERR_FILENO)
        close(nowhere);
    return isDone;
}

int cannotStart(const char *step) {
    const std::string text = "The upload worker could not start: " + std::string(step) + ": " + errorText(errno);
    writeRecord(workerRecord({WorkerEnd::runtimeError, text}, {}));
    return 1;
}

[[noreturn]] void beScriptProcess(int socket, pid_t parent) {
    // Whatever becomes of the parent, this process does not outlive it.
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent || !leadNowhere({STDOUT_FILENO, STDERR_FILENO}))
        _exit(1);
    runScriptProcess(socket);
}

} // namespace

int runUploadWorker() {
    std::signal(SIGPIPE, SIG_IGN);
    // What else the starting program left open is none of a script's business.
    closeForeignDescriptors();
    int sockets[2];
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, sockets) != 0)
        return cannotStart("socketpair");
    const pid_t parent = getpid();
    const pid_t child = fork();
    if (child < 0)
        return cannotStart("fork");
    if (child == 0) {
        close(sockets[0]);
        beScriptProcess(sockets[1], parent);
    }
    close(sockets[1]);
    if (!leadNowhere({STDIN_FILENO, STDERR_FILENO}))
        return cannotStart("/dev/null");
    return runNetworkProcess(sockets[0], child);
}

} // namespace tavrine
