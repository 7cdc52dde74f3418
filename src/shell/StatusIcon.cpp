#include "shell/StatusIcon.h"

#include <QPainter>
#include <QTransform>

#include <cmath>

namespace tavrine {
namespace {

constexpr int symbolEdge = 18;
constexpr int pillWidth = 28;
constexpr int pillHeight = 22;
constexpr double pillRadius = 11;
constexpr QColor systemBlue{0, 122, 255};

QImage blank(double width, double height, double scale) {
    QImage image(static_cast<int>(std::lround(width * scale)), static_cast<int>(std::lround(height * scale)),
                 QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    return image;
}

QImage drawSymbol(double scale) {
    QImage image = blank(symbolEdge, symbolEdge, scale);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(scale, scale);
    painter.fillPath(menuBarSymbol(), Qt::black);
    return image;
}

QImage drawPill(double scale, const QColor &color) {
    QImage image = blank(pillWidth, pillHeight, scale);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(scale, scale);
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    painter.drawRoundedRect(QRectF(0, 0, pillWidth, pillHeight), pillRadius, pillRadius);
    painter.translate((pillWidth - symbolEdge) / 2.0, (pillHeight - symbolEdge) / 2.0);
    painter.fillPath(menuBarSymbol(), Qt::white);
    return image;
}

} // namespace

QPainterPath menuBarSymbol() {
    // A solid board stays a board at 16 pixels where an outline would blur; the face is what is left out of it.
    QPainterPath board;
    board.addRoundedRect(QRectF(2.5, 2.5, 13, 15), 3, 3);

    // The clip stands clear of the board by a gap of one point.
    QPainterPath clip;
    clip.addRoundedRect(QRectF(5.5, 0.5, 7, 3.5), 1.5, 1.5);
    QPainterPath clearance;
    clearance.addRoundedRect(QRectF(4.5, -0.5, 9, 5.5), 2.5, 2.5);

    QPainterPath face;
    face.addRoundedRect(QRectF(5.6, 7.4, 1.9, 2.8), 0.95, 0.95);
    face.addRoundedRect(QRectF(10.5, 7.4, 1.9, 2.8), 0.95, 0.95);
    QPainterPath smile;
    smile.moveTo(5.9, 12.3);
    smile.cubicTo(7.2, 15.0, 10.8, 15.0, 12.1, 12.3);
    QPainterPathStroker pen;
    pen.setWidth(1.5);
    pen.setCapStyle(Qt::RoundCap);
    face.addPath(pen.createStroke(smile));
    face.setFillRule(Qt::WindingFill);

    return board.subtracted(clearance).subtracted(face).united(clip);
}

QColor indicatorColor(const QString &text) {
    constexpr qsizetype length = 7;
    const auto isHexDigit = [](QChar character) {
        return (character >= u'0' && character <= u'9') || (character >= u'a' && character <= u'f') ||
               (character >= u'A' && character <= u'F');
    };
    const bool isColor =
        text.size() == length && text[0] == u'#' && std::all_of(text.cbegin() + 1, text.cend(), isHexDigit);
    return isColor ? QColor(text) : systemBlue;
}

StatusImage statusIcon(bool isAwake, bool showsIndicator, const QString &color) {
    if (isAwake && showsIndicator)
        return {.draw = [pill = indicatorColor(color)](double scale) { return drawPill(scale, pill); },
                .width = pillWidth,
                .height = pillHeight,
                .isTemplate = false};
    return {.draw = drawSymbol, .width = symbolEdge, .height = symbolEdge, .isTemplate = true};
}

} // namespace tavrine
