#include "look/Symbols.h"

#include "look/SymbolTable.h"

#include <QCache>
#include <QHash>
#include <QImage>
#include <QPaintDevice>
#include <QPainter>

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>

namespace tavrine::look {
namespace {

using symboltable::Entry;
using symboltable::Layer;
using symboltable::LayerWay;

// Empty space round a badge, in units of the icon: the icons' own strokes are 16 wide.
constexpr qreal badgeGap = 14;

struct Key {
    const Entry *entry;
    QRgb colour;
    int pixels;
    bool operator==(const Key &) const = default;
};

size_t qHash(const Key &key, size_t seed) {
    return qHashMulti(seed, key.entry, key.colour, key.pixels);
}

QCache<Key, QPixmap> &cache() {
    static QCache<Key, QPixmap> pictures(symbolCacheBytes);
    return pictures;
}

const Entry *find(const QString &name) {
    const QByteArray wanted = name.toLatin1();
    const std::string_view text(wanted.constData(), size_t(wanted.size()));
    const auto entries = symboltable::entries;
    const auto found = std::lower_bound(entries.begin(), entries.end(), text,
                                        [](const Entry &entry, std::string_view other) { return entry.name < other; });
    return found != entries.end() && found->name == text ? &*found : nullptr;
}

QPainterPath pathOf(const Layer &layer) {
    QPainterPath path;
    path.setFillRule(Qt::WindingFill);
    const auto numbers = symboltable::numbers.subspan(layer.first, layer.count);
    size_t at = 0;
    const auto point = [&] {
        const qreal x = numbers[at++] / qreal(symboltable::stepsPerUnit);
        const qreal y = numbers[at++] / qreal(symboltable::stepsPerUnit);
        return QPointF(x * layer.scale + layer.x, y * layer.scale + layer.y);
    };
    while (at < numbers.size()) {
        switch (numbers[at++]) {
        case 0:
            path.moveTo(point());
            break;
        case 1:
            path.lineTo(point());
            break;
        case 2: {
            const QPointF first = point();
            const QPointF second = point();
            path.cubicTo(first, second, point());
            break;
        }
        default:
            path.closeSubpath();
        }
    }
    return path;
}

/// How far the picture is moved so that most of its straight strokes have both edges on the grid of pixels. Strokes are
/// 16 of 256 units wide, and each icon has its own idea of where they lie, in either direction.
QPointF shiftOntoGrid(const Entry &entry, qreal scale) {
    const qreal stroke = 16 * scale;
    if (std::abs(stroke - std::round(stroke)) > 0.01)
        return {};                                // no shift puts both edges there
    std::array<std::array<qreal, 2>, 2> onGrid{}; // by direction, then without and with half a pixel
    for (const Layer &layer : symboltable::layers.subspan(entry.firstLayer, entry.layerCount)) {
        const QPainterPath path = pathOf(layer);
        for (int i = 1; i < path.elementCount(); ++i) {
            const QPointF from = path.elementAt(i - 1);
            const QPointF to = path.elementAt(i);
            const bool isUpright = from.x() == to.x();
            if (path.elementAt(i).type != QPainterPath::LineToElement || isUpright == (from.y() == to.y()))
                continue;
            const qreal place = (isUpright ? from.x() : from.y()) * scale;
            for (const size_t half : {0, 1}) {
                const qreal moved = place + qreal(half) / 2;
                if (std::abs(moved - std::round(moved)) < 0.05)
                    onGrid.at(isUpright ? 0 : 1).at(half) += std::abs(to.x() - from.x()) + std::abs(to.y() - from.y());
            }
        }
    }
    const auto shift = [isOdd = std::lround(stroke) % 2 == 1](const std::array<qreal, 2> &lengths) {
        if (lengths[0] == lengths[1])
            return isOdd ? 0.5 : 0.0; // nothing straight: about multiples of 16, as most icons
        return lengths[1] > lengths[0] ? 0.5 : 0.0;
    };
    return {shift(onGrid[0]), shift(onGrid[1])};
}

QPixmap draw(const Entry &entry, const QColor &colour, int pixels) {
    QImage image(pixels, pixels, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    const qreal scale = pixels / qreal(symboltable::unitsPerIcon);
    painter.translate(shiftOntoGrid(entry, scale));
    painter.scale(scale, scale);
    for (const Layer &layer : symboltable::layers.subspan(entry.firstLayer, entry.layerCount)) {
        const QPainterPath path = pathOf(layer);
        if (layer.way == LayerWay::badge) {
            painter.setCompositionMode(QPainter::CompositionMode_Clear);
            painter.setPen(Qt::NoPen);
            painter.setBrush(Qt::black);
            const QRectF bounds = path.boundingRect().adjusted(-badgeGap, -badgeGap, badgeGap, badgeGap);
            painter.drawEllipse(bounds);
        }
        painter.setCompositionMode(layer.way == LayerWay::cut ? QPainter::CompositionMode_DestinationOut
                                                              : QPainter::CompositionMode_SourceOver);
        painter.fillPath(path, layer.way == LayerWay::cut ? QColor(Qt::black) : colour);
    }
    painter.end();
    return QPixmap::fromImage(std::move(image));
}

const QPixmap *picture(const Entry &entry, const QColor &colour, int pixels) {
    const Key key{&entry, colour.rgba(), pixels};
    if (const QPixmap *kept = cache().object(key))
        return kept;
    auto made = std::make_unique<QPixmap>(draw(entry, colour, pixels));
    const qsizetype bytes = qsizetype(pixels) * pixels * 4;
    if (bytes > symbolCacheBytes)
        return nullptr;
    cache().insert(key, made.release(), bytes);
    return cache().object(key);
}

} // namespace

bool hasSymbol(const QString &name) {
    return find(name) != nullptr;
}

QStringList symbolNames() {
    QStringList names;
    for (const Entry &entry : symboltable::entries)
        names.append(QString::fromLatin1(entry.name));
    return names;
}

void paintSymbol(QPainter &painter, const QRectF &rect, const QString &name, qreal size, const QColor &colour) {
    const Entry *entry = find(name);
    const qreal scale = painter.device()->devicePixelRatioF();
    const int pixels = int(std::lround(size * scale));
    if (!entry || pixels <= 0)
        return;
    const qreal side = pixels / scale;
    // On whole device pixels, or the picture would be resampled and lose its sharp edges.
    const QPointF origin = painter.worldTransform().map(rect.center() - QPointF(side / 2, side / 2));
    const QPointF snapped(std::round(origin.x() * scale) / scale, std::round(origin.y() * scale) / scale);
    const QPointF place = painter.worldTransform().inverted().map(snapped);
    if (const QPixmap *kept = picture(*entry, colour, pixels))
        painter.drawPixmap(QRectF(place, QSizeF(side, side)), *kept, QRectF(0, 0, pixels, pixels));
    else
        painter.drawPixmap(QRectF(place, QSizeF(side, side)), draw(*entry, colour, pixels),
                           QRectF(0, 0, pixels, pixels));
}

QPixmap symbolPixmap(const QString &name, qreal size, const QColor &colour, qreal scale) {
    const Entry *entry = find(name);
    const int pixels = int(std::lround(size * scale));
    if (!entry || pixels <= 0)
        return {};
    const QPixmap *kept = picture(*entry, colour, pixels);
    QPixmap result = kept ? *kept : draw(*entry, colour, pixels);
    result.setDevicePixelRatio(scale);
    return result;
}

qsizetype symbolCacheUse() {
    return cache().totalCost();
}

} // namespace tavrine::look
