#pragma once

#include "base/SerialQueue.h"
#include "ports/MovieWriter.h"
#include "ports/Screens.h"
#include "recording/RecordingError.h"
#include "recording/SilenceWatch.h"

#include <QRectF>

#include <atomic>

namespace tavrine {

class Time;

/// The machine's monotonic clock now, by which pictures and sound are dated.
[[nodiscard]] MediaTime mediaTimeNow();

/// Turns one rectangle of one display into one movie. An instance serves one recording; whoever made it keeps it until
/// `stop` has answered, and makes and drops it on the main thread. Dropping it ends it at once.
///
///  1. The movie's time line begins with the first picture that arrives, and ends when `stop` is called.
///  2. Only pictures that the screen reports as complete are written, or whose report cannot be read.
///  3. All writing goes through one queue, and so does stopping: nothing is appended after the writer was asked to
///     finish. A sample that finds the writer busy is dropped; nothing waits for it.
///  4. A recording without a picture leaves no file and is no error.
///  5. The microphone is the one source of sound. Whatever is wrong with it, the recording goes on.
class ScreenRecordingEngine final : public std::enable_shared_from_this<ScreenRecordingEngine> {
public:
    /// All outlive the engine.
    struct Ports {
        ScreenStreams &streams;
        MicrophoneSessions &microphones;
        MovieWriters &writers;
        Time &time;
        std::function<MediaTime()> now = mediaTimeNow;
    };
    struct Request {
        quint32 displayID = 0;
        QRectF area; ///< points, relative to the screen, origin at its bottom left
        QList<WindowNumber> excludedWindows;
        Screen screen; ///< of that display
        QString outputPath;
        bool includeAudio = false;
    };
    using StartCompletion = std::function<void(const std::optional<RecordingError> &error)>;
    /// A path: a finished movie. An error alone: it could not be written, `error` may be absent for want of a reason.
    /// Neither: nothing was recorded.
    using StopCompletion =
        std::function<void(const std::optional<QString> &outputPath, const std::optional<QString> &error)>;

    explicit ScreenRecordingEngine(Ports ports);
    ~ScreenRecordingEngine();
    ScreenRecordingEngine(const ScreenRecordingEngine &) = delete;
    ScreenRecordingEngine &operator=(const ScreenRecordingEngine &) = delete;

    /// `completion` comes once, later, on the main thread: when the screen is captured, or with why it is not. That of
    /// an engine which is dropped meanwhile comes too, after it is gone.
    void start(const Request &request, StartCompletion completion);

    /// Called once at most, on the main thread: the writer has ended by itself, and nothing is recorded any more. What
    /// it has written is to be had by `stop`. Before `start`.
    void setOnWriterEnded(std::function<void()> handler) { m_onWriterEnded = std::move(handler); }

    /// Ends the recording. `completion` comes once, later, on a thread that is not the main one. Called once.
    void stop(StopCompletion completion);
    // Main thread, once `stop` has answered.
    /// Of a movie that could not be written to its end; none of any other.
    [[nodiscard]] std::optional<MovieWriterFailure> failure() const;
    /// Of the movie, whatever has come of it; empty where none was begun.
    [[nodiscard]] QString outputPath() const { return m_writer ? m_writer->outputPath() : QString(); }

    /// How long the microphone, which should be heard, has given no sound. None without sound in the recording.
    [[nodiscard]] std::optional<MediaTime> microphoneSilence() const { return m_silence.silence(m_ports.now()); }

private:
    using Content = std::variant<QString, ShareableContent>;

    void capture(const Content &content, const Request &request);
    void answerStart(const std::optional<RecordingError> &error);
    [[nodiscard]] std::optional<RecordingError> setUpWriter(const Request &request, QSize pixels);
    void writerEnded() const;
    void captureRuns(const Request &request);
    void abandon();
    void cancelWriting();
    void setUpMicrophone();
    void openMicrophone(const QList<MicrophoneDevice> &devices);

    void receivePicture(const ScreenSample &sample);
    void writePicture(const ScreenSample &sample);
    [[nodiscard]] bool startSession(const ScreenSample &first);
    void receiveSound(const AudioSample &sample);
    void writeSound(const AudioSample &sample);

    void endCapture(MediaTime endTime, const StopCompletion &completion);
    void captureEnded(const std::optional<QString> &error, MediaTime endTime, const StopCompletion &completion);
    void finishWriting(MediaTime endTime, const StopCompletion &completion);
    void tellEnd(const StopCompletion &completion) const;

    Ports m_ports;
    SilenceWatch m_silence;
    std::function<void()> m_onWriterEnded;
    StartCompletion m_startCompletion; ///< while it is owed

    std::unique_ptr<MovieWriter> m_writer; ///< made on the main thread; the queue's from the first picture on
    bool m_hasVideoInput = false;
    bool m_hasAudioInput = false;
    bool m_sessionStarted = false; ///< the queue's
    bool m_isFinishing = false;    ///< the queue's: nothing is appended any more
    bool m_isCancelled = false;    ///< the queue's
    bool m_isStopped = false;      ///< the main thread's
    std::atomic<bool> m_isGone = false;

    std::unique_ptr<SerialQueue> m_writerQueue;
    std::unique_ptr<SerialQueue> m_videoOutputQueue;
    std::unique_ptr<SerialQueue> m_audioOutputQueue;
    std::unique_ptr<MicrophoneSession> m_micSession;
    std::unique_ptr<ScreenStream> m_startingStream;
    std::unique_ptr<ScreenStream> m_stream; ///< runs
    std::unique_ptr<ScreenStream> m_leavingStream;
};

} // namespace tavrine
