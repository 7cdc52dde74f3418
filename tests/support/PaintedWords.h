#pragma once

#include <QPaintDevice>
#include <QPaintEngine>
#include <QStringList>

namespace tavrine::test {

/// Paints nothing, and writes down the words.
class WordsEngine final : public QPaintEngine {
public:
    WordsEngine() : QPaintEngine(AllFeatures) {}
    bool begin(QPaintDevice *) override { return true; }
    bool end() override { return true; }
    void updateState(const QPaintEngineState &) override {}
    void drawPixmap(const QRectF &, const QPixmap &, const QRectF &) override {}
    void drawPolygon(const QPointF *, int, PolygonDrawMode) override {}
    void drawPath(const QPainterPath &) override {}
    void drawImage(const QRectF &, const QImage &, const QRectF &, Qt::ImageConversionFlags) override {}
    void drawTextItem(const QPointF &, const QTextItem &item) override { words.append(item.text()); }
    [[nodiscard]] Type type() const override { return User; }

    QStringList words;
};

/// Where a widget is rendered to learn what it says, as it is cut.
class WordsDevice final : public QPaintDevice {
public:
    explicit WordsDevice(QSize size) : m_size(size) {}
    [[nodiscard]] QPaintEngine *paintEngine() const override { return &m_engine; }
    [[nodiscard]] const QStringList &words() const { return m_engine.words; }

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
