// TavrinePlayer: plays the sound that it was given open, or makes the pictures of the movie, as it is told on standard
// input, until it is killed. Told to read ahead, it ends at once.
#include "adapters/linux/PlayerProtocol.h"
#include "programs/player/PlayedSound.h"
#include "programs/player/ShownMovie.h"

#include <csignal>
#include <cstdlib>
#include <string_view>

#include <sys/prctl.h>

using namespace tavrine;

int main(int argc, char **argv) {
    // With the process that started us, also when it is killed and we hang.
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    std::signal(SIGPIPE, SIG_IGN);
    if (argc == 1)
        playSound();
    if (argc == 2 && std::string_view(argv[1]) == playerProtocol::readAheadArgument)
        return EXIT_SUCCESS;
    if (argc == 2 && std::string_view(argv[1]) == playerProtocol::movieArgument)
        showMovie();
    return EXIT_FAILURE;
}
