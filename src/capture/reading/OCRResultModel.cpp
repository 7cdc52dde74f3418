#include "capture/reading/OCRResultModel.h"

#include "ports/UrlOpener.h"

namespace tavrine {

OCRResultModel::OCRResultModel(const QString &text, Pasteboard &pasteboard, UrlOpener &urlOpener, Time &time,
                               QObject *parent)
    : QObject(parent), m_text(text), m_editableText(text), m_urlOpener(urlOpener),
      m_copy(pasteboard, time, std::nullopt) {
    connect(&m_copy, &CopyAction::isCopiedChanged, this, &OCRResultModel::isCopiedChanged);
}

void OCRResultModel::setEditableText(const QString &text) {
    if (text == m_editableText)
        return;
    m_editableText = text;
    Q_EMIT editableTextChanged();
}

void OCRResultModel::copyText() {
    m_copy.copy(m_editableText);
}

void OCRResultModel::searchOnGoogle() const {
    if (const auto url = searchUrl(m_editableText))
        m_urlOpener.openUrl(*url);
}

std::optional<QUrl> OCRResultModel::searchUrl(const QString &text) {
    if (!text.isValidUtf16())
        return std::nullopt; // half a character has no encoding
    const QByteArray encoded = QUrl::toPercentEncoding(text, "!$&'()*+,;=:@/?");
    const QUrl url = QUrl::fromEncoded("https://www.google.com/search?q=" + encoded, QUrl::StrictMode);
    return url.isValid() ? std::optional(url) : std::nullopt;
}

} // namespace tavrine
