#include "adapters/pasteboard/OfferedForms.h"

#include "adapters/pasteboard/PasteboardImage.h"

#include <QStringConverter>

namespace tavrine {
namespace {

QByteArray uriListOf(const QList<QUrl> &urls, const QByteArray &first, const QByteArray &separator, bool isClosed) {
    QByteArray text = first;
    for (const QUrl &url : urls) {
        if (!text.isEmpty() && !text.endsWith(separator))
            text += separator;
        text += url.toEncoded();
    }
    return isClosed ? text + separator : text;
}

} // namespace

std::vector<OfferedForm> formsOf(const OwnContents &contents) {
    std::vector<OfferedForm> forms;
    const auto offer = [&forms](const QByteArray &target, const QByteArray &type, const QByteArray &bytes) {
        forms.push_back({.target = target, .type = type, .bytes = bytes, .recipe = {}});
    };
    if (!contents.urls.isEmpty()) {
        offer("text/uri-list", "text/uri-list", uriListOf(contents.urls, {}, "\r\n", true));
        offer("x-special/gnome-copied-files", "x-special/gnome-copied-files",
              uriListOf(contents.urls, "copy\n", "\n", false));
    }
    if (const QString text = contents.textOrPaths(); !text.isEmpty()) {
        // An encoder marks a lone surrogate as U+FFFD, where `toUtf8` writes a question mark.
        const QByteArray utf8 = QStringEncoder(QStringEncoder::Utf8).encode(text);
        offer("UTF8_STRING", "UTF8_STRING", utf8);
        offer("text/plain;charset=utf-8", "text/plain;charset=utf-8", utf8);
        offer("text/plain", "text/plain", utf8);
        offer("STRING", "STRING", text.toLatin1());
        offer("TEXT", "UTF8_STRING", utf8);
    }
    if (!contents.image.isNull()) {
        offer("image/png", "image/png", {});
        forms.back().recipe = [image = contents.image] { return pasteboardImage::encode(image, "png"); };
        forms.back().isKept = true;
    }
    return forms;
}

std::vector<OfferedForm> formsOf(const std::vector<Received> &contents, const std::vector<selection::Sibling> &siblings,
                                 qint64 maxPixels) {
    std::vector<OfferedForm> forms;
    for (const Received &received : contents) {
        forms.push_back({.target = received.target,
                         .type = received.target,
                         .typeNumber = received.type,
                         .format = received.format,
                         .bytes = received.bytes,
                         .recipe = {}});
    }
    for (const selection::Sibling &sibling : siblings) {
        forms.push_back({.target = sibling.target,
                         .type = selection::typeOfForm(sibling.target),
                         .bytes = {},
                         .recipe = [sibling, maxPixels] {
                             return selection::makeForm(sibling.target, sibling.source, maxPixels);
                         }});
    }
    return forms;
}

} // namespace tavrine
