#pragma once

#include "ManagerTest.h"
#include "look/Button.h"
#include "look/EmptyState.h"
#include "look/Paint.h"
#include "look/SearchField.h"
#include "look/Symbols.h"
#include "look/ToolTip.h"
#include "look/VirtualList.h"

#include <QAccessible>
#include <QLineEdit>
#include <QPainter>
#include <QTest>
#include <QVBoxLayout>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

namespace tavrine {

/// A view of a clipboard panel in a window of its own, over a real manager. Nothing moves, since there is no Look.
class PanelViewTest : public ManagerTest {
protected:
    void show(QWidget *view, const QString &title, const QSize &size) {
        window.setWindowTitle(title);
        auto *layout = new QVBoxLayout(&window);
        layout->setContentsMargins(0, 0, 0, 0);
        layout->addWidget(view);
        window.resize(size);
        window.show();
        window.activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    }

    [[nodiscard]] look::VirtualList &list() const { return *window.findChild<look::VirtualList *>(); }
    [[nodiscard]] look::EmptyState &empty() const { return *window.findChild<look::EmptyState *>(); }
    [[nodiscard]] QLineEdit &field() const { return *window.findChild<look::SearchField *>()->lineEdit(); }
    [[nodiscard]] look::Button *button(const char *name) const {
        for (look::Button *one : window.findChildren<look::Button *>()) {
            if (one->accessibleName() == str(name))
                return one;
        }
        return nullptr;
    }

    /// What a screen reader hears, row by row, up to the comma before the second line.
    [[nodiscard]] QStringList shown() const {
        QStringList titles;
        if (list().isHidden())
            return titles;
        for (int row = 0; row < list().count(); ++row)
            titles.append(list().accessibleText(row).section(str(", "), 0, 0));
        return titles;
    }
    [[nodiscard]] int rowOf(const char *title) const { return static_cast<int>(shown().indexOf(str(title))); }
    [[nodiscard]] QString selected() const { return shown().value(list().selectedRow(), str("(none)")); }

    /// To the widget that has the keyboard, as the window system sends it.
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        QTest::keyClick(window.windowHandle(), key, modifiers);
    }
    void type(const char *text) { QTest::keyClicks(&field(), str(text)); }
    /// To whatever has the keyboard.
    void typeBlindly(const char *text) {
        for (const char *letter = text; *letter; ++letter)
            QTest::keyClick(window.windowHandle(), *letter);
    }
    void clickRow(const char *title) {
        const QPoint place = list().rowRect(rowOf(title)).toAlignedRect().center();
        QTest::mouseClick(&list(), Qt::LeftButton, {}, place);
    }
    void clickAction(const char *title, size_t action, size_t count) {
        const QRectF rect = list().rowRect(rowOf(title));
        QTest::mouseMove(&list(), rect.center().toPoint());
        QTest::mouseClick(&list(), Qt::LeftButton, {}, look::rowActionRects(rect, count)[action].center().toPoint());
    }
    void wheelOver(QWidget *widget, int notches) {
        const QPointF place = widget->rect().center();
        QWheelEvent event(place, widget->mapToGlobal(place), {}, QPoint(0, -120 * notches), Qt::NoButton,
                          Qt::NoModifier, Qt::NoScrollPhase, false);
        QSpontaneKeyEvent::setSpontaneous(&event); // only what comes from outside goes on to the parents
        qApp->notify(widget, &event);
    }
    [[nodiscard]] std::optional<ClipboardItem> stored(const char *content) {
        for (const ClipboardItem &item : rows()) {
            if (item.content == str(content))
                return item;
        }
        return std::nullopt;
    }
    QImage grabbed() { return window.grab().toImage(); }
    /// Of what shows.
    int pixelsLike(const QColor &color) {
        const QImage image = grabbed().convertToFormat(QImage::Format_RGB32);
        int count = 0;
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                count += image.pixel(x, y) == color.rgb() ? 1 : 0;
        return count;
    }

    /// Which of `symbols` is painted in the middle of `rect` of the list, `side` points high: told by its shape, for
    /// the colours are the theme's. Empty where there is one ground and nothing on it.
    QString symbolInList(const QRectF &rect, qreal side, const QStringList &symbols) {
        const QRect place = QRectF(rect.center() - QPointF(side, side) / 2, QSizeF(side, side)).toRect();
        const Shape shown = shapeOf(list().grab().toImage().copy(place));
        QString nearest;
        qreal least = std::numeric_limits<qreal>::max();
        for (const QString &symbol : symbols) {
            QImage drawn(place.size(), QImage::Format_RGB32);
            drawn.fill(Qt::white);
            QPainter painter(&drawn);
            look::paintSymbol(painter, drawn.rect(), symbol, side, Qt::black);
            painter.end();
            const Shape wanted = shapeOf(drawn);
            qreal difference = 0;
            for (std::size_t i = 0; i < wanted.size(); ++i)
                difference += std::abs(wanted[i] - shown[i]);
            nearest = difference < least ? symbol : nearest;
            least = std::min(difference, least);
        }
        return *std::max_element(shown.begin(), shown.end()) > 0 ? nearest : QString();
    }

    QWidget window;
    QStringList pasted;

private:
    /// How far each pixel is from the ground, which the first one shows: 1 at most.
    using Shape = std::vector<qreal>;
    static Shape shapeOf(const QImage &image) {
        const QColor ground = image.pixelColor(0, 0);
        Shape shape;
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x) {
                const QColor pixel = image.pixelColor(x, y);
                shape.push_back(std::abs(pixel.red() - ground.red()) + std::abs(pixel.green() - ground.green()) +
                                std::abs(pixel.blue() - ground.blue()));
            }
        const qreal farthest = *std::max_element(shape.begin(), shape.end());
        for (qreal &each : shape)
            each = farthest > 0 ? each / farthest : 0;
        return shape;
    }
};

} // namespace tavrine
