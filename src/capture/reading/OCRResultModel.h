#pragma once

#include "capture/reading/CopyAction.h"

#include <QUrl>

#include <optional>

namespace tavrine {

class UrlOpener;

/// The text that the editor found in its picture, as the person edits, searches and copies it. Belongs to the sheet;
/// main thread.
class OCRResultModel : public QObject {
    Q_OBJECT

public:
    OCRResultModel(const QString &text, Pasteboard &pasteboard, UrlOpener &urlOpener, Time &time,
                   QObject *parent = nullptr);

    [[nodiscard]] const QString &text() const { return m_text; } ///< as it was recognised
    [[nodiscard]] const QString &editableText() const { return m_editableText; }
    void setEditableText(const QString &text);
    [[nodiscard]] bool isCopied() const { return m_copy.isCopied(); }

    void copyText();             ///< the edited one
    void searchOnGoogle() const; ///< the edited one

    /// Where a search for `text` is. The set of characters that may stand in a query leaves "&" as it is, so what
    /// follows one is lost to the search. None for a text that gives no address.
    [[nodiscard]] static std::optional<QUrl> searchUrl(const QString &text);

Q_SIGNALS:
    void editableTextChanged();
    void isCopiedChanged();

private:
    QString m_text;
    QString m_editableText;
    UrlOpener &m_urlOpener;
    CopyAction m_copy;
};

} // namespace tavrine
