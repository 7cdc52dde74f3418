#include "shell/StatusIcon.h"

#include "base/UserDefaults.h"

#include <QColor>
#include <QPainter>
#include <QPainterPath>

#include <cmath>

namespace tavrine {
namespace {

constexpr int iconSize = 18;
constexpr QSize pillSize{28, 22};
constexpr double pillRadius = 11;
constexpr QColor systemBlue{0x00, 0x7a, 0xff};

/// The program's mark on 18 by 18 points: a clipboard with two lines.
void drawSymbol(QPainter &painter, const QColor &color) {
    QPainterPath board;
    board.addRoundedRect(QRectF(3.25, 3.0, 11.5, 13.25), 2.0, 2.0);
    painter.setPen(QPen(color, 1.5, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.drawPath(board);
    painter.drawLine(QPointF(6.25, 8.5), QPointF(11.75, 8.5));
    painter.drawLine(QPointF(6.25, 12.0), QPointF(10.0, 12.0));
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    painter.drawRoundedRect(QRectF(5.75, 1.25, 6.5, 3.75), 1.25, 1.25);
}

QImage canvas(QSize points, double scale) {
    const auto pixels = [scale](int length) { return static_cast<int>(std::lround(length * scale)); };
    QImage image(pixels(points.width()), pixels(points.height()), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    return image;
}

QImage drawTemplate(double scale) {
    QImage image = canvas({iconSize, iconSize}, scale);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(scale, scale);
    drawSymbol(painter, Qt::black);
    return image;
}

QImage drawPill(double scale, const QColor &color) {
    QImage image = canvas(pillSize, scale);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(scale, scale);
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    painter.drawRoundedRect(QRectF({0, 0}, pillSize), pillRadius, pillRadius);
    painter.setBrush(Qt::NoBrush);
    painter.translate((pillSize.width() - iconSize) / 2.0, (pillSize.height() - iconSize) / 2.0);
    drawSymbol(painter, Qt::white);
    return image;
}

QColor indicatorColor(const UserDefaults &defaults) {
    const QString text = defaults.get<QString>(QStringLiteral("keepAwakeBgColor"), QStringLiteral("#007AFF"));
    constexpr qsizetype length = 7; // "#RRGGBB"
    if (text.size() != length || text[0] != QLatin1Char('#'))
        return systemBlue;
    const QColor color(text);
    return color.isValid() ? color : systemBlue;
}

} // namespace

StatusImage statusIcon(bool isAwake, const UserDefaults &defaults) {
    if (!isAwake || !defaults.get<bool>(QStringLiteral("keepAwakeShowBgIndicator"), false))
        return {drawTemplate, iconSize, iconSize, true};
    const QColor color = indicatorColor(defaults);
    return {[color](double scale) { return drawPill(scale, color); }, pillSize.width(), pillSize.height(), false};
}

} // namespace tavrine
