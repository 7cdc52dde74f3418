#pragma once

#include <QColor>
#include <QFont>
#include <QImage>
#include <QPainter>
#include <QRectF>
#include <QStringList>

namespace tavrine {

enum class ArrowDirection { up, down };

/// A picture to draw on in points, with the origin at the lower left, or `bottom` points below it. What is drawn is put
/// on whole device pixels.
class SpeedCanvas {
public:
    SpeedCanvas(int width, int height, double scale, int bottom = 0);

    void fillRounded(const QRectF &points, double radius, const QColor &color);
    /// The symbol; where there is none of that name, an oval in its place.
    void symbolOrOval(const QRectF &points, const QString &name, const QRectF &oval, const QColor &color);
    /// False when there is no such symbol.
    [[nodiscard]] bool symbol(const QRectF &points, const QString &name, const QColor &color);

    /// How text is set: `size` in points.
    struct Style {
        double size;
        QFont::Weight weight;
        QColor color;
    };
    /// One line at the top of the rectangle. What is wider than the rectangle is set smaller.
    void text(const QRectF &points, const QString &text, const Style &style, Qt::AlignmentFlag alignment);
    /// The same behind an arrow and a blank.
    void textWithArrow(const QRectF &points, ArrowDirection direction, const QString &text, const Style &style);
    /// An arrow whose line's lower left corner is at that point.
    void arrow(QPointF point, ArrowDirection direction, const Style &style);

    [[nodiscard]] static double lineHeight(double size);
    /// The style's size, or the smaller one at which each of the texts is no wider than `width` points.
    [[nodiscard]] double sizeThatFits(const QStringList &texts, double width, const Style &style) const;

    [[nodiscard]] QImage image();

private:
    [[nodiscard]] QRectF pixels(const QRectF &points) const;
    [[nodiscard]] QFont fontThatFits(const QString &text, const Style &style, double widthPx) const;
    void drawArrow(double leftPx, double baselinePx, double sizePx, ArrowDirection direction, const QColor &color);

    double m_scale;
    int m_top; ///< of the picture, in points above the origin
    QImage m_image;
    QPainter m_painter;
};

} // namespace tavrine
