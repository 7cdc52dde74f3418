#pragma once

#include "adapters/pasteboard/SelectionParser.h"

#include <QByteArray>
#include <QImage>
#include <QList>
#include <QString>
#include <QStringList>
#include <QUrl>

#include <memory>
#include <optional>

namespace tavrine {

/// What one change brought, as another program gave it: still encoded, so that only what is read costs its decoding.
/// Never altered once it is shared between the threads.
struct ForeignContents {
    QStringList types;
    QByteArray text;
    selection::TextEncoding encoding = selection::TextEncoding::utf8;
    QList<QByteArray> images; ///< forms of one picture, the best first; more than one only when the first seems broken
};

/// What this program put on the clipboard.
struct OwnContents {
    QString text;
    QImage image;
    QList<QUrl> urls;

    /// What other programs get as text: in its absence the paths of the files, so that files can be pasted into a
    /// terminal. Here a file is no text, or the history would take its path for one that a person copied.
    [[nodiscard]] QString textOrPaths() const;
    [[nodiscard]] QStringList types() const;
};

/// The news of changes that other programs made.
struct Publication {
    /// The own write that stood when the change happened. A later own write has replaced what comes here.
    int ownSerial = 0;
    /// How many changes it tells of: those that were replaced before they could be read are counted with the next.
    /// None for what stood before this program came.
    int changes = 0;
    std::shared_ptr<const ForeignContents> contents;
};

} // namespace tavrine
