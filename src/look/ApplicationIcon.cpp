#include "look/ApplicationIcon.h"

#include <QFile>
#include <QImageReader>
#include <QPixmap>

namespace tavrine::look {
namespace {

/// Without looking for who else could read it: that would load every reader of pictures there is, and keep it.
QPixmap readPng(const QString &path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QImageReader reader(&file, QByteArrayLiteral("png"));
    reader.setAutoDetectImageFormat(false);
    return QPixmap::fromImage(reader.read());
}

} // namespace

/// One for all: the toolkit keeps what it scales, by the picture that it was made of.
QIcon applicationIcon() {
    static const auto *const icon = [] {
        auto *made = new QIcon;
        for (const int side : {48, 128})
            made->addPixmap(readPng(QStringLiteral(":/tavrine/icon/%1.png").arg(side)));
        return made;
    }();
    return *icon;
}

} // namespace tavrine::look
