#include "capture/editor/AnnotationRenderer.h"

#include "capture/editor/PlusDarker.h"

#include <QFont>
#include <QFontMetricsF>
#include <QPainter>
#include <QPainterPath>
#include <QStringList>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace tavrine {
namespace {

// Where text and stamps grow from small to middle, and from middle to large.
constexpr double thinnest = 3.5;
constexpr double middling = 7.0;

constexpr double headSpread = std::numbers::pi / 7;
constexpr double shortestHead = 12;
constexpr double longestBareArrow = 4.0;

constexpr double digitPart = 0.48;   // of the stamp's diameter
constexpr double outlinePart = 0.35; // of the line's width
constexpr int digitPixels = 100;     // the size that digits are measured at, before they are scaled

// What antialiasing and the rounding of widths may reach beyond the shape.
constexpr double edge = 1.5;

bool isFinite(const DrawingPath &path, std::span<const QPointF> points) {
    return std::isfinite(path.lineWidth) && std::all_of(points.begin(), points.end(), [](const QPointF &point) {
               return std::isfinite(point.x()) && std::isfinite(point.y());
           });
}

bool pointsUp(const QPainter &painter) {
    return painter.worldTransform().m22() < 0;
}

QPen roundPen(const QColor &color, double lineWidth) {
    return {color, std::max(0.0, lineWidth), Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin};
}

QFont fontOf(QFont::Weight weight, int pixels) {
    QFont font; // the desktop's
    font.setPixelSize(pixels);
    font.setWeight(weight);
    // Letters become part of a picture: no coloured edges made for one screen, and the same shapes at each place.
    font.setHintingPreference(QFont::PreferNoHinting);
    font.setStyleStrategy(QFont::StyleStrategy(QFont::PreferAntialias | QFont::NoSubpixelAntialias));
    return font;
}

// The head's two tips, or none for an arrow that is too short to have a head.
struct Head {
    QPointF left;
    QPointF right;
};

std::optional<Head> headOf(const QPointF &from, const QPointF &to, double lineWidth) {
    const double dx = to.x() - from.x();
    const double dy = to.y() - from.y();
    const double length = std::hypot(dx, dy);
    if (length <= longestBareArrow)
        return std::nullopt;
    const double angle = std::atan2(dy / length, dx / length);
    const double side = std::max(4 * lineWidth, shortestHead);
    return Head{to - side * QPointF(std::cos(angle - headSpread), std::sin(angle - headSpread)),
                to - side * QPointF(std::cos(angle + headSpread), std::sin(angle + headSpread))};
}

QRectF spanned(const QPointF &a, const QPointF &b) {
    return {QPointF(std::min(a.x(), b.x()), std::min(a.y(), b.y())),
            QSizeF(std::abs(b.x() - a.x()), std::abs(b.y() - a.y()))};
}

QRectF around(std::span<const QPointF> points, double margin) {
    double left = points[0].x(), right = left, top = points[0].y(), bottom = top;
    for (const QPointF &point : points) {
        left = std::min(left, point.x());
        right = std::max(right, point.x());
        top = std::min(top, point.y());
        bottom = std::max(bottom, point.y());
    }
    return QRectF(left, top, right - left, bottom - top).adjusted(-margin, -margin, margin, margin);
}

// Within `paint` (0, 0) is the rectangle's upper left corner as a person sees it, and y grows downwards.
template <class Paint>
void paintUpright(QPainter &painter, const QRectF &rect, const Paint &paint) {
    painter.save();
    if (pointsUp(painter)) {
        painter.translate(rect.bottomLeft());
        painter.scale(1, -1);
    } else {
        painter.translate(rect.topLeft());
    }
    painter.setLayoutDirection(Qt::LayoutDirectionAuto);
    paint();
    painter.restore();
}

QStringList linesOf(const QString &text) {
    QString lines = text;
    lines.replace(QStringLiteral("\r\n"), QStringLiteral("\n")).replace(QLatin1Char('\r'), QLatin1Char('\n'));
    return lines.split(QLatin1Char('\n'));
}

QString visibleText(const DrawingPath &path) {
    const QString text = path.text.value_or(QString());
    return text.trimmed().isEmpty() ? QString() : text;
}

QRectF textRect(const QPointF &at, const QSizeF &extent, bool flipText) {
    const double y = flipText ? std::max(0.0, at.y() - extent.height()) : at.y();
    return {QPointF(at.x(), y), extent};
}

bool touches(const QPointF &from, const QPointF &to, const QRectF &rect) {
    if (std::max(from.x(), to.x()) < rect.left() || std::min(from.x(), to.x()) > rect.right() ||
        std::max(from.y(), to.y()) < rect.top() || std::min(from.y(), to.y()) > rect.bottom())
        return false;
    // All corners on one side of the line: it passes the rectangle by.
    const QPointF along = to - from;
    const auto side = [&](const QPointF &corner) {
        return along.x() * (corner.y() - from.y()) - along.y() * (corner.x() - from.x());
    };
    const double sides[] = {side(rect.topLeft()), side(rect.topRight()), side(rect.bottomLeft()),
                            side(rect.bottomRight())};
    return !(std::all_of(std::begin(sides), std::end(sides), [](double one) { return one > 0; }) ||
             std::all_of(std::begin(sides), std::end(sides), [](double one) { return one < 0; }));
}

// The stroke as far as it colours `part`. Where the line is cut its new end is further away than its roundness reaches,
// so that the part looks as that of the whole. False when there is nothing of it.
bool renderStrokeNear(QPainter &painter, std::span<const QPointF> points, const QColor &color, double lineWidth,
                      const QRectF &part) {
    if (points.size() < 2)
        return false;
    const double reach = std::max(0.0, lineWidth) / 2 + edge;
    const QRectF near = part.adjusted(-reach, -reach, reach, reach);
    QPainterPath line;
    bool isNear = false;    // any segment
    bool isDrawing = false; // the one before
    bool hasLength = false;
    for (size_t i = 1; i < points.size(); ++i) {
        const bool isDrawn = touches(points[i - 1], points[i], near);
        if (isDrawn && !isDrawing)
            line.moveTo(points[i - 1]);
        if (isDrawn)
            line.lineTo(points[i]);
        isDrawing = isDrawn;
        isNear = isNear || isDrawn;
        hasLength = hasLength || (isDrawn && points[i] != points[i - 1]);
    }
    if (hasLength)
        painter.strokePath(line, roundPen(color, lineWidth));
    else if (isNear) // a segment without length with no other at its ends: all of it is a dot
        renderStroke(painter, points, color, lineWidth);
    return isNear;
}

void renderArrow(QPainter &painter, const QPointF &from, const QPointF &to, const QColor &color, double lineWidth) {
    const std::array shaft{from, to};
    renderStroke(painter, shaft, color, lineWidth);
    if (const std::optional<Head> head = headOf(from, to, lineWidth)) {
        const std::array tips{head->left, to, head->right};
        renderStroke(painter, tips, color, lineWidth);
    }
}

void renderRectangle(QPainter &painter, const QRectF &rect, const QColor &color, double lineWidth) {
    QPainterPath outline(rect.topLeft());
    outline.lineTo(rect.topRight());
    outline.lineTo(rect.bottomRight());
    outline.lineTo(rect.bottomLeft());
    outline.closeSubpath();
    painter.strokePath(outline, roundPen(color, lineWidth));
}

void renderText(QPainter &painter, const DrawingPath &path, const QPointF &at, bool flipText) {
    const QString text = visibleText(path);
    if (text.isEmpty())
        return;
    const QRectF rect = textRect(at, annotationTextExtent(text, path.lineWidth), flipText);
    paintUpright(painter, rect, [&] {
        const QFont font = annotationFont(path.lineWidth);
        const QFontMetricsF metrics(font);
        painter.setFont(font);
        painter.setPen(path.color);
        double baseline = metrics.ascent();
        for (const QString &line : linesOf(text)) {
            painter.drawText(QPointF(0, baseline), line);
            baseline += metrics.lineSpacing();
        }
    });
}

void renderKind(QPainter &painter, const DrawingPath &path, std::span<const QPointF> points, bool flipText) {
    const bool hasTwo = points.size() >= 2;
    switch (path.kind) {
    case DrawingKind::path:
        renderStroke(painter, points, path.color, path.lineWidth);
        break;
    case DrawingKind::arrow:
        if (hasTwo)
            renderArrow(painter, points[0], points[1], path.color, path.lineWidth);
        break;
    case DrawingKind::rectangle:
        if (hasTwo)
            renderRectangle(painter, spanned(points[0], points[1]), path.color, path.lineWidth);
        break;
    case DrawingKind::oval:
        if (hasTwo) {
            QPainterPath outline;
            outline.addEllipse(spanned(points[0], points[1]));
            painter.strokePath(outline, roundPen(path.color, path.lineWidth));
        }
        break;
    case DrawingKind::text:
        renderText(painter, path, points[0], flipText);
        break;
    case DrawingKind::number:
        renderStamp(painter, path.number.value_or(1), path.color, points[0].x(), points[0].y(), path.lineWidth);
        break;
    }
}

struct StampText {
    QString digits;
    double scale;
    QRectF box; // centred on the stamp, as a person sees it
};

StampText stampText(int number, const QPointF &centre, double diameter) {
    const QFontMetricsF metrics(fontOf(QFont::Bold, digitPixels));
    const QString digits = QString::number(number);
    const double scale = digitPart * diameter / digitPixels;
    const QSizeF size(metrics.horizontalAdvance(digits) * scale, metrics.height() * scale);
    return {digits, scale, QRectF(centre - QPointF(size.width(), size.height()) / 2, size)};
}

} // namespace

