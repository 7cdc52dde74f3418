#pragma once

#include "ports/Dragging.h"

#include <QByteArray>
#include <QList>

#include <functional>
#include <optional>

class QMimeData;

namespace tavrine {

/// One form of what was dropped, as it came.
struct DroppedForm {
    QByteArray type; ///< which the answer named; empty where none did
    QByteArray bytes;
};

/// What a drop may cost. Above what a person drags.
struct DropLimits {
    int files = 5000;
    int pictureForms = 4; ///< that are asked for until one is a picture
    qsizetype htmlBytes = qsizetype{1024} * 1024;
    qint64 imagePixels;
};

/// Reads a drop from its forms. `fetch` gets one of those in `targets`, and none where there is none. It is asked for
/// files first, and for nothing else where there are some; then for a picture and for text. All that is fetched is
/// fetched before the first picture is decoded: the program that drags may take it back.
///
///  1. A file is one of this machine, whether or not it is there. Files of other machines are no files, and no text
///  either.
///  2. A text is the plain one, else the addresses, else what a web page says.
///
/// A function for any thread; what the forms hold is hostile.
[[nodiscard]] DroppedContent
readDroppedForms(const QList<QByteArray> &targets, const DropLimits &limits,
                 const std::function<std::optional<DroppedForm>(const QByteArray &)> &fetch);
/// The same of a drag within this program, whose forms are all here.
[[nodiscard]] DroppedContent readDroppedForms(const QMimeData &data, const DropLimits &limits);

} // namespace tavrine
