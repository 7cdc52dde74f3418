#include "adapters/linux/DrawnFileIcon.h"

#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>

namespace tavrine {
namespace {

/// A painter over a transparent square of 64 by 64 units.
class Canvas {
public:
    explicit Canvas(int pixels) : m_image(pixels, pixels, QImage::Format_ARGB32_Premultiplied) {
        m_image.fill(Qt::transparent);
        m_painter.begin(&m_image);
        m_painter.setRenderHint(QPainter::Antialiasing);
        m_painter.scale(pixels / 64.0, pixels / 64.0);
        m_painter.setPen(Qt::NoPen);
    }
    [[nodiscard]] QPainter &painter() { return m_painter; }
    [[nodiscard]] QImage finished() {
        m_painter.end();
        return m_image;
    }

private:
    QImage m_image;
    QPainter m_painter;
};

QLinearGradient downwards(const QColor &top, const QColor &bottom) {
    QLinearGradient gradient(0, 4, 0, 60);
    gradient.setColorAt(0, top);
    gradient.setColorAt(1, bottom);
    return gradient;
}

void drawSheet(QPainter &painter) {
    constexpr double fold = 13;
    QPainterPath sheet;
    sheet.moveTo(15, 4);
    sheet.lineTo(52 - fold, 4);
    sheet.lineTo(52, 4 + fold);
    sheet.lineTo(52, 57);
    sheet.quadTo(52, 60, 49, 60);
    sheet.lineTo(15, 60);
    sheet.quadTo(12, 60, 12, 57);
    sheet.lineTo(12, 7);
    sheet.quadTo(12, 4, 15, 4);
    painter.fillPath(sheet, downwards(QColor(0xFF, 0xFF, 0xFF), QColor(0xE8, 0xEA, 0xEE)));
    painter.strokePath(sheet, QPen(QColor(0, 0, 0, 40), 0.75));
    QPainterPath corner;
    corner.moveTo(52 - fold, 4);
    corner.lineTo(52, 4 + fold);
    corner.lineTo(52 - fold + 2, 4 + fold);
    corner.quadTo(52 - fold, 4 + fold, 52 - fold, 4 + fold - 2);
    corner.closeSubpath();
    painter.fillPath(corner, QColor(0xC9, 0xCE, 0xD6));
}

void drawLines(QPainter &painter, const QColor &colour) {
    const double widths[] = {28, 28, 24, 28, 16};
    for (int line = 0; line < 5; ++line)
        painter.fillRect(QRectF(18, 25 + line * 6.5, widths[line], 2.5), colour);
}

void drawPicture(QPainter &painter) {
    const QRectF frame(18, 24, 28, 26);
    painter.fillRect(frame, QColor(0x8C, 0xC4, 0xF0));
    painter.setBrush(QColor(0xFF, 0xE0, 0x7A));
    painter.drawEllipse(QPointF(38.5, 31), 3.2, 3.2);
    painter.setClipRect(frame);
    painter.setBrush(QColor(0x4F, 0x9A, 0x64));
    painter.drawPolygon(QPolygonF({{14, 52}, {26, 33}, {38, 52}}));
    painter.setBrush(QColor(0x3C, 0x80, 0x52));
    painter.drawPolygon(QPolygonF({{28, 52}, {38, 39}, {48, 52}}));
}

void drawFilm(QPainter &painter) {
    painter.setBrush(QColor(0x4A, 0x4E, 0x58));
    painter.drawRoundedRect(QRectF(18, 26, 28, 22), 3, 3);
    painter.setBrush(Qt::white);
    painter.drawPolygon(QPolygonF({{28.5, 31}, {28.5, 43}, {38.5, 37}}));
}

void drawNote(QPainter &painter) {
    painter.setBrush(QColor(0xD0, 0x50, 0x7E));
    painter.drawEllipse(QPointF(25, 47), 5, 4);
    painter.drawEllipse(QPointF(40, 44), 5, 4);
    painter.drawPolygon(
        QPolygonF({{27.4, 47}, {27.4, 27}, {45, 23.5}, {45, 44}, {42.4, 44}, {42.4, 30}, {30, 32.5}, {30, 47}}));
}

void drawParcel(QPainter &painter) {
    painter.setBrush(QColor(0xD8, 0xB1, 0x78));
    painter.drawRoundedRect(QRectF(18, 25, 28, 25), 2, 2);
    painter.fillRect(QRectF(29, 25, 6, 25), QColor(0xA9, 0x80, 0x48));
}

void drawWheel(QPainter &painter) {
    painter.save();
    painter.translate(32, 38);
    painter.setBrush(QColor(0x76, 0x7E, 0x8C));
    for (int tooth = 0; tooth < 8; ++tooth) {
        painter.drawRoundedRect(QRectF(-2.6, -12.5, 5.2, 7), 1, 1);
        painter.rotate(45);
    }
    painter.drawEllipse(QPointF(), 9, 9);
    painter.setBrush(QColor(0xF2, 0xF3, 0xF6));
    painter.drawEllipse(QPointF(), 3.6, 3.6);
    painter.restore();
}

} // namespace

QImage drawnFolderIcon(int pixels) {
    Canvas canvas(pixels);
    QPainterPath back;
    back.addRoundedRect(QRectF(5, 12, 24, 16), 4, 4);
    back.addRoundedRect(QRectF(5, 17, 54, 36), 4, 4);
    back.setFillRule(Qt::WindingFill);
    canvas.painter().fillPath(back, QColor(0x3F, 0x86, 0xD2));
    QPainterPath front;
    front.addRoundedRect(QRectF(5, 23, 54, 31), 4, 4);
    canvas.painter().fillPath(front, downwards(QColor(0x86, 0xBF, 0xF6), QColor(0x55, 0x9D, 0xE8)));
    return canvas.finished();
}

QImage drawnFileIcon(const QString &kind, int pixels) {
    Canvas canvas(pixels);
    QPainter &painter = canvas.painter();
    drawSheet(painter);
    const auto is = [&](std::initializer_list<const char *> parts) {
        return std::any_of(parts.begin(), parts.end(),
                           [&](const char *part) { return kind.contains(QLatin1String(part)); });
    };
    if (kind.startsWith(QStringLiteral("image")))
        drawPicture(painter);
    else if (kind.startsWith(QStringLiteral("video")))
        drawFilm(painter);
    else if (kind.startsWith(QStringLiteral("audio")))
        drawNote(painter);
    else if (is({"zip", "compress", "-tar", "archive", "package", "7z", "-rar", "-deb", "-rpm"}))
        drawParcel(painter);
    else if (is({"executable", "sharedlib", "shellscript", "x-desktop"}))
        drawWheel(painter);
    else if (is({"pdf"}))
        drawLines(painter, QColor(0xC8, 0x3C, 0x3C));
    else if (is({"text", "document", "word", "office"}))
        drawLines(painter, QColor(0x9A, 0xA2, 0xAE));
    return canvas.finished();
}

} // namespace tavrine
