#include "shell/StatusIcon.h"

#include "shell/ShellPreferences.h"

#include <QPainter>
#include <QTransform>

#include <algorithm>
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
    // Paths are cut on a fine grid: at 18 units the curves of the result would be visibly angular.
    constexpr double grid = 100;
    const auto rounded = [](double x, double y, double width, double height, double radius) {
        QPainterPath path;
        path.addRoundedRect(QRectF(x * grid, y * grid, width * grid, height * grid), radius * grid, radius * grid);
        return path;
    };
    // A solid board stays a board at 16 pixels, where an outline would blur. The clip stands clear of it.
    const QPainterPath board = rounded(2, 2, 14, 15, 3).subtracted(rounded(5, -1, 8, 6, 2.5));
    const QPainterPath clip = rounded(6, 1, 6, 3, 1.5);

    // Cut out of the board: a T whose arms turn up.
    QPainterPath arms;
    arms.moveTo(5.4 * grid, 7.6 * grid);
    arms.cubicTo(5.9 * grid, 10.1 * grid, 12.1 * grid, 10.1 * grid, 12.6 * grid, 7.6 * grid);
    QPainterPathStroker pen;
    pen.setWidth(1.9 * grid);
    pen.setCapStyle(Qt::RoundCap);
    const QPainterPath letter = pen.createStroke(arms).united(rounded(8.05, 8.6, 1.9, 6.4, 0.95));

    return QTransform::fromScale(1 / grid, 1 / grid).map(board.subtracted(letter).united(clip));
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
        return {
            .draw = [pill = indicatorColor(color)](const StatusGround &ground) { return drawPill(ground.scale, pill); },
            .width = pillWidth,
            .height = pillHeight,
            .isTemplate = false,
            .identity = QStringLiteral("pill ") + indicatorColor(color).name()};
    return {.draw = [](const StatusGround &ground) { return drawSymbol(ground.scale); },
            .width = symbolEdge,
            .height = symbolEdge,
            .isTemplate = true,
            .identity = QStringLiteral("symbol")};
}

StatusImage statusIcon(bool isAwake, const UserDefaults &defaults) {
    return statusIcon(isAwake, preference::keepAwakeShowBgIndicator.get(defaults),
                      preference::keepAwakeBgColor.get(defaults));
}

} // namespace tavrine
