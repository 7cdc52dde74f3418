// Movies by their beginnings: what a crash has left of a recording, and any file that is to be previewed.

#include "FuzzFiles.h"
#include "programs/movies/MovieFile.h"
#include "recording/RecordingLeftovers.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace tavrine::fuzz {
namespace {

void readMovie(Bytes input) {
    static const int file = ::memfd_create("movie", MFD_CLOEXEC);
    require(::ftruncate(file, 0) == 0 &&
            ::pwrite(file, input.data(), input.size(), 0) == static_cast<ssize_t>(input.size()));
    av_log_set_level(AV_LOG_QUIET);
    MovieFile movie(file, [] {});
    if (movie.open())
        return;
    static_cast<void>(movie.hasAudio());
    AVStream *const video = movie.video();
    const auto upright = video ? uprightOf(movie.context(), video) : std::nullopt;
    require(!upright || (upright->width > 0 && upright->height > 0));
}

void readLeftover(Bytes input) {
    const QString path = fileWith(QStringLiteral("tavrine-rec-a.mp4"), input);
    const bool isWorthKeeping = mayHoldPictures(path);
    require(!(input.empty() && isWorthKeeping));
    require(recordingLeftovers(folder()).contains(path) == isWorthKeeping);
}

/// The smallest movies of each container that is read.
std::vector<std::string> movies() {
    std::vector<std::string> seeds;
    for (const QFileInfo &info : QDir(QStringLiteral(TAVRINE_FUZZ_CORPUS)).entryInfoList(QDir::Files)) {
        QFile file(info.filePath());
        if (file.open(QIODevice::ReadOnly))
            seeds.push_back(file.readAll().toStdString());
    }
    require(!seeds.empty());
    return seeds;
}

const Target movieTarget("movie", &readMovie, &movies);
const Target leftoverTarget("leftovers", &readLeftover, [] {
    return std::vector<std::string>{{"\0\0\0\x0C"
                                     "ftypisom\0\0\0\x08moov",
                                     20},
                                    {"\0\0\0\x08"
                                     "free\0\0\0\x10"
                                     "moofabcdefgh",
                                     24},
                                    "\xFF\xFF\xFF\xFFmoov"};
});

} // namespace
} // namespace tavrine::fuzz
