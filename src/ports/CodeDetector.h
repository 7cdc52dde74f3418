#pragma once

#include <QImage>
#include <QList>
#include <QRectF>
#include <QString>
#include <QtPlugin>

#include <variant>

namespace tavrine {

/// One QR code in a picture.
struct DetectedCode {
    QString payload;
    /// Where it stands: fractions of the picture, the origin at the bottom left and y growing upwards.
    QRectF boundingBox;
    bool operator==(const DetectedCode &) const = default;
};

/// Finds QR codes in pictures. Loaded when first used. May be called on any thread, one call at a time. There are two:
/// what finds codes on the screen needs only their words, and shares nothing with what the editor finds them by.
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
    /// A failure when the picture could not be looked at, which says nothing about the codes in it.
    [[nodiscard]] virtual Result detect(const QImage &image) = 0;

    /// For the end of the program, on any thread: the call that waits at present and all that come fail, at once.
    /// Nothing for one that cannot be stopped.
    virtual void cancel() {}
};

} // namespace tavrine

#define TAVRINE_CODEDETECTOR "tavrine.CodeDetector" // by which its plugins name it
Q_DECLARE_INTERFACE(tavrine::CodeDetector, TAVRINE_CODEDETECTOR)
