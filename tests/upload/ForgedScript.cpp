// The network's half of the worker beside a script's half that has been taken over: forged-script WHAT.

#include "upload/worker/Frames.h"
#include "upload/worker/NetworkProcess.h"

#include <cstring>

#include <sys/socket.h>
#include <unistd.h>

using namespace tavrine;

namespace {

void beTakenOver(int socket, const char *what) {
    std::string frames = FrameWriter(FrameKind::locked).text("").take();
    const auto result = [](std::uint32_t kind, const char *text) {
        return FrameWriter(FrameKind::result).number(kind).text(text).take();
    };
    if (std::strcmp(what, "link") == 0)
        frames += result(0, "https://i/1");
    else if (std::strcmp(what, "empty-link") == 0)
        frames += result(0, "");
    else if (std::strcmp(what, "unknown-end") == 0)
        frames += result(99, "https://i/1");
    sendWhole(socket, frames);
    pause();
}

} // namespace

int main(int argc, char **argv) {
    int sockets[2];
    if (argc != 2 || socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, sockets) != 0)
        return 2;
    const pid_t child = fork();
    if (child == 0) {
        beTakenOver(sockets[1], argv[1]);
        _exit(0);
    }
    close(sockets[1]);
    return runNetworkProcess(sockets[0], child);
}
