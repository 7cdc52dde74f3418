#include "look/ToolTip.h"

#include "base/DesktopWords.h"
#include "look/Look.h"
#include "look/Metrics.h"
#include "look/Paint.h"

#include <QApplication>
#include <QBitmap>
#include <QPainter>
#include <QPointer>
#include <QScreen>
#include <QWidget>

#include <algorithm>
#include <cmath>

namespace tavrine::look::ToolTip {
namespace {

constexpr int labelHeight = 26;
constexpr int longest = 360;

class Label final : public QWidget {
public:
    Label()
        : QWidget(nullptr, Qt::ToolTip | Qt::FramelessWindowHint | Qt::WindowDoesNotAcceptFocus |
                               Qt::WindowTransparentForInput) {
        setAttribute(Qt::WA_ShowWithoutActivating);
        setAttribute(Qt::WA_TransparentForMouseEvents);
        setAttribute(Qt::WA_TranslucentBackground, Look::composites());
    }

    void present(QWidget *widget, const QString &text, const QRect &area) {
        m_widget = widget;
        m_text = text;
        const int width = std::min(longest, int(std::ceil(lineWidth(text, TextRole::callout))) + 2 * 10);
        resize(width, labelHeight);
        if (!testAttribute(Qt::WA_TranslucentBackground)) {
            QBitmap mask(size());
            mask.fill(Qt::color0);
            QPainter painter(&mask);
            painter.setBrush(Qt::color1);
            painter.drawRoundedRect(rect().adjusted(0, 0, -1, -1), 6, 6);
            painter.end();
            setMask(mask);
        }
        const QRect anchor(widget->mapToGlobal(area.topLeft()), area.size());
        const QRect screen = widget->screen()->availableGeometry();
        int y = anchor.bottom() + 6;
        if (y + labelHeight > screen.bottom())
            y = anchor.top() - 6 - labelHeight;
        const int x = std::clamp(anchor.center().x() - width / 2, screen.left() + 4,
                                 std::max(screen.left() + 4, screen.right() - width - 4));
        move(x, y);
        update();
        show();
    }

protected:
    void paintEvent(QPaintEvent *) override {
        QPainter painter(this);
        preparePainter(painter);
        const Theme &theme = themeOf(m_widget ? m_widget.data() : this);
        fillRounded(painter, rect(), 6, theme.toolTip);
        strokeHairline(painter, rect(), 6, QColor(255, 255, 255, 30));
        paintLine(painter, QRectF(rect()).adjusted(10, 0, -9, 0), m_text, TextRole::callout, theme.onToolTip);
    }

private:
    QPointer<QWidget> m_widget;
    QString m_text;
};

QPointer<Label> label;

} // namespace

void show(QWidget *widget, const QString &text, const QRect &area) {
    hide();
    if (text.isEmpty())
        return;
    // Made for each showing: it is seldom seen, and kept it would hold a window for ever.
    label = new Label;
    label->present(widget, text, area);
    QObject::connect(widget, &QObject::destroyed, label, [] { hide(); });
}

void hide() {
    if (Label *shown = label) {
        label.clear();
        shown->hide();
        shown->deleteLater();
    }
}

bool isShown() {
    return label && label->isVisible();
}

} // namespace tavrine::look::ToolTip
