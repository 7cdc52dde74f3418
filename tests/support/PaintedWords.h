#pragma once

#include <QPaintDevice>
#include <QPaintEngine>
#include <QPainter>
#include <QPixmap>
#include <QStringList>

#include <vector>

namespace tavrine::test {

/// One piece of text as it was painted.
struct PaintedWord {
    QString text;
    QRectF place; ///< as much of its line as shows, in the device's pixels
    QFont font;
    QColor colour;       ///< with the painter's opacity
    bool isWhole = true; ///< whether nothing of it is cut off by what lies around it
    double pixels = 0;   ///< the size of its letters on the device
};

/// Paints nothing, and writes down the words and the pictures.
class WordsEngine final : public QPaintEngine {
public:
    WordsEngine() : QPaintEngine(AllFeatures) {}
    bool begin(QPaintDevice *) override { return true; }
    bool end() override { return true; }
    void updateState(const QPaintEngineState &) override {}
    void drawPixmap(const QRectF &, const QPixmap &pixmap, const QRectF &) override { pixmaps.append(pixmap); }
    void drawPolygon(const QPointF *, int, PolygonDrawMode) override {}
    void drawPath(const QPainterPath &) override {}
    void drawImage(const QRectF &, const QImage &, const QRectF &, Qt::ImageConversionFlags) override {}
    void drawTextItem(const QPointF &point, const QTextItem &item) override {
        words.append(item.text());
        const QRectF line(point.x(), point.y() - item.ascent(), item.width(), item.ascent() + item.descent());
        const QTransform toDevice = painter()->deviceTransform();
        const QRectF whole = toDevice.mapRect(line);
        QRectF shown = whole.intersected(QRectF(0, 0, paintDevice()->width(), paintDevice()->height()));
        if (!systemClip().isEmpty())
            shown &= QRectF(systemClip().boundingRect());
        if (painter()->hasClipping())
            shown &= toDevice.mapRect(painter()->clipBoundingRect());
        QColor colour = painter()->pen().color();
        colour.setAlphaF(float(colour.alphaF() * painter()->opacity()));
        painted.push_back({item.text(), shown, item.font(), colour, shown.width() > whole.width() - 1.5,
                           item.font().pixelSize() * toDevice.m22()});
    }
    [[nodiscard]] Type type() const override { return User; }

    QStringList words;
    std::vector<PaintedWord> painted;
    QList<QPixmap> pixmaps;
};

/// Where a widget is rendered to learn what it says, as it is cut.
class WordsDevice final : public QPaintDevice {
public:
    explicit WordsDevice(QSize size) : m_size(size) {}
    [[nodiscard]] QPaintEngine *paintEngine() const override { return &m_engine; }
    [[nodiscard]] const QStringList &words() const { return m_engine.words; }
    [[nodiscard]] const std::vector<PaintedWord> &painted() const { return m_engine.painted; }
    [[nodiscard]] const QList<QPixmap> &pixmaps() const { return m_engine.pixmaps; }

protected:
    [[nodiscard]] int metric(PaintDeviceMetric metric) const override {
        switch (metric) {
        case PdmWidth:
            return m_size.width();
        case PdmHeight:
            return m_size.height();
        case PdmDepth:
            return 32;
        case PdmDevicePixelRatio:
            return 1;
        case PdmDevicePixelRatioScaled:
            return int(devicePixelRatioFScale());
        case PdmDpiX:
        case PdmDpiY:
        case PdmPhysicalDpiX:
        case PdmPhysicalDpiY:
            return 96;
        default:
            return 0;
        }
    }

private:
    QSize m_size;
    mutable WordsEngine m_engine;
};

} // namespace tavrine::test
