// TavrineMovies JOB: looks into the movie that it was given open, writes what was asked for, says so and ends.
#include "adapters/linux/MovieProtocol.h"
#include "programs/movies/FirstFrame.h"
#include "programs/movies/MovieFile.h"
#include "programs/movies/TrackCopy.h"
#include "programs/movies/Walls.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>

#include <sys/prctl.h>
#include <sys/stat.h>
#include <unistd.h>

extern "C" {
#include <libavutil/log.h>
}

using namespace tavrine;
using movieProtocol::Job;
using movieProtocol::Report;

namespace {

/// A copy is hardly larger than what it was made of, for it has less in it.
constexpr std::uint64_t moreThanSource = 16 << 20;
constexpr std::uint64_t bytesOfPixel = 4;
/// Of computing. A copy of hours takes seconds of it.
constexpr std::uint64_t mostSeconds = 20;
constexpr std::uint64_t mostSecondsOfCopy = 300;

/// Straight to the descriptor, whole or not at all: lines are shorter than a pipe takes at once.
void say(const Report &report) {
    const std::string line = movieProtocol::lineOf(report);
    static_cast<void>(::write(STDOUT_FILENO, line.data(), line.size()));
}

/// A sign of life each second, as long as the file is worked on.
void sign() {
    using Clock = std::chrono::steady_clock;
    static Clock::time_point last = Clock::now();
    const auto now = Clock::now();
    if (now - last < std::chrono::seconds(movieProtocol::secondsBetweenSigns))
        return;
    last = now;
    say({.kind = Report::Kind::alive});
}

std::uint64_t sizeOf(int file) {
    struct stat status {};
    return ::fstat(file, &status) == 0 ? static_cast<std::uint64_t>(status.st_size) : 0;
}

Report factsOf(const MovieFile &movie) {
    Report report{.kind = Report::Kind::facts, .hasAudio = movie.hasAudio()};
    AVStream *const video = movie.video();
    if (const auto upright = video ? uprightOf(movie.context(), video) : std::nullopt) {
        report.width = upright->isCrossed() ? upright->height : upright->width;
        report.height = upright->isCrossed() ? upright->width : upright->height;
    }
    const std::int64_t duration = movie.context()->duration;
    report.milliseconds = std::max<std::int64_t>(0, duration / (AV_TIME_BASE / 1000));
    return report;
}

Report copyOf(MovieFile &movie) {
    if (const auto words = copyVideoTrack(movie, movieProtocol::resultFile, sign))
        return {.kind = Report::Kind::failed, .words = *words};
    return {.kind = Report::Kind::copied};
}

Report answer(Job job, int longestEdge) {
    const std::uint64_t mostOutput = job == Job::copy    ? sizeOf(movieProtocol::movieFile) + moreThanSource
                                     : job == Job::frame ? bytesOfPixel * static_cast<std::uint64_t>(longestEdge) *
                                                               static_cast<std::uint64_t>(longestEdge)
                                                         : 0;
    if (const LockDownError error = lockMovieReader(mostOutput, job == Job::copy ? mostSecondsOfCopy : mostSeconds))
        return {.kind = Report::Kind::failed, .words = "the reader is not locked in: " + *error};
    // A question that takes long has no answer; only a copy is told to go on.
    MovieFile movie(
        movieProtocol::movieFile, job == Job::copy ? &sign : +[] {});
    if (const auto words = movie.open())
        return {.kind = Report::Kind::failed, .words = *words};
    switch (job) {
    case Job::facts:
        return factsOf(movie);
    case Job::frame:
        return writeFirstFrame(movie, longestEdge, movieProtocol::resultFile);
    case Job::copy:
        break;
    }
    return copyOf(movie);
}

} // namespace

int main(int argc, char **argv) {
    // With the process that started us, also when it is killed and we hang.
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN); // a failure to write is one
    av_log_set_level(AV_LOG_QUIET);
    const auto job = argc >= 2 ? movieProtocol::jobIn(argv[1]) : std::nullopt;
    const auto edge = argc == 3 ? movieProtocol::longestEdgeIn(argv[2]) : std::optional(0);
    if (!job || !edge || (*job == Job::frame) != (argc == 3))
        return EXIT_FAILURE;
    say(answer(*job, *edge));
    // Tearing the libraries down would only take time.
    std::_Exit(EXIT_SUCCESS);
}
