#include "utilities/meter/SpeedCanvas.h"

#include "look/Symbols.h"

#include <QFontDatabase>
#include <QFontMetricsF>
#include <QGuiApplication>
#include <QPolygonF>

#include <algorithm>
#include <array>
#include <cmath>

namespace tavrine {
namespace {

// Of the platform's own face, in sizes: how far a line reaches above and below its letters' feet.
constexpr double ascent = 0.952;
constexpr double descent = 0.242;
// Of the arrows, in sizes.
constexpr double arrowAdvance = 0.84;
constexpr double arrowHeight = 0.73; // as high as a figure
constexpr double arrowStroke = 0.1;
constexpr double arrowReach = 0.3; // of the head to either side
constexpr int smallestFontPx = 5;

/// Free faces with round ends whose figures are narrow enough. None is part of a usual desktop.
QString roundedFamily() {
    static const QString family = [] {
        for (const char *name : {"Nunito", "Varela Round", "M PLUS Rounded 1c"})
            if (QFontDatabase::hasFamily(QLatin1String(name)))
                return QString::fromLatin1(name);
        return QString();
    }();
    return family;
}

QFont fontOf(double sizePx, QFont::Weight weight) {
    QFont font = QGuiApplication::font();
    if (const QString rounded = roundedFamily(); !rounded.isEmpty())
        font.setFamily(rounded);
    font.setPixelSize(std::max(smallestFontPx, static_cast<int>(std::lround(sizePx))));
    font.setWeight(weight);
    return font;
}

} // namespace

SpeedCanvas::SpeedCanvas(int width, int height, double scale, int bottom)
    : m_scale(scale), m_top(height + bottom),
      m_image(static_cast<int>(std::lround(width * scale)), static_cast<int>(std::lround(height * scale)),
              QImage::Format_ARGB32_Premultiplied) {
    m_image.fill(Qt::transparent);
    m_painter.begin(&m_image);
    m_painter.setRenderHint(QPainter::Antialiasing);
    m_painter.setPen(Qt::NoPen);
}

QRectF SpeedCanvas::pixels(const QRectF &points) const {
    return {points.x() * m_scale, (m_top - points.y() - points.height()) * m_scale, points.width() * m_scale,
            points.height() * m_scale};
}

void SpeedCanvas::fillRounded(const QRectF &points, double radius, const QColor &color) {
    const QRectF whole = pixels(points).toRect();
    m_painter.setBrush(color);
    m_painter.drawRoundedRect(whole, radius * m_scale, radius * m_scale);
}

void SpeedCanvas::symbolOrOval(const QRectF &points, const QString &name, const QRectF &oval, const QColor &color) {
    if (symbol(points, name, color))
        return;
    m_painter.setBrush(color);
    m_painter.drawEllipse(pixels(oval));
}

bool SpeedCanvas::symbol(const QRectF &points, const QString &name, const QColor &color) {
    if (!look::hasSymbol(name))
        return false;
    const QRectF place = pixels(points);
    look::paintSymbol(m_painter, place, name, std::round(place.height()), color);
    return true;
}

double SpeedCanvas::lineHeight(double size) {
    return std::ceil(size * (ascent + descent));
}

double SpeedCanvas::sizeThatFits(const QStringList &texts, double width, const Style &style) const {
    double size = style.size;
    for (const QString &text : texts)
        size = std::min(size, fontThatFits(text, style, width * m_scale).pixelSize() / m_scale);
    return size;
}

QFont SpeedCanvas::fontThatFits(const QString &text, const Style &style, double widthPx) const {
    QFont font = fontOf(style.size * m_scale, style.weight);
    while (font.pixelSize() > smallestFontPx && QFontMetricsF(font).horizontalAdvance(text) > widthPx)
        font.setPixelSize(font.pixelSize() - 1);
    return font;
}

void SpeedCanvas::text(const QRectF &points, const QString &text, const Style &style, Qt::AlignmentFlag alignment) {
    const QRectF place = pixels(points);
    const QFont font = fontThatFits(text, style, place.width());
    const double room = place.width() - QFontMetricsF(font).horizontalAdvance(text);
    const double indent = alignment == Qt::AlignRight ? room : alignment == Qt::AlignHCenter ? room / 2 : 0;
    m_painter.setFont(font);
    m_painter.setPen(style.color);
    m_painter.drawText(QPointF(std::round(place.x() + indent), std::round(place.y() + ascent * style.size * m_scale)),
                       text);
    m_painter.setPen(Qt::NoPen);
}

void SpeedCanvas::textWithArrow(const QRectF &points, ArrowDirection direction, const QString &text,
                                const Style &style) {
    const double advance = arrowAdvance * style.size;
    const QString rest = QLatin1Char(' ') + text;
    const QFont font = fontThatFits(rest, style, (points.width() - advance) * m_scale);
    const double width = advance + QFontMetricsF(font).horizontalAdvance(rest) / m_scale;
    const double left = points.x() + (points.width() - width) / 2;
    const double baseline = std::round(pixels(points).y() + ascent * style.size * m_scale);
    drawArrow(left * m_scale, baseline, style.size * m_scale, direction, style.color);
    this->text({left + advance, points.y(), width - advance + 1, points.height()}, rest, style, Qt::AlignLeft);
}

void SpeedCanvas::arrow(QPointF point, ArrowDirection direction, const Style &style) {
    const double baseline = std::round((m_top - point.y() - descent * style.size) * m_scale);
    drawArrow(point.x() * m_scale, baseline, style.size * m_scale, direction, style.color);
}

/// Two upright lines that end in one head.
void SpeedCanvas::drawArrow(double leftPx, double baselinePx, double sizePx, ArrowDirection direction,
                            const QColor &color) {
    const double stroke = std::max(1.0, std::round(arrowStroke * sizePx));
    const double gap = std::max(1.0, std::round(1.4 * arrowStroke * sizePx));
    const double height = std::round(arrowHeight * sizePx);
    const double reach = std::round(arrowReach * sizePx) + std::fmod(2 * stroke + gap, 2) / 2;
    const double left = std::round(leftPx + (arrowAdvance * sizePx - 2 * stroke - gap) / 2);
    const double middle = left + stroke + gap / 2;
    const bool isDown = direction == ArrowDirection::down;
    const double tip = isDown ? baselinePx : baselinePx - height;
    const double inward = isDown ? -1 : 1; // away from the tip

    // The lines end where they meet the head.
    const double meets = tip + inward * (gap / 2 + stroke * 1.5);
    const double end = tip + inward * height;
    m_painter.setBrush(color);
    for (const double x : {left, left + stroke + gap})
        m_painter.drawRect(QRectF(QPointF(x, std::min(meets, end)), QPointF(x + stroke, std::max(meets, end))));
    const double thickness = stroke * 1.41;
    const std::array head{QPointF(middle, tip),
                          QPointF(middle + reach, tip + inward * reach),
                          QPointF(middle + reach, tip + inward * (reach + thickness)),
                          QPointF(middle, tip + inward * thickness),
                          QPointF(middle - reach, tip + inward * (reach + thickness)),
                          QPointF(middle - reach, tip + inward * reach)};
    m_painter.drawPolygon(head.data(), static_cast<int>(head.size()));
}

QImage SpeedCanvas::image() {
    m_painter.end();
    return m_image;
}

} // namespace tavrine
