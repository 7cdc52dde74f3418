#include "look/Shadow.h"

#include "look/Metrics.h"
#include "look/Paint.h"
#include "look/Theme.h"

#include <QImage>
#include <QPaintDevice>
#include <QPainter>
#include <QPixmap>

#include <algorithm>
#include <cmath>
#include <vector>

namespace tavrine::look {
namespace {

constexpr qreal softness = 15; // standard deviation of the blur, in points
constexpr qreal drop = 12;     // how far below the panel its shadow lies

// Three boxes after each other are a Gaussian to within 3 %.
void blurLine(std::vector<float> &line, std::vector<float> &out, int radius) {
    const int length = int(line.size());
    const float part = 1.0F / float(2 * radius + 1);
    for (int pass = 0; pass < 3; ++pass) {
        float sum = 0;
        for (int i = 0; i <= std::min(radius, length - 1); ++i)
            sum += line[size_t(i)];
        for (int i = 0; i < length; ++i) {
            out[size_t(i)] = sum * part;
            if (i + radius + 1 < length)
                sum += line[size_t(i + radius + 1)];
            if (i - radius >= 0)
                sum -= line[size_t(i - radius)];
        }
        std::swap(line, out);
    }
}

QImage blurred(QImage alpha, int radius) {
    const int width = alpha.width();
    const int height = alpha.height();
    std::vector<float> line;
    std::vector<float> spare;
    for (int y = 0; y < height; ++y) {
        uchar *pixels = alpha.scanLine(y);
        line.assign(pixels, pixels + width);
        spare.resize(line.size());
        blurLine(line, spare, radius);
        for (int x = 0; x < width; ++x)
            pixels[x] = uchar(std::lround(line[size_t(x)]));
    }
    line.resize(size_t(height));
    spare.resize(size_t(height));
    for (int x = 0; x < width; ++x) {
        for (int y = 0; y < height; ++y)
            line[size_t(y)] = alpha.constScanLine(y)[x];
        blurLine(line, spare, radius);
        for (int y = 0; y < height; ++y)
            alpha.scanLine(y)[x] = uchar(std::lround(line[size_t(y)]));
    }
    return alpha;
}

struct Drawing {
    qreal radius = 0;
    qreal scale = 0;
    QColor colour;
    QPixmap picture;
    int reach = 0;  // pixels beyond the rectangle on each side
    int corner = 0; // pixels from the picture's edge to where it repeats itself
};

const Drawing &drawing(qreal radius, qreal scale, const QColor &colour) {
    // The last one only: a process has one kind of panel on one kind of screen, mostly.
    static Drawing last;
    if (last.radius == radius && last.scale == scale && last.colour == colour)
        return last;
    const int box = std::max(1, int(std::lround(softness * scale * 0.94)));
    const int reach = 3 * box;
    const int round = int(std::ceil(radius * scale));
    const int corner = 2 * reach + round;
    const int side = 2 * corner + 1;
    QImage alpha(side, side, QImage::Format_Alpha8);
    alpha.fill(0);
    QPainter painter(&alpha);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(Qt::black);
    painter.drawRoundedRect(QRectF(reach, reach, side - 2 * reach, side - 2 * reach), round, round);
    painter.end();
    alpha = blurred(std::move(alpha), box);
    QImage image(side, side, QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < side; ++y) {
        auto *out = reinterpret_cast<QRgb *>(image.scanLine(y));
        for (int x = 0; x < side; ++x)
            out[x] = qPremultiply(
                qRgba(colour.red(), colour.green(), colour.blue(), alpha.constScanLine(y)[x] * colour.alpha() / 255));
    }
    last = {radius, scale, colour, QPixmap::fromImage(std::move(image)), reach, corner};
    return last;
}

void paintShadow(QPainter &painter, const QRectF &rect, qreal radius, const QColor &colour) {
    const qreal scale = painter.device()->devicePixelRatioF();
    const Drawing &shadow = drawing(radius, scale, colour);
    const qreal reach = shadow.reach / scale;
    const QRectF whole = rect.translated(0, drop).adjusted(-reach, -reach, reach, reach);
    // A rectangle smaller than two corners gets smaller pieces.
    const qreal across = std::min(shadow.corner / scale, whole.width() / 2);
    const qreal down = std::min(shadow.corner / scale, whole.height() / 2);
    const qreal side = shadow.picture.width();
    const qreal corner = shadow.corner;
    const qreal x[] = {whole.left(), whole.left() + across, whole.right() - across, whole.right()};
    const qreal y[] = {whole.top(), whole.top() + down, whole.bottom() - down, whole.bottom()};
    const qreal from[] = {0, corner, side - corner, side};
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 3; ++column) {
            if (row == 1 && column == 1)
                continue; // the panel itself covers it
            painter.drawPixmap(QRectF(QPointF(x[column], y[row]), QPointF(x[column + 1], y[row + 1])), shadow.picture,
                               QRectF(QPointF(from[column], from[row]), QPointF(from[column + 1], from[row + 1])));
        }
    }
}

} // namespace

void paintPanelShadow(QPainter &painter, const QRectF &panel, const Theme &theme) {
    preparePainter(painter);
    paintShadow(painter, panel, radius::panel, theme.shadow);
    if (!theme.isDark)
        return;
    // A dark panel on a dark desktop needs an edge on both sides.
    const qreal pixel = 1 / painter.device()->devicePixelRatioF();
    strokeHairline(painter, panel.adjusted(-pixel, -pixel, pixel, pixel), radius::panel + pixel, QColor(0, 0, 0, 120));
}

} // namespace tavrine::look
