// screencapture -i [-x] [-f PICTURE] FILE: a person chooses a part of the screen, and it is written to FILE as a PNG.
// screencapture -p: a person chooses a pixel, and its colour is written to the standard output.
#include "programs/screencapture/Capture.h"
#include "programs/screencapture/ColourPick.h"

#include <csignal>
#include <cstdio>

#include <sys/signalfd.h>
#include <unistd.h>

int main(int argc, char **argv) {
    // From here on these come through the descriptor, so that what was begun is taken back.
    sigset_t ends;
    sigemptyset(&ends);
    for (const int signal : {SIGTERM, SIGINT, SIGHUP})
        sigaddset(&ends, signal);
    ::sigprocmask(SIG_BLOCK, &ends, nullptr);
    const int stopDescriptor = ::signalfd(-1, &ends, SFD_CLOEXEC);

    const auto line = tavrine::CommandLine::parse({argv + 1, argv + argc});
    if (!line) {
        std::fprintf(stderr, "%s\n", tavrine::CommandLine::usage.data());
        return 1;
    }
    if (line->isColour)
        return tavrine::pickColour(stopDescriptor);
    return tavrine::Capture(*line, stopDescriptor).run();
}
