#pragma once

#include "base/Time.h"
#include "ports/ScreenStream.h"

#include <QImage>
#include <QRegion>

#include <utility>

namespace tavrine {

/// A screen that a test paints, with streams that see it. All happens in the turns of the test's time, handlers of
/// samples included. A stream can be told to fail, to be slow, to keep its frames back and to end by itself.
class FakeScreenStreams final : public ScreenStreams {
public:
    static constexpr quint32 displayID = 1; ///< as `FakeScreens` has it

    explicit FakeScreenStreams(Time &time);
    ~FakeScreenStreams() override;

    [[nodiscard]] bool tellsWindows() const override { return m_tellsWindows; }
    void getShareableContent(ContentAnswer answer) override;
    [[nodiscard]] std::unique_ptr<ScreenStream> makeStream(const ScreenContentFilter &filter,
                                                           const ScreenStreamConfiguration &configuration,
                                                           Handlers handlers) override;

    /// What became of one stream; stays when its owner has dropped it.
    struct Stream {
        ScreenContentFilter filter;
        ScreenStreamConfiguration configuration;
        int starts = 0;
        int stops = 0;
        bool isRunning = false;
        bool isDropped = false;
        std::uint64_t frames = 0; ///< that it gave out
    };
    /// All that were made, the oldest first.
    [[nodiscard]] std::vector<const Stream *> streams() const;

    /// One display without windows, unless a test says otherwise.
    void setContent(const ShareableContent &content) { m_content = content; }
    /// As a desktop on which windows have no numbers; its content should have none then.
    void setTellsWindows(bool tells) { m_tellsWindows = tells; }
    void failNextContent(const QString &error) { m_nextContentError = error; }
    void failNextStart(const QString &error) { m_nextStartError = error; }
    void failNextStop(const QString &error) { m_nextStopError = error; }
    /// Answers to questions, starts and stops wait until `answerAll` from now on.
    void beSlow() { m_isSlow = true; }
    void answerAll();
    /// Streams give out samples as soon as they are to start, before that is answered.
    void runBeforeTheyAnswer() { m_runsBeforeItAnswers = true; }

    /// Something else is shown from now on in a part of the display, in points of a scale of 1.
    void paint(const QRect &area, quint32 colour);
    /// No frames from now on, whatever changes.
    void withholdFrames() { m_isWithholding = true; }
    void goOn();
    /// Every stream that runs gives out this sample, now.
    void deliver(const ScreenSample &sample);
    /// A frame as streams make them, of the whole display.
    [[nodiscard]] std::shared_ptr<const ScreenFrame> makeFrame(QSize size, std::uint64_t number) const;
    /// Every stream that runs ends.
    void endStreams(const QString &error);

private:
    struct State;
    class FakeStream;

    void answerLater(std::function<void()> work);
    void change(State &state, const QRect &area);
    void emitLater(const std::shared_ptr<State> &state);
    void emitFrame(const std::shared_ptr<State> &state);

    Time &m_time;
    ShareableContent m_content{.displays = {{displayID}}, .windows = {}};
    QImage m_screen;
    std::optional<QString> m_nextContentError;
    std::optional<QString> m_nextStartError;
    std::optional<QString> m_nextStopError;
    bool m_isSlow = false;
    bool m_runsBeforeItAnswers = false;
    bool m_tellsWindows = true;
    bool m_isWithholding = false;
    std::vector<std::function<void()>> m_waiting;
    std::vector<std::shared_ptr<State>> m_streams;
};

} // namespace tavrine
