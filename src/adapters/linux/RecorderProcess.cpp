#include "adapters/linux/RecorderProcess.h"

#include "adapters/linux/RecorderProtocol.h"
#include "adapters/linux/RecorderSession.h"
#include "base/ErrorText.h"

#include <QFile>

#include <algorithm>
#include <cerrno>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>

namespace tavrine {
namespace {

using recorderProtocol::Start;

QString textOf(int error) {
    return QString::fromLocal8Bit(errorText(error));
}

recorderProtocol::Picture pictureOf(const ScreenSample &sample) {
    const ScreenFrame &frame = *sample.frame;
    recorderProtocol::Picture picture{.time = sample.presentationTime.count(),
                                      .number = frame.number,
                                      .buffer = static_cast<std::uint32_t>(frame.buffer),
                                      .bytesPerLine = frame.bytesPerLine,
                                      .isWhole = frame.changed.size() > recorderProtocol::mostParts};
    if (!picture.isWhole)
        for (const QRect &part : frame.changed)
            picture.changed.push_back({part.x(), part.y(), part.width(), part.height()});
    return picture;
}

class RecorderWriter final : public MovieWriter {
public:
    RecorderWriter(QString program, std::chrono::milliseconds patience, QString path, Descriptor file)
        : m_program(std::move(program)), m_patience(patience), m_path(std::move(path)),
          m_session(std::make_shared<RecorderSession>(QFile::encodeName(m_path).toStdString(), std::move(file))) {}
    ~RecorderWriter() override {
        if (status() == MovieWriterStatus::unknown)
            m_session->removeFile();
        m_session->abandon(m_patience);
    }

    [[nodiscard]] bool addVideoInput(const MovieVideoSettings &settings) override {
        Start start = m_start;
        start.width = settings.width;
        start.height = settings.height;
        start.bitRate = settings.averageBitRate;
        start.frameRate = settings.expectedSourceFrameRate;
        return settings.width > 0 && adopt(start);
    }
    [[nodiscard]] bool addAudioInput(const MovieAudioSettings &settings) override {
        Start start = m_start;
        start.channels = settings.channels;
        start.sampleRate = settings.sampleRate;
        start.soundBitRate = settings.bitRate;
        // Sound comes in one form.
        return settings.channels == microphoneChannels && settings.sampleRate == microphoneSampleRate && adopt(start);
    }

    [[nodiscard]] bool startWriting() override {
        if (status() != MovieWriterStatus::unknown)
            return false;
        if (m_start.width == 0) {
            m_session->setError(QStringLiteral("there is no picture to write"));
            return false;
        }
        const int error = m_session->start(m_program, messageOf(m_start));
        if (error != 0)
            m_session->setError(QStringLiteral("the encoder: ") + textOf(error));
        return error == 0;
    }
    void startSessionAtSourceTime(MediaTime time) override {
        m_session->tell(messageOf(recorderProtocol::Session{.time = time.count()}));
    }

    [[nodiscard]] bool isVideoReadyForMoreMediaData() const override {
        return status() == MovieWriterStatus::writing && !m_isVideoFinished && !m_session->holdsAllFrames();
    }
    [[nodiscard]] bool isAudioReadyForMoreMediaData() const override {
        return takesAudio() && (!m_isSoundJammed || m_session->takesMore());
    }
    bool appendVideo(const ScreenSample &sample) override;
    bool appendAudio(const AudioSample &sample) override;

    void markVideoAsFinished() override { m_isVideoFinished = true; }
    void markAudioAsFinished() override { m_isAudioFinished = true; }
    void cancelWriting() override { m_session->cancel(); }
    void setOnEndedByItself(Completion handler) override { m_session->setOnEndedByItself(std::move(handler)); }
    void finishWriting(MediaTime endTime, Completion completion) override {
        m_isVideoFinished = m_isAudioFinished = true;
        m_session->finish(messageOf(recorderProtocol::Finish{.time = endTime.count()}), m_patience,
                          std::move(completion));
    }

    [[nodiscard]] MovieWriterStatus status() const override { return m_session->status(); }
    [[nodiscard]] std::optional<QString> error() const override { return m_session->error(); }
    [[nodiscard]] MovieWriterFailure failure() const override { return m_session->failure(); }
    [[nodiscard]] QString outputPath() const override { return m_path; }

private:
    /// If the recorder would take it.
    bool adopt(const Start &start) {
        Start whole = start;
        if (whole.width == 0) { // sound was told first
            whole.width = whole.height = recorderProtocol::leastSide;
            whole.bitRate = MovieAudioSettings().bitRate;
            whole.frameRate = 1;
        }
        if (status() != MovieWriterStatus::unknown || !recorderProtocol::startIn(messageOf(whole)))
            return false;
        m_start = start;
        return true;
    }
    [[nodiscard]] bool takesAudio() const {
        return status() == MovieWriterStatus::writing && !m_isAudioFinished && m_start.channels > 0;
    }

    const QString m_program;
    const std::chrono::milliseconds m_patience;
    const QString m_path;
    Start m_start;
    std::shared_ptr<RecorderSession> m_session;
    std::vector<int> m_knownBuffers; ///< whose memory the recorder has
    bool m_isVideoFinished = false;
    bool m_isAudioFinished = false;
    bool m_isSoundJammed = false; ///< the last sound did not fit
};

bool RecorderWriter::appendVideo(const ScreenSample &sample) {
    const auto &frame = sample.frame;
    if (!isVideoReadyForMoreMediaData() || !frame || frame->size != QSize(m_start.width, m_start.height))
        return false;
    const std::string message = messageOf(pictureOf(sample));
    if (!recorderProtocol::pictureIn(message))
        return false;
    const bool isKnown = std::find(m_knownBuffers.begin(), m_knownBuffers.end(), frame->buffer) != m_knownBuffers.end();
    if (!m_session->tell(message, isKnown ? -1 : frame->memory, frame))
        return false;
    if (!isKnown)
        m_knownBuffers.push_back(frame->buffer);
    return true;
}

bool RecorderWriter::appendAudio(const AudioSample &sample) {
    const auto channels = static_cast<std::size_t>(microphoneChannels);
    const auto count = static_cast<std::size_t>(sample.data.size()) / sizeof(float);
    if (!takesAudio() || count % channels != 0 || sample.presentationTime.count() < 0)
        return false;
    const auto *samples = reinterpret_cast<const float *>(sample.data.constData());
    const std::size_t most = recorderProtocol::mostSamples * channels;
    constexpr std::int64_t second = 1'000'000'000;
    for (std::size_t done = 0; done < count; done += most) {
        const auto before = static_cast<std::int64_t>(done / channels);
        const std::int64_t time = sample.presentationTime.count() + before * second / microphoneSampleRate;
        m_isSoundJammed =
            !m_session->tell(recorderProtocol::messageOf(time, samples + done, std::min(most, count - done)));
        if (m_isSoundJammed)
            return false;
    }
    return true;
}

} // namespace

std::variant<QString, std::unique_ptr<MovieWriter>> RecorderProcesses::makeWriter(const QString &path) {
    constexpr mode_t ownerOnly = S_IRUSR | S_IWUSR;
    Descriptor file(::open(QFile::encodeName(path).constData(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, ownerOnly));
    if (!file.isOpen())
        return textOf(errno);
    return std::make_unique<RecorderWriter>(m_program, m_patience, path, std::move(file));
}

} // namespace tavrine
