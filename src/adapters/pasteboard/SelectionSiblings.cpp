#include "adapters/pasteboard/SelectionSiblings.h"

#include "adapters/pasteboard/PasteboardImage.h"

#include <QHash>

#include <algorithm>

namespace tavrine::selection {
namespace {

constexpr qint64 largePixels = 32'000'000; // 128 MB decoded, and as much again without compression

/// Targets as the toolkits name them, each with the format in the encoder's words.
const QHash<QByteArray, const char *> &pictureForms() {
    static const QHash<QByteArray, const char *> table{
        {"image/png", "png"},       {"application/x-qt-image", "png"},
        {"image/tiff", "tiff"},     {"image/tif", "tiff"},
        {"image/jpeg", "jpeg"},     {"image/jpg", "jpeg"},
        {"image/webp", "webp"},     {"image/bmp", "bmp"},
        {"image/x-bmp", "bmp"},     {"image/x-MS-bmp", "bmp"},
        {"image/ico", "ico"},       {"image/x-icon", "ico"},
        {"image/x-ico", "ico"},     {"image/x-win-bitmap", "ico"},
        {"image/icon", "ico"},      {"image/vnd.microsoft.icon", "ico"},
        {"application/ico", "ico"}, {"text/ico", "ico"},
        {"image/ppm", "ppm"},       {"image/xpm", "xpm"},
    };
    return table;
}

QByteArray latin1(const QByteArray &utf8) {
    return QString::fromUtf8(utf8).toLatin1();
}

/// Latin-1 stands in a compound text as it is; anything else goes into its segment for UTF-8.
QByteArray compoundText(const QByteArray &utf8) {
    const QString text = QString::fromUtf8(utf8);
    const bool isLatin1 = std::all_of(text.begin(), text.end(), [](QChar c) { return c.unicode() < 0x100; });
    return isLatin1 ? text.toLatin1() : "\x1B%G" + utf8 + "\x1B%@";
}

} // namespace

bool isTextForm(const QByteArray &target) {
    const QByteArray folded = target.toLower();
    return target == "UTF8_STRING" || target == "STRING" || target == "TEXT" || target == "COMPOUND_TEXT" ||
           folded == "text/plain" || folded == "text/plain;charset=utf-8";
}

bool isPictureForm(const QByteArray &target) {
    return pictureForms().contains(target);
}

QByteArray typeOfForm(const QByteArray &target) {
    return target == "TEXT" ? QByteArray("UTF8_STRING") : target;
}

QByteArray makeForm(const QByteArray &target, const QByteArray &source, qint64 maxPixels) {
    if (target == "STRING")
        return latin1(source);
    if (target == "COMPOUND_TEXT")
        return compoundText(source);
    if (isTextForm(target))
        return source;
    const QByteArray format = pictureForms().value(target);
    if (format == pasteboardImage::formatOf(source))
        return source;
    const bool isPacked = format == "png" || format == "jpeg" || format == "webp";
    const auto image = pasteboardImage::decode(source, isPacked ? maxPixels : std::min(maxPixels, largePixels));
    return image ? pasteboardImage::encode(*image, format) : QByteArray();
}

} // namespace tavrine::selection
