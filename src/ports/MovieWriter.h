#pragma once

#include "ports/MicrophoneSession.h"
#include "ports/ScreenStream.h"

#include <QString>

#include <functional>
#include <memory>
#include <optional>
#include <variant>

namespace tavrine {

/// The numbers are the platform's.
enum class MovieWriterStatus { unknown = 0, writing = 1, completed = 2, failed = 3, cancelled = 4 };

/// Why a writer failed, as far as it says something to a person.
enum class MovieWriterFailure { other, diskIsFull };

/// H.264, High profile, BT.709 of limited range.
struct MovieVideoSettings {
    int width = 0; ///< pixels, even
    int height = 0;
    int averageBitRate = 0; ///< bit/s
    int expectedSourceFrameRate = 60;
    bool operator==(const MovieVideoSettings &) const = default;
};

/// AAC.
struct MovieAudioSettings {
    int channels = 2;
    int sampleRate = 44'100; ///< Hz
    int bitRate = 128'000;   ///< bit/s
    bool operator==(const MovieAudioSettings &) const = default;
};

/// Writes one MPEG-4 movie. Made by `MovieWriters` on the main thread; after the inputs are added it is driven from one
/// queue at a time. No call waits for the encoder.
///
/// What is on the disk while it is written can be played up to its last second, whatever ends this process, the
/// encoder's, or the disk's room. A finished movie has its index before its data.
class MovieWriter {
public:
    /// Called once, on a thread of the writer's, when `status` is final; never once the writer is gone. It must not
    /// destroy the writer.
    using Completion = std::function<void()>;

    virtual ~MovieWriter() = default;

    /// False when it cannot write such a track.
    [[nodiscard]] virtual bool addVideoInput(const MovieVideoSettings &settings) = 0;
    [[nodiscard]] virtual bool addAudioInput(const MovieAudioSettings &settings) = 0;

    /// Opens the file and the encoder; false with `error` when it could not, and then it may be tried again.
    [[nodiscard]] virtual bool startWriting() = 0;
    /// The moment at which the movie's time line begins. Once, after `startWriting`.
    virtual void startSessionAtSourceTime(MediaTime time) = 0;

    /// False while the encoder has as much as it can hold, or when the writer has failed.
    [[nodiscard]] virtual bool isVideoReadyForMoreMediaData() const = 0;
    [[nodiscard]] virtual bool isAudioReadyForMoreMediaData() const = 0;
    /// False when the sample was not taken. The frame is held until the encoder has read it.
    virtual bool appendVideo(const ScreenSample &sample) = 0;
    /// What is missing between samples is silence in the file; sound from before the session's start is cut off.
    virtual bool appendAudio(const AudioSample &sample) = 0;

    virtual void markVideoAsFinished() = 0;
    virtual void markAudioAsFinished() = 0;
    /// Ends and removes the file. Nothing is left.
    virtual void cancelWriting() = 0;
    /// Called as a completion when the movie has ended though nobody asked for it: `status` is `failed`, or `completed`
    /// where the encoder was told to end by another. Set before `startWriting`.
    virtual void setOnEndedByItself(Completion handler) = 0;
    /// Writes out what is left. The last picture is shown up to `endTime`, if that is later.
    virtual void finishWriting(MediaTime endTime, Completion completion) = 0;

    [[nodiscard]] virtual MovieWriterStatus status() const = 0;
    [[nodiscard]] virtual std::optional<QString> error() const = 0; ///< in words
    [[nodiscard]] virtual MovieWriterFailure failure() const = 0;   ///< of one that failed
    [[nodiscard]] virtual QString outputPath() const = 0;
};

class MovieWriters {
public:
    virtual ~MovieWriters() = default;

    /// A writer of a movie at `path`, or why there can be none, in words. The file is opened here, so that a folder
    /// that takes no files is told at once.
    [[nodiscard]] virtual std::variant<QString, std::unique_ptr<MovieWriter>> makeWriter(const QString &path) = 0;
};

} // namespace tavrine
