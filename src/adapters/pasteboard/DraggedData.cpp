#include "adapters/pasteboard/DraggedData.h"

#include "adapters/pasteboard/PasteboardImage.h"
#include "adapters/pasteboard/SelectionSiblings.h"

namespace tavrine {
namespace {

constexpr QLatin1String uriList("text/uri-list");
constexpr QLatin1String plainText("text/plain");
constexpr QLatin1String png("image/png");
constexpr QLatin1String tiff("image/tiff");

// The toolkit lists the other two of each file.
constexpr const char *fileForms[] = {"text/uri-list", "text/x-moz-url", "text/plain"};
constexpr const char *pictureForms[] = {"image/png", "image/tiff"};
constexpr const char *textForms[] = {"UTF8_STRING", "text/plain;charset=utf-8", "text/plain", "STRING", "TEXT"};

} // namespace

quint32 operationOf(Qt::DropAction action) {
    switch (action) {
    case Qt::IgnoreAction:
        return dragOperation::none;
    case Qt::MoveAction:
    case Qt::TargetMoveAction:
        return dragOperation::move;
    default:
        return dragOperation::copy;
    }
}

DraggedData::DraggedData(const DraggedItem &item) : m_item(item) {
    if (item.image)
        m_png = std::async(std::launch::async, [image = *item.image] {
                    return pasteboardImage::encode(image, "png");
                }).share();
}

QStringList DraggedData::formats() const {
    if (m_item.url)
        return {uriList};
    if (m_item.image)
        return {png, tiff};
    return {plainText};
}

QVariant DraggedData::retrieveData(const QString &type, QMetaType) const {
    if (m_item.url && type == uriList)
        return m_item.url->toEncoded() + "\r\n";
    if (m_item.image && type == png)
        return m_png.get();
    if (m_item.image && type == tiff)
        return pasteboardImage::encode(*m_item.image, "tiff");
    if (m_item.string && type == plainText)
        return *m_item.string;
    return {};
}

std::span<const char *const> DraggedData::forms() const {
    if (m_item.url)
        return fileForms;
    if (m_item.image)
        return pictureForms;
    return textForms;
}

QByteArray DraggedData::bytes(const char *target) const {
    if (m_item.url && qstrcmp(target, "text/plain") == 0) // for a field of text, as the clipboard gives it
        return m_item.url->toLocalFile().toUtf8();
    if (m_item.url && qstrcmp(target, "text/x-moz-url") == 0) {
        const QString both = m_item.url->toString(QUrl::FullyEncoded) + QLatin1Char('\n') + m_item.url->fileName();
        return {reinterpret_cast<const char *>(both.utf16()), both.size() * qsizetype{sizeof(char16_t)}};
    }
    if (m_item.string)
        return selection::makeForm(target, m_item.string->toUtf8(), 0);
    return data(QString::fromLatin1(target));
}

DroppedContent DraggedData::dropped() const {
    DroppedContent content;
    content.types = formats();
    if (m_item.url)
        content.fileUrls = {*m_item.url};
    else if (m_item.image)
        content.images = {*m_item.image};
    else
        content.string = m_item.string;
    return content;
}

} // namespace tavrine
