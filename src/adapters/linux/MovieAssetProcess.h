#pragma once

#include "ports/MovieAsset.h"

#include <chrono>
#include <list>
#include <memory>

namespace tavrine {

class MovieJob;

/// Looks into movies with TavrineMovies, a process for each question: what crashes or hangs there costs an answer, and
/// the memory of the decoders comes back with it. Main thread.
class ProcessMovieAsset final : public MovieAsset {
public:
    /// A job that says nothing for so long hangs. Its libraries may come from a slow disk.
    static constexpr std::chrono::seconds longestSilence{10};

    /// `programFolder` is where this program's own file stands.
    explicit ProcessMovieAsset(const QString &programFolder, std::chrono::milliseconds patience = longestSilence);
    ~ProcessMovieAsset() override;

    void firstFrame(const QString &path, int longestEdge, FrameAnswer answer) override;
    void facts(const QString &path, FactsAnswer answer) override;
    void copyVideoTrack(const QString &source, const QString &target, CopyAnswer answer) override;

private:
    friend class MovieJob;

    QString m_program;
    std::chrono::milliseconds m_patience;
    std::list<std::unique_ptr<MovieJob>> m_jobs;
};

} // namespace tavrine