int annotationTextSize(double lineWidth) {
    return lineWidth <= thinnest ? 18 : lineWidth <= middling ? 24 : 32;
}

double stampDiameter(double lineWidth) {
    return lineWidth <= thinnest ? 26 : lineWidth <= middling ? 34 : 44;
}

QFont annotationFont(double lineWidth) {
    return fontOf(QFont::DemiBold, annotationTextSize(lineWidth));
}

QSizeF annotationTextExtent(const QString &text, double lineWidth) {
    const QFontMetricsF metrics(annotationFont(lineWidth));
    const QStringList lines = linesOf(text);
    double width = 0;
    for (const QString &line : lines)
        width = std::max(width, metrics.horizontalAdvance(line));
    return {width, metrics.height() + double(lines.size() - 1) * metrics.lineSpacing()};
}

void renderStroke(QPainter &painter, std::span<const QPointF> points, const QColor &color, double lineWidth) {
    if (points.size() < 2)
        return;
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    const bool isDot =
        std::all_of(points.begin(), points.end(), [&](const QPointF &point) { return point == points[0]; });
    if (isDot) {
        // A line without length has its two round ends. QPainterPath drops such a line.
        painter.setPen(Qt::NoPen);
        painter.setBrush(color);
        painter.drawEllipse(points[0], lineWidth / 2, lineWidth / 2);
    } else {
        QPainterPath line(points[0]);
        line.reserve(static_cast<int>(points.size()));
        for (const QPointF &point : points.subspan(1))
            line.lineTo(point);
        painter.strokePath(line, roundPen(color, lineWidth));
    }
    painter.restore();
}

