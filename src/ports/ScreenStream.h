#pragma once

#include <QList>
#include <QRect>
#include <QRectF>
#include <QSize>
#include <QString>
#include <QtPlugin>

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <variant>
#include <vector>

namespace tavrine {

/// Names a window of any program while it exists.
using WindowNumber = qint64;

/// A moment of the machine's monotonic clock, which picture and sound share.
using MediaTime = std::chrono::nanoseconds;

/// What a stream says of a sample. The numbers are the platform's.
enum class ScreenFrameStatus { complete = 0, idle = 1, blank = 2, suspended = 3, started = 4, stopped = 5 };

/// The pixels of one picture, in memory that another process can map. The stream writes into it again only when the
/// last holder has let it go.
struct ScreenFrame {
    int memory = -1;          ///< a descriptor of the memory, the stream's own; the picture begins at its first byte
    int buffer = 0;           ///< which of the stream's buffers this is: the same number is always the same memory
    QSize size;               ///< pixels
    int bytesPerLine = 0;     ///< a pixel is four bytes: blue, green, red, and one without a meaning
    std::uint64_t number = 0; ///< one more than that of the complete frame before
    /// What differs from the complete frame with the number before, in pixels. Whoever left that one out takes the
    /// whole picture.
    std::vector<QRect> changed;
};

struct ScreenSample {
    std::optional<int> status; ///< a `ScreenFrameStatus`; none where it could not be read
    MediaTime presentationTime{};
    std::shared_ptr<const ScreenFrame> frame; ///< null in a sample without a picture
};

struct ShareableDisplay {
    quint32 displayID = 0;
    bool operator==(const ShareableDisplay &) const = default;
};

struct ShareableWindow {
    WindowNumber windowID = 0;
    bool operator==(const ShareableWindow &) const = default;
};

struct ShareableContent {
    QList<ShareableDisplay> displays;
    QList<ShareableWindow> windows;
    bool operator==(const ShareableContent &) const = default;
};

/// A whole display without the listed windows: where one of them lies, what is below it shows.
struct ScreenContentFilter {
    quint32 displayID = 0;
    QList<WindowNumber> excludingWindows;
    bool operator==(const ScreenContentFilter &) const = default;
};

struct ScreenStreamConfiguration {
    QRectF sourceRect; ///< points, relative to the display, origin at its top left
    int width = 0;     ///< pixels of a frame
    int height = 0;
    bool showsCursor = true;
    std::chrono::nanoseconds minimumFrameInterval{std::chrono::nanoseconds(std::chrono::seconds(1)) / 60};
    int queueDepth = 6; ///< frames that may be held by others at a time; with all of them out, changes wait
    bool operator==(const ScreenStreamConfiguration &) const = default;
};

/// Pictures of a part of a display, as it changes. Made by `ScreenStreams`; lives on the main thread. Dropping it stops
/// it, and then no handler is called any more.
class ScreenStream {
public:
    /// With the reason in words, or none on success.
    using Completion = std::function<void(std::optional<QString> error)>;

    virtual ~ScreenStream() = default;

    /// Begins. `completion` comes once, later, on the main thread; samples may come before it.
    ///
    /// The first sample is the whole picture, at once. After it there is a complete one when something has changed, and
    /// never sooner after the last than the interval. An unchanged screen costs nothing.
    virtual void startCapture(Completion completion) = 0;

    /// Ends. `completion` comes once, later, on the main thread; no sample comes after it. An error when it did not
    /// run.
    virtual void stopCapture(Completion completion) = 0;
};

/// Makes streams and knows what they can show. Main thread.
class ScreenStreams {
public:
    using ContentAnswer = std::function<void(std::variant<QString, ShareableContent> content)>;
    /// Called on a thread of the stream's own, one call at a time. It must not block.
    using SampleHandler = std::function<void(const ScreenSample &sample)>;
    /// The stream ended by itself, `error` says why in words. Main thread, once at most.
    using StopHandler = std::function<void(const QString &error)>;

    struct Handlers {
        SampleHandler didOutputSample;
        StopHandler didStopWithError;
    };

    virtual ~ScreenStreams() = default;

    /// False on a desktop that gives windows no numbers: none is told, and every window is in every picture.
    [[nodiscard]] virtual bool tellsWindows() const { return true; }

    /// The displays and the windows on them, without those of the desktop itself, or an error in words. `answer` comes
    /// once, later, on the main thread.
    virtual void getShareableContent(ContentAnswer answer) = 0;

    /// A stream that does not run yet.
    [[nodiscard]] virtual std::unique_ptr<ScreenStream> makeStream(const ScreenContentFilter &filter,
                                                                   const ScreenStreamConfiguration &configuration,
                                                                   Handlers handlers) = 0;
};

} // namespace tavrine

#define TAVRINE_SCREEN_STREAMS "tavrine.ScreenStreams" // by which its plugins name it
Q_DECLARE_INTERFACE(tavrine::ScreenStreams, TAVRINE_SCREEN_STREAMS)
