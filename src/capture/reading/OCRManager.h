#pragma once

#include <QImage>
#include <QString>

#include <functional>
#include <optional>
#include <stop_token>

namespace tavrine {

class OCRNotepadState;
class Recognizer;
class ConcurrentQueue;
class Time;

/// Turns pictures into text. Has no state of its own; lives on the main thread, as long as the process. All it is given
/// outlives it.
class OCRManager {
public:
    /// None for a picture that cannot be read, and for one without text.
    using Completion = std::function<void(const std::optional<QString> &text)>;

    OCRManager(Recognizer &recognizer, ConcurrentQueue &recognitionQueue, Time &time)
        : m_recognizer(recognizer), m_queue(recognitionQueue), m_time(time) {}

    /// Calls `completion` on a thread of the recognition queue; within the call when the image has no pixels. Not at
    /// all when `stop` is requested before: the next picture's turn comes at once then.
    void recognizeText(const QImage &image, Completion completion, std::stop_token stop = {});

    /// The same, told to `state` on the main queue. The reading ends with the state.
    void recognizeForNotepad(const QImage &image, OCRNotepadState &state);

private:
    Recognizer &m_recognizer;
    ConcurrentQueue &m_queue;
    Time &m_time;
};

} // namespace tavrine