void renderStamp(QPainter &painter, int number, const QColor &color, double x, double y, double lineWidth) {
    const QPointF centre(x, y);
    const double diameter = stampDiameter(lineWidth);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    painter.drawEllipse(centre, diameter / 2, diameter / 2);
    painter.setPen(QPen(Qt::white, std::max(outlinePart * lineWidth, 1.0)));
    painter.setBrush(Qt::NoBrush);
    painter.drawEllipse(centre, diameter / 2, diameter / 2);

    const StampText text = stampText(number, centre, diameter);
    paintUpright(painter, text.box, [&] {
        const QFont font = fontOf(QFont::Bold, digitPixels);
        painter.scale(text.scale, text.scale);
        painter.setFont(font);
        painter.setPen(Qt::white);
        painter.drawText(QPointF(0, QFontMetricsF(font).ascent()), text.digits);
    });
    painter.restore();
}

void renderDrawing(QPainter &painter, const DrawingPath &path, std::span<const QPointF> points, bool flipText) {
    if (points.empty() || !isFinite(path, points))
        return;
    painter.save();
    painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing);
    if (path.isHighlighter) {
        paintPlusDarker(painter, drawingBounds(path, points, flipText), [&](QPainter &layer, const QRectF &part) {
            if (path.kind == DrawingKind::path)
                return renderStrokeNear(layer, points, path.color, path.lineWidth, part);
            renderKind(layer, path, points, flipText);
            return true;
        });
    } else {
        renderKind(painter, path, points, flipText);
    }
    painter.restore();
}

QRectF drawingBounds(const DrawingPath &path, std::span<const QPointF> points, bool flipText) {
    if (points.empty() || !isFinite(path, points))
        return {};
    const double margin = std::max(0.0, path.lineWidth) / 2 + edge;
    switch (path.kind) {
    case DrawingKind::path:
        return points.size() < 2 ? QRectF() : around(points, margin);
    case DrawingKind::arrow: {
        if (points.size() < 2)
            return {};
        std::vector<QPointF> all{points[0], points[1]};
        if (const std::optional<Head> head = headOf(points[0], points[1], path.lineWidth))
            all.insert(all.end(), {head->left, head->right});
        return around(all, margin);
    }
    case DrawingKind::rectangle:
    case DrawingKind::oval:
        return points.size() < 2 ? QRectF() : around(points.first(2), margin);
    case DrawingKind::text: {
        const QString text = visibleText(path);
        if (text.isEmpty())
            return {};
        const QRectF rect = textRect(points[0], annotationTextExtent(text, path.lineWidth), flipText);
        // Letters reach beyond what is measured: a slanted last one, and marks above and below.
        const double overhang = annotationTextSize(path.lineWidth);
        return rect.adjusted(-overhang, -overhang, overhang, overhang);
    }
    case DrawingKind::number: {
        const double diameter = stampDiameter(path.lineWidth);
        const double outline = std::max(outlinePart * path.lineWidth, 1.0);
        const QRectF box = stampText(path.number.value_or(1), points[0], diameter).box;
        return around(points.first(1), diameter / 2 + outline / 2 + edge) | box.adjusted(-edge, -edge, edge, edge);
    }
    }
    return {};
}

std::vector<QPointF> pointsIn(const DrawingPath &path, const QSizeF &size) {
    std::vector<QPointF> points;
    points.reserve(path.points.size());
    for (const QPointF &point : path.points)
        points.emplace_back(point.x() * size.width(), point.y() * size.height());
    return points;
}

std::vector<QPointF> flippedPointsIn(const DrawingPath &path, const QSizeF &size) {
    std::vector<QPointF> points;
    points.reserve(path.points.size());
    for (const QPointF &point : path.points)
        points.emplace_back(size.width() * point.x(), size.height() * (1 - point.y()));
    return points;
}

} // namespace tavrine
