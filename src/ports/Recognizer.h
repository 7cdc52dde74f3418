#pragma once

#include <QImage>
#include <QString>
#include <QStringList>
#include <QtPlugin>

#include <stop_token>
#include <variant>

namespace tavrine {

/// Reads text in pictures. Loaded when first used. `recognize` may be called on any thread, and several calls run side
/// by side; a plugin in the reader's process is called once.
class Recognizer {
public:
    struct Failure {
        QString reason;
    };
    using Result = std::variant<Failure, QStringList>;

    virtual ~Recognizer() = default;

    /// Loads what the first picture would have to wait for, and all that is read from files: after this a recogniser in
    /// the reader's process has nothing but its memory. May be left out elsewhere.
    virtual void prepare() {}

    /// The lines of text in reading order, as accurately as can be; empty when there is none. A failure when the
    /// picture could not be read at all, for want of a language or of memory, and once `stop` is requested: nobody
    /// wants the answer then, and the call returns at once. One that cannot be stopped goes on.
    [[nodiscard]] virtual Result recognize(const QImage &image, std::stop_token stop) = 0;
    [[nodiscard]] Result recognize(const QImage &image) { return recognize(image, std::stop_token()); }

    /// For the end of the program, on any thread: the calls that wait at present and all that come fail at once.
    /// Nothing for one that cannot be stopped.
    virtual void cancel() {}
};

} // namespace tavrine

#define TAVRINE_RECOGNIZER "tavrine.Recognizer" // by which its plugins name it
Q_DECLARE_INTERFACE(tavrine::Recognizer, TAVRINE_RECOGNIZER)
