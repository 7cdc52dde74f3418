#pragma once

#include "base/Time.h"
#include "ports/MovieWriter.h"

#include <QFile>

#include <atomic>
#include <deque>
#include <memory>
#include <utility>
#include <vector>

namespace tavrine {

/// What a fake writer was given, and how it fares. Stays when its writer is gone. The test steers it and reads it while
/// nothing else drives the writer.
struct FakeMovie {
    QString path;
    std::optional<MovieVideoSettings> video;
    std::optional<MovieAudioSettings> audio;
    std::optional<MediaTime> sessionStart;
    std::vector<MediaTime> pictures; ///< the moments of those that were taken
    std::vector<MediaTime> sounds;
    int refusals = 0; ///< samples that came although it was not ready
    bool isVideoFinished = false;
    bool isAudioFinished = false;
    std::optional<MediaTime> end;         ///< what `finishWriting` was told
    std::atomic<bool> isToFinish = false; ///< `finishWriting` has returned, or as good as that
    std::atomic<MovieWriterStatus> status = MovieWriterStatus::unknown; ///< may be read at any time
    std::optional<QString> error;
    MovieWriterFailure failure = MovieWriterFailure::other;
    MovieWriter::Completion onEndedByItself;

    // The encoder.
    bool isVideoReady = true;
    bool isAudioReady = true;
    bool holdsFrames = false; ///< it has not read what it took
    std::deque<std::shared_ptr<const ScreenFrame>> held;
};

/// Writers whose movies are a word in a file, which is there with the first picture. A finished movie is told with the
/// next turn of `Time`.
class FakeMovieWriters final : public MovieWriters {
public:
    explicit FakeMovieWriters(Time &time) : m_time(time) {}

    [[nodiscard]] std::variant<QString, std::unique_ptr<MovieWriter>> makeWriter(const QString &path) override {
        if (const auto error = std::exchange(m_makeError, {}))
            return *error;
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly | QIODevice::NewOnly))
            return file.errorString();
        movies.push_back(std::make_shared<FakeMovie>());
        movies.back()->path = path;
        return std::make_unique<Writer>(*this, movies.back());
    }

    void failNextMake(const QString &error) { m_makeError = error; }
    /// The next `startWriting` is false, with this error or none.
    void failNextStart(std::optional<QString> error) { m_startErrors.push_back(std::move(error)); }
    void refuseVideo(bool isRefused) { m_refusesVideo = isRefused; }
    void refuseAudio(bool isRefused) { m_refusesAudio = isRefused; }
    /// The next movie that is to be finished fails, with this error or none.
    void failNextFinish(std::optional<QString> error) { m_finishErrors.push_back(std::move(error)); }
    /// From now on movies that are to be finished are not: the encoder hangs, until `finishHung`.
    void hang() { m_isHung = true; }
    /// They are told now.
    void finishHung() {
        m_isHung = false;
        for (const Time::Work &finish : std::exchange(m_hung, {}))
            m_time.async(finish);
    }
    /// The encoder of the newest movie dies, which has begun to write.
    void die(const QString &error, MovieWriterFailure failure = MovieWriterFailure::other) {
        FakeMovie &movie = *movies.back();
        movie.status.wait(MovieWriterStatus::unknown); // what its thread wrote before is seen here
        movie.error = error;
        movie.failure = failure;
        endByItself(movie, MovieWriterStatus::failed);
    }
    /// Another program has told it to end, and it has.
    void endByRequest() { endByItself(*movies.back(), MovieWriterStatus::completed); }

    std::vector<std::shared_ptr<FakeMovie>> movies; ///< the oldest first

