#include "capture/reading/OCRManager.h"

#include "base/ConcurrentQueue.h"
#include "base/Print.h"
#include "base/Time.h"
#include "capture/reading/OCRNotepadState.h"
#include "ports/Recognizer.h"

#include <QPointer>

namespace tavrine {
namespace {

std::optional<QString> textOf(const Recognizer::Result &result) {
    if (const auto *failure = std::get_if<Recognizer::Failure>(&result)) {
        printLine(QStringLiteral("Failed to perform OCR: ") + failure->reason);
        return std::nullopt;
    }
    const QString text = std::get<QStringList>(result).join(QLatin1Char('\n'));
    if (text.trimmed().isEmpty())
        return std::nullopt;
    return text;
}

} // namespace

void OCRManager::recognizeText(const QImage &image, Completion completion, std::stop_token stop) {
    if (image.isNull()) {
        completion(std::nullopt);
        return;
    }
    m_queue.async([recognizer = &m_recognizer, image, completion = std::move(completion), stop = std::move(stop)] {
        if (stop.stop_requested())
            return;
        const Recognizer::Result result = recognizer->recognize(image, stop);
        if (!stop.stop_requested())
            completion(textOf(result));
    });
}

void OCRManager::recognizeForNotepad(const QImage &image, OCRNotepadState &state) {
    std::stop_source unwanted;
    QObject::connect(&state, &QObject::destroyed, [unwanted]() mutable { unwanted.request_stop(); });
    recognizeText(
        image,
        [time = &m_time, weak = QPointer(&state)](const std::optional<QString> &text) {
            time->async([weak, text] {
                if (!weak)
                    return;
                if (text)
                    weak->setText(*text);
                else
                    weak->setErrorMessage(QString::fromUtf8(OCRNotepadState::noTextMessage));
                if (weak) // what follows the state may close the notepad
                    weak->setLoading(false);
            });
        },
        unwanted.get_token());
}

} // namespace tavrine
