#pragma once

#include <QByteArray>

/// The forms in which programs list one text or one picture side by side. The best one holds what all of them hold, so
/// the others are not fetched: to encode a large picture a dozen times keeps its program busy for seconds, and what it
/// gave would lie here for as long as it is kept. Functions for any thread.
namespace tavrine::selection {

/// A form that its owner listed and that is made here, from the one that was fetched, when somebody asks for it.
struct Sibling {
    QByteArray target;
    QByteArray source; ///< a text in UTF-8, or a picture without loss
};

[[nodiscard]] bool isTextForm(const QByteArray &target);
/// Forms of a picture that are written here. What holds more than a picture, as layers or lines, is none.
[[nodiscard]] bool isPictureForm(const QByteArray &target);

/// The type under which a form is answered.
[[nodiscard]] QByteArray typeOfForm(const QByteArray &target);

/// The source in the form `target`; empty when it cannot be made. Decodes and encodes a picture on the calling thread.
/// Forms that do not compress are not made of large pictures: with the decoded one they would take too much memory.
[[nodiscard]] QByteArray makeForm(const QByteArray &target, const QByteArray &source, qint64 maxPixels);

} // namespace tavrine::selection