private:
    class Writer final : public MovieWriter {
    public:
        Writer(FakeMovieWriters &owner, std::shared_ptr<FakeMovie> movie) : m_owner(owner), m_movie(std::move(movie)) {}
        ~Writer() override {
            m_movie->held.clear();
            m_movie->onEndedByItself = nullptr;
            if (m_movie->status == MovieWriterStatus::unknown)
                QFile::remove(m_movie->path);
        }
        [[nodiscard]] bool addVideoInput(const MovieVideoSettings &settings) override {
            if (m_owner.m_refusesVideo || settings.width < 2 || settings.height < 2 || settings.width % 2 != 0 ||
                settings.height % 2 != 0)
                return false;
            m_movie->video = settings;
            return true;
        }
        [[nodiscard]] bool addAudioInput(const MovieAudioSettings &settings) override {
            if (m_owner.m_refusesAudio)
                return false;
            m_movie->audio = settings;
            return true;
        }
        [[nodiscard]] bool startWriting() override {
            if (!m_owner.m_startErrors.empty()) {
                m_movie->error = m_owner.m_startErrors.front();
                m_owner.m_startErrors.pop_front();
                return false;
            }
            m_movie->error.reset();
            m_movie->status = MovieWriterStatus::writing;
            m_movie->status.notify_all();
            return true;
        }
        void startSessionAtSourceTime(MediaTime time) override { m_movie->sessionStart = time; }
        [[nodiscard]] bool isVideoReadyForMoreMediaData() const override {
            return isWriting() && m_movie->isVideoReady && !m_movie->isVideoFinished;
        }
        [[nodiscard]] bool isAudioReadyForMoreMediaData() const override {
            return isWriting() && m_movie->isAudioReady && !m_movie->isAudioFinished && m_movie->audio;
        }
        bool appendVideo(const ScreenSample &sample) override {
            if (!isVideoReadyForMoreMediaData() || !sample.frame)
                return refuse();
            if (m_movie->pictures.empty())
                write(*m_movie);
            m_movie->pictures.push_back(sample.presentationTime);
            if (m_movie->holdsFrames)
                m_movie->held.push_back(sample.frame);
            return true;
        }
        bool appendAudio(const AudioSample &sample) override {
            if (!isAudioReadyForMoreMediaData())
                return refuse();
            m_movie->sounds.push_back(sample.presentationTime);
            return true;
        }
        void markVideoAsFinished() override { m_movie->isVideoFinished = true; }
        void markAudioAsFinished() override { m_movie->isAudioFinished = true; }
        void cancelWriting() override {
            m_movie->status = MovieWriterStatus::cancelled;
            m_movie->held.clear();
            QFile::remove(m_movie->path);
        }
        void setOnEndedByItself(Completion handler) override { m_movie->onEndedByItself = std::move(handler); }
        void finishWriting(MediaTime endTime, Completion completion) override {
            m_movie->end = endTime;
            m_owner.tell([movie = m_movie, &owner = m_owner, completion = std::move(completion),
                          writer = std::weak_ptr(m_alive)] {
                owner.finish(*movie);
                if (!writer.expired())
                    completion();
            });
            m_movie->isToFinish = true;
        }
        [[nodiscard]] MovieWriterStatus status() const override { return m_movie->status; }
        [[nodiscard]] std::optional<QString> error() const override { return m_movie->error; }
        [[nodiscard]] MovieWriterFailure failure() const override { return m_movie->failure; }
        [[nodiscard]] QString outputPath() const override { return m_movie->path; }

    private:
        [[nodiscard]] bool refuse() {
            ++m_movie->refusals;
            return false;
        }
        [[nodiscard]] bool isWriting() const { return m_movie->status == MovieWriterStatus::writing && !m_movie->end; }

        FakeMovieWriters &m_owner;
        std::shared_ptr<FakeMovie> m_movie;
        std::shared_ptr<int> m_alive = std::make_shared<int>();
    };

    static bool write(const FakeMovie &movie) {
        QFile file(movie.path);
        return file.open(QIODevice::WriteOnly | QIODevice::ExistingOnly) && file.write("movie") > 0;
    }
    static void endByItself(FakeMovie &movie, MovieWriterStatus status) {
        movie.status = status;
        movie.held.clear();
        if (const auto tell = std::exchange(movie.onEndedByItself, nullptr))
            tell();
    }
    void tell(Time::Work finish) {
        if (m_isHung)
            m_hung.push_back(std::move(finish));
        else
            m_time.async(std::move(finish));
    }
    void finish(FakeMovie &movie) {
        movie.held.clear();
        if (movie.status != MovieWriterStatus::unknown && movie.status != MovieWriterStatus::writing)
            return;
        const bool isWritten = movie.status == MovieWriterStatus::writing && m_finishErrors.empty() &&
                               !movie.pictures.empty() && write(movie);
        movie.status = isWritten ? MovieWriterStatus::completed : MovieWriterStatus::failed;
        if (isWritten)
            return;
        movie.error = m_finishErrors.empty() ? QStringLiteral("nothing was written") : m_finishErrors.front();
        if (!m_finishErrors.empty())
            m_finishErrors.pop_front();
    }

    Time &m_time;
    std::optional<QString> m_makeError;
    std::deque<std::optional<QString>> m_startErrors;
    std::deque<std::optional<QString>> m_finishErrors;
    bool m_refusesVideo = false;
    bool m_refusesAudio = false;
    bool m_isHung = false;
    std::vector<Time::Work> m_hung;
};

} // namespace tavrine
