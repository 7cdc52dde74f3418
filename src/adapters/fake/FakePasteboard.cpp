#include "adapters/fake/FakePasteboard.h"

#include <QImageReader>

namespace tavrine {

std::optional<QImage> FakePasteboard::presentImage() const {
    if (m_isImageUnreadable)
        return std::nullopt;
    if (m_image)
        return m_image;
    for (const QUrl &url : m_urls) {
        const QImage read = QImageReader(url.toLocalFile()).read();
        if (!read.isNull())
            return read;
    }
    return std::nullopt;
}

std::optional<QString> FakePasteboard::presentString() const {
    return m_isStringUnreadable || !m_text || m_text->isEmpty() ? std::nullopt : m_text;
}

std::optional<QImage> FakePasteboard::image() const {
    return reading().image();
}

std::optional<QString> FakePasteboard::string() const {
    return reading().string();
}

Pasteboard::Reading FakePasteboard::reading() const {
    const std::optional<QImage> image = presentImage();
    const std::optional<QString> text = presentString();
    return {.image =
                [this, image] {
                    ++m_imageReads;
                    return image;
                },
            .string =
                [this, text] {
                    ++m_stringReads;
                    return text;
                },
            .isLarge = (image && qint64{image->width()} * image->height() > largePixels) ||
                       (text && text->size() > largeBytes)};
}

int FakePasteboard::clearContents() {
    ++m_clears;
    empty();
    return m_changeCount;
}

void FakePasteboard::setString(const QString &text) {
    m_text = text;
    if (!text.isEmpty())
        addType(pasteboardType::string);
}

void FakePasteboard::writeImage(const QImage &image) {
    if (image.isNull())
        return;
    m_image = image;
    addType(pasteboardType::png);
}

void FakePasteboard::writeFileUrls(const QList<QUrl> &urls) {
    m_urls = urls;
    if (urls.isEmpty())
        return;
    addType(pasteboardType::fileUrl);
}

void FakePasteboard::setContentsFromOutside(const QStringList &types, const std::optional<QString> &text,
                                            const std::optional<QImage> &image) {
    ++m_changeCount;
    m_types = types;
    m_text = text;
    m_image = image;
    m_urls.clear();
    tellForeignChange();
}

void FakePasteboard::copyFromOutside(const QString &text) {
    setContentsFromOutside({QLatin1String(pasteboardType::string)}, text);
}

void FakePasteboard::copyFromOutside(const QImage &image, const std::optional<QString> &text) {
    QStringList types{QLatin1String(pasteboardType::png)};
    if (text)
        types.append(QLatin1String(pasteboardType::string));
    setContentsFromOutside(types, text, image);
}

void FakePasteboard::clearFromOutside() {
    empty();
    tellForeignChange();
}

void FakePasteboard::tellForeignChange() const {
    if (m_tellsChanges && m_onForeignChange)
        m_onForeignChange();
}

void FakePasteboard::empty() {
    ++m_changeCount;
    m_types.reset();
    m_text.reset();
    m_image.reset();
    m_urls.clear();
}

void FakePasteboard::claimFromOutsideWithoutAnswer() {
    clearFromOutside();
}

void FakePasteboard::addType(const char *type) {
    if (!m_types)
        m_types.emplace();
    if (!m_types->contains(QLatin1String(type)))
        m_types->append(QLatin1String(type));
}

} // namespace tavrine
