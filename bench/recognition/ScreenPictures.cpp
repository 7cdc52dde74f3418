#include "ScreenPictures.h"

#include <QFile>
#include <QFontDatabase>
#include <QFontMetricsF>
#include <QPainter>

#include <algorithm>
#include <cmath>
#include <vector>

namespace tavrine::bench {
namespace {

struct Colours {
    QString name;
    QColor ground;
    QColor text;
};

QStringList linesOf(const QString &path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("%s cannot be read", qPrintable(path));
    QStringList lines = QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'));
    lines.removeAll(QString());
    return lines;
}

QImage draw(const QStringList &lines, const QString &family, int pixels, const Colours &colours, int scale) {
    QFont font(family);
    font.setPixelSize(pixels);
    const QFontMetricsF metrics(font);
    const double lineHeight = std::ceil(metrics.height() * 1.25);
    double widest = 0;
    for (const QString &line : lines)
        widest = std::max(widest, metrics.horizontalAdvance(line));
    constexpr double margin = 16;
    const QSizeF size(std::ceil(widest) + 2 * margin, lineHeight * static_cast<double>(lines.size()) + 2 * margin);
    QImage image((size * scale).toSize(), QImage::Format_RGB32);
    image.setDevicePixelRatio(scale);
    image.fill(colours.ground);
    QPainter painter(&image);
    painter.setFont(font);
    painter.setPen(colours.text);
    for (qsizetype i = 0; i < lines.size(); ++i)
        painter.drawText(QPointF(margin, margin + static_cast<double>(i) * lineHeight + metrics.ascent()), lines.at(i));
    painter.end();
    image.setDevicePixelRatio(1);
    return image;
}

QString simplified(const QStringList &lines) {
    QStringList words;
    for (const QString &line : lines)
        if (const QString text = line.simplified(); !text.isEmpty())
            words.append(text);
    return words.join(QLatin1Char('\n'));
}

} // namespace

QList<ScreenPicture> screenPictures(const QString &folder) {
    const Colours light{QStringLiteral("light"), QColor(0xFF, 0xFF, 0xFF), QColor(0x24, 0x29, 0x2E)};
    const Colours dark{QStringLiteral("dark"), QColor(0x1E, 0x1E, 0x1E), QColor(0xD4, 0xD4, 0xD4)};
    struct Kind {
        bool isCode;
        QStringList families;
    };
    const Kind kinds[] = {{false, {QStringLiteral("Noto Sans"), QStringLiteral("DejaVu Sans")}},
                          {true, {QStringLiteral("DejaVu Sans Mono"), QStringLiteral("Noto Sans Mono")}}};
    QList<ScreenPicture> pictures;
    for (const Kind &kind : kinds) {
        const QString file = kind.isCode ? QStringLiteral("/code.txt") : QStringLiteral("/prose.txt");
        const QStringList lines = linesOf(folder + file);
        for (const QString &family : kind.families) {
            if (!QFontDatabase::hasFamily(family))
                qFatal("the font %s is not installed", qPrintable(family));
            for (const int pixels : {11, 13})
                for (const Colours &colours : {light, dark})
                    for (const int scale : {1, 2})
                        pictures.append(
                            {QStringLiteral("%1, %2 %3 px, %4, x%5")
                                 .arg(kind.isCode ? QStringLiteral("code") : QStringLiteral("prose"), family)
                                 .arg(pixels)
                                 .arg(colours.name)
                                 .arg(scale),
                             kind.isCode, lines, draw(lines, family, pixels, colours, scale)});
        }
    }
    return pictures;
}

Score score(const QStringList &expected, const QStringList &found) {
    const QString a = simplified(expected);
    const QString b = simplified(found);
    std::vector<qsizetype> row(static_cast<size_t>(b.size()) + 1);
    for (size_t j = 0; j < row.size(); ++j)
        row[j] = static_cast<qsizetype>(j);
    for (qsizetype i = 1; i <= a.size(); ++i) {
        qsizetype diagonal = row[0];
        row[0] = i;
        for (size_t j = 1; j < row.size(); ++j) {
            const qsizetype replaced = diagonal + (a.at(i - 1) == b.at(static_cast<qsizetype>(j) - 1) ? 0 : 1);
            diagonal = row[j];
            row[j] = std::min({replaced, row[j] + 1, row[j - 1] + 1});
        }
    }
    return {a.size(), row.back()};
}

} // namespace tavrine::bench
