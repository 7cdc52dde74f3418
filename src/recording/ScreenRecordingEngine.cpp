#include "recording/ScreenRecordingEngine.h"

#include "base/Print.h"
#include "base/Time.h"
#include "recording/MicrophoneChoice.h"
#include "recording/RecordingGeometry.h"

#include <algorithm>
#include <utility>

namespace tavrine {
namespace {

std::unique_ptr<SerialQueue> makeQueue(const char *name) {
    return std::make_unique<SerialQueue>(QLatin1String("com.tavrine.screenRecorder.") + QLatin1String(name));
}

RecordingError platformError(const QString &reason) {
    return {RecordingError::Code::platform, reason};
}

RecordingError endedBeforeItBegan() {
    return platformError(QStringLiteral("The recording was ended before it began."));
}

/// The numbers that the content still lists: a window may have closed meanwhile.
QList<WindowNumber> listed(const ShareableContent &content, const QList<WindowNumber> &numbers) {
    QList<WindowNumber> found;
    for (const ShareableWindow &window : content.windows)
        if (numbers.contains(window.windowID))
            found.append(window.windowID);
    return found;
}

QString optionalText(const std::optional<QString> &text) {
    return text ? QStringLiteral("Optional(%1)").arg(*text) : QStringLiteral("nil");
}

} // namespace

MediaTime mediaTimeNow() {
    return std::chrono::steady_clock::now().time_since_epoch();
}

ScreenRecordingEngine::ScreenRecordingEngine(Ports ports)
    : m_ports(std::move(ports)), m_writerQueue(makeQueue("writer")), m_videoOutputQueue(makeQueue("videoOutput")),
      m_audioOutputQueue(makeQueue("audioOutput")) {}

/// From the sources down, so that nobody hands anything to what has gone.
ScreenRecordingEngine::~ScreenRecordingEngine() {
    m_isGone = true;
    m_stream.reset();
    m_startingStream.reset();
    m_leavingStream.reset();
    m_micSession.reset();
    m_videoOutputQueue.reset();
    m_audioOutputQueue.reset();
    m_writerQueue.reset();
    if (m_startCompletion)
        m_ports.time.async([completion = std::move(m_startCompletion)] { completion(endedBeforeItBegan()); });
}

// Starting.

void ScreenRecordingEngine::start(const Request &request, StartCompletion completion) {
    m_startCompletion = std::move(completion);
    m_ports.streams.getShareableContent([weak = weak_from_this(), request](const Content &content) {
        if (const auto self = weak.lock())
            self->capture(content, request);
    });
}

void ScreenRecordingEngine::answerStart(const std::optional<RecordingError> &error) {
    if (const auto completion = std::exchange(m_startCompletion, nullptr))
        completion(error);
}

void ScreenRecordingEngine::capture(const Content &content, const Request &request) {
    if (m_isStopped) { // nothing has been begun, and nothing will be
        answerStart(endedBeforeItBegan());
        return;
    }
    if (const auto *refusal = std::get_if<QString>(&content)) {
        answerStart(platformError(*refusal));
        return;
    }
    const auto &shareable = std::get<ShareableContent>(content);
    if (std::ranges::find(shareable.displays, request.displayID, &ShareableDisplay::displayID) ==
        shareable.displays.end()) {
        answerStart(RecordingError{RecordingError::Code::displayUnavailable,
                                   QStringLiteral("Selected display is unavailable for capture.")});
        return;
    }
    const QSize pixels = recordingPixelSize(request.area.size(), request.screen.scale);
    if (const auto error = setUpWriter(request, pixels)) {
        answerStart(error);
        return;
    }
    m_startingStream = m_ports.streams.makeStream(
        {.displayID = request.displayID, .excludingWindows = listed(shareable, request.excludedWindows)},
        {.sourceRect = recordingSourceRect(request.area, request.screen.frame.height()),
         .width = pixels.width(),
         .height = pixels.height(),
         .showsCursor = true,
         .minimumFrameInterval = std::chrono::nanoseconds(std::chrono::seconds(1)) / recordingFrameRate,
         .queueDepth = recordingQueueDepth},
        {.didOutputSample =
             [this](const ScreenSample &sample) {
                 m_videoOutputQueue->async([this, sample] { receivePicture(sample); });
             },
         // What was written up to now becomes a movie when the person ends the recording, as ever.
         .didStopWithError =
             [](const QString &error) {
                 printLine(QStringLiteral("DEBUG: SCStream stopped unexpectedly: ") + error);
             }});
    m_startingStream->startCapture([weak = weak_from_this(), request](const auto &error) {
        const auto self = weak.lock();
        if (!self)
            return;
        if (error)
            self->abandon();
        else
            self->captureRuns(request);
        self->answerStart(error ? std::optional(platformError(*error)) : std::nullopt);
    });
}

std::optional<RecordingError> ScreenRecordingEngine::setUpWriter(const Request &request, QSize pixels) {
    auto made = m_ports.writers.makeWriter(request.outputPath);
    if (const auto *refusal = std::get_if<QString>(&made))
        return platformError(*refusal);
    auto &writer = std::get<std::unique_ptr<MovieWriter>>(made);
    if (!writer->addVideoInput({.width = pixels.width(),
                                .height = pixels.height(),
                                .averageBitRate = recordingBitRate(pixels),
                                .expectedSourceFrameRate = recordingFrameRate})) {
        writer->cancelWriting();
        return RecordingError{RecordingError::Code::videoRefused, QStringLiteral("Could not attach video output.")};
    }
    writer->setOnEndedByItself([weak = weak_from_this(), &time = m_ports.time] {
        time.async([weak] {
            if (const auto self = weak.lock())
                self->writerEnded();
        });
    });
    m_hasVideoInput = true;
    m_hasAudioInput = request.includeAudio && writer->addAudioInput({});
    m_writer = std::move(writer);
    return std::nullopt;
}

void ScreenRecordingEngine::writerEnded() const {
    if (!m_isStopped && m_onWriterEnded)
        m_onWriterEnded();
}

/// Nothing of it stays, the empty file included.
void ScreenRecordingEngine::abandon() {
    m_writerQueue->async([this] {
        m_isFinishing = true;
        cancelWriting();
    });
}

void ScreenRecordingEngine::cancelWriting() {
    if (!std::exchange(m_isCancelled, true))
        m_writer->cancelWriting();
}

void ScreenRecordingEngine::captureRuns(const Request &request) {
    m_stream = std::move(m_startingStream);
    if (request.includeAudio && !m_isStopped) // a recording that has ended meanwhile hears nobody
        setUpMicrophone();
}

void ScreenRecordingEngine::setUpMicrophone() {
    m_silence.begin(m_ports.now());
    m_ports.microphones.devices([weak = weak_from_this()](const QList<MicrophoneDevice> &devices) {
        if (const auto self = weak.lock(); self && !self->m_isStopped)
            self->openMicrophone(devices);
    });
}

void ScreenRecordingEngine::openMicrophone(const QList<MicrophoneDevice> &devices) {
    if (const auto device = chosenMicrophone(devices))
        m_micSession = m_ports.microphones.makeSession(*device, [this](const AudioSample &sample) {
            m_audioOutputQueue->async([this, sample] { receiveSound(sample); });
        });
    if (m_micSession)
        m_micSession->startRunning();
    else
        printLine(QStringLiteral("DEBUG: No usable microphone device found for recording"));
}

// Recording.

void ScreenRecordingEngine::receivePicture(const ScreenSample &sample) {
    if (!sample.frame)
        return;
    if (!sample.status)
        printLine(QStringLiteral("DEBUG: SCStream frame attachment status unparseable; accepting frame anyway"));
    else if (*sample.status != static_cast<int>(ScreenFrameStatus::complete))
        return;
    m_writerQueue->async([this, sample] { writePicture(sample); });
}

void ScreenRecordingEngine::writePicture(const ScreenSample &sample) {
    if (!m_writer || !m_hasVideoInput || m_isFinishing || m_isGone)
        return;
    if (!m_sessionStarted && !startSession(sample))
        return;
    if (m_writer->isVideoReadyForMoreMediaData())
        m_writer->appendVideo(sample);
}

bool ScreenRecordingEngine::startSession(const ScreenSample &first) {
    if (!m_writer->startWriting()) { // the next picture tries again
        printLine(QStringLiteral("DEBUG: AVAssetWriter failed to start: ") +
                  m_writer->error().value_or(QStringLiteral("unknown")));
        return false;
    }
    m_writer->startSessionAtSourceTime(first.presentationTime);
    m_sessionStarted = true;
    printLine(QStringLiteral("DEBUG: AVAssetWriter session started from first SCStream frame"));
    return true;
}

void ScreenRecordingEngine::receiveSound(const AudioSample &sample) {
    m_silence.hear(sample, m_ports.now());
    m_writerQueue->async([this, sample] { writeSound(sample); });
}

/// Sound from before the first picture never enters the file.
void ScreenRecordingEngine::writeSound(const AudioSample &sample) {
    if (m_sessionStarted && !m_isFinishing && !m_isGone && m_hasAudioInput && m_writer->isAudioReadyForMoreMediaData())
        m_writer->appendAudio(sample);
}

// Stopping.

void ScreenRecordingEngine::stop(StopCompletion completion) {
    m_isStopped = true;
    m_silence.end();
    const MediaTime endTime = m_ports.now();
    m_writerQueue->async([this, endTime, completion = std::move(completion)] {
        m_isFinishing = true;
        // Stream and microphone are the main thread's.
        m_ports.time.async([weak = weak_from_this(), endTime, completion] {
            if (const auto self = weak.lock())
                self->endCapture(endTime, completion);
        });
    });
}

void ScreenRecordingEngine::endCapture(MediaTime endTime, const StopCompletion &completion) {
    if (const auto session = std::exchange(m_micSession, nullptr))
        session->stopRunning();
    m_leavingStream = std::exchange(m_stream, nullptr);
    printLine(QStringLiteral("DEBUG: stop() invoked, stopping SCStream capture..."));
    if (!m_leavingStream) {
        captureEnded(std::nullopt, endTime, completion);
        return;
    }
    m_leavingStream->stopCapture([weak = weak_from_this(), endTime, completion](const auto &error) {
        if (const auto self = weak.lock())
            self->captureEnded(error, endTime, completion);
    });
}

void ScreenRecordingEngine::captureEnded(const std::optional<QString> &error, MediaTime endTime,
                                         const StopCompletion &completion) {
    printLine(error ? QStringLiteral("DEBUG: SCStream stopCapture threw: ") + *error
                    : QStringLiteral("DEBUG: SCStream capture stopped cleanly"));
    // Nothing writes any more, so that what the queue has left can be read here.
    if (!m_writer) {
        printLine(QStringLiteral("DEBUG: stopRecording called with no active AVAssetWriter"));
        m_writerQueue->async([completion] { completion(std::nullopt, std::nullopt); });
    } else if (!m_sessionStarted) {
        printLine(QStringLiteral("DEBUG: stopRecording called before any video frame was written; discarding"));
        m_writerQueue->async([this, completion] {
            cancelWriting();
            completion(std::nullopt, std::nullopt);
        });
    } else {
        m_writerQueue->async([this, endTime, completion] { finishWriting(endTime, completion); });
    }
}

void ScreenRecordingEngine::finishWriting(MediaTime endTime, const StopCompletion &completion) {
    if (m_hasVideoInput)
        m_writer->markVideoAsFinished();
    if (m_hasAudioInput)
        m_writer->markAudioAsFinished();
    printLine(QStringLiteral("DEBUG: finishing AVAssetWriter (status before finish: %1)...")
                  .arg(static_cast<int>(m_writer->status())));
    m_writer->finishWriting(endTime, [weak = weak_from_this(), &time = m_ports.time, completion] {
        time.async([weak, completion] { // whoever tells this knows nothing of whether the engine is still there
            if (const auto self = weak.lock())
                self->m_writerQueue->async([self = self.get(), completion] { self->tellEnd(completion); });
        });
    });
}

void ScreenRecordingEngine::tellEnd(const StopCompletion &completion) const {
    const auto error = m_writer->error();
    printLine(QStringLiteral("DEBUG: AVAssetWriter finished with status %1, error: %2")
                  .arg(static_cast<int>(m_writer->status()))
                  .arg(optionalText(error)));
    if (m_writer->status() == MovieWriterStatus::completed)
        completion(m_writer->outputPath(), std::nullopt);
    else
        completion(std::nullopt, error);
}

std::optional<MovieWriterFailure> ScreenRecordingEngine::failure() const {
    if (!m_writer || m_writer->status() != MovieWriterStatus::failed)
        return std::nullopt;
    return m_writer->failure();
}

} // namespace tavrine
