#pragma once

#include <QImage>
#include <QList>
#include <QRectF>
#include <QString>
#include <QtPlugin>

#include <stop_token>
#include <variant>

namespace tavrine {

/// One QR code in a picture.
struct DetectedCode {
    QString payload;
    /// Where it stands: fractions of the picture, the origin at the bottom left and y growing upwards.
    QRectF boundingBox;
    bool operator==(const DetectedCode &) const = default;
};

/// Finds QR codes in pictures. Loaded when first used. `detect` may be called on any thread, and several calls run side
/// by side; a plugin in the reader's process is called once. There are two: what finds codes on the screen needs only
/// their words, and shares nothing with what the editor finds them by.
class CodeDetector {
public:
    struct Failure {
        QString reason;
    };
    using Result = std::variant<Failure, QList<DetectedCode>>;

    virtual ~CodeDetector() = default;

    /// As `Recognizer::prepare`.
    virtual void prepare() {}

    /// Every code whose payload could be read, in the detector's order; equal payloads at different places stay apart.
    /// A failure when the picture could not be looked at, which says nothing about the codes in it, and once `stop` is
    /// requested: nobody wants the answer then, and the call returns at once. One that cannot be stopped goes on.
    [[nodiscard]] virtual Result detect(const QImage &image, std::stop_token stop) = 0;
    [[nodiscard]] Result detect(const QImage &image) { return detect(image, std::stop_token()); }

    /// For the end of the program, on any thread: the calls that wait at present and all that come fail, at once.
    /// Nothing for one that cannot be stopped.
    virtual void cancel() {}
};

} // namespace tavrine

#define TAVRINE_CODEDETECTOR "tavrine.CodeDetector" // by which its plugins name it
Q_DECLARE_INTERFACE(tavrine::CodeDetector, TAVRINE_CODEDETECTOR)
