// Pictures from the clipboard and from files, by what their first bytes say and by what the decoders make of the rest.

#include "FuzzTarget.h"
#include "adapters/linux/ReaderProtocol.h"
#include "adapters/pasteboard/PasteboardImage.h"

#include <QBuffer>
#include <QImage>

namespace tavrine::fuzz {
namespace {

constexpr qint64 mostPixels = 1 << 18;

void readPicture(Bytes input) {
    const QByteArray bytes(input.data(), static_cast<qsizetype>(input.size()));
    const bool isUsable = pasteboardImage::hasUsableHeader(bytes, mostPixels);
    const qint64 pixels = pasteboardImage::pixelCount(bytes);
    require(!isUsable || (pixels > 0 && pixels <= mostPixels && !pasteboardImage::formatOf(bytes).isEmpty()));
    static_cast<void>(pasteboardImage::seemsWhole(bytes));
    static_cast<void>(pasteboardImage::isWithoutLoss(bytes));
    const auto image = pasteboardImage::decode(bytes, mostPixels);
    require(!image || (!image->isNull() && qint64{image->width()} * image->height() <= mostPixels));
}

/// What the program that reads pictures is handed, and what it answers.
void readReader(Bytes input) {
    const QByteArray copy(input.data(), static_cast<qsizetype>(input.size()));
    const QImage picture = readerProtocol::pictureIn(reinterpret_cast<const uchar *>(copy.constData()), copy.size());
    require(picture.isNull() || picture.sizeInBytes() <= copy.size());
    if (!picture.isNull())
        static_cast<void>(picture.pixel(picture.width() - 1, picture.height() - 1));
    static_cast<void>(readerProtocol::textIn(copy));
    static_cast<void>(readerProtocol::codesIn(copy));
}

std::vector<std::string> pictures() {
    QImage image(7, 5, QImage::Format_ARGB32);
    image.fill(QColor(20, 140, 220, 128));
    std::vector<std::string> all;
    for (const char *format : {"png", "jpeg", "bmp", "tiff", "webp", "gif", "ico"}) {
        QBuffer buffer;
        if (buffer.open(QIODevice::WriteOnly) && image.save(&buffer, format))
            all.push_back(buffer.data().toStdString());
    }
    all.emplace_back("GIF89a\5\0\5\0\x80\0\0\xFF\xFF\xFF\0\0\0,\0\0\0\0\5\0\5\0\0\2\4\x84\x8F\x09\x05\0;", 34);
    return all;
}

std::vector<std::string> readerWords() {
    const readerProtocol::Header header{.width = 2, .height = 2, .bytesPerLine = 8, .hasAlpha = 1};
    std::string picture(reinterpret_cast<const char *>(&header), sizeof header);
    picture.append(16, '\x55');
    return {picture, R"({"text":"a\nb","lines":["a"]})",
            R"({"codes":[{"text":"https://a.b","box":[0.1,0.2,0.3,0.4]}]})"};
}

const Target pictureTarget("picture", &readPicture, &pictures);
const Target readerTarget("reader", &readReader, &readerWords);

} // namespace
} // namespace tavrine::fuzz
