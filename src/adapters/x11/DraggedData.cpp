#include "adapters/x11/DraggedData.h"

#include "adapters/x11/PasteboardImage.h"

namespace tavrine {
namespace {

constexpr QLatin1String uriList("text/uri-list");
constexpr QLatin1String plainText("text/plain");
constexpr QLatin1String png("image/png");
constexpr QLatin1String tiff("image/tiff");

} // namespace

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
