#include "shell/settings/LayoutPreviewView.h"

#include "base/DesktopWords.h"
#include "look/Accessibility.h"
#include "look/Control.h"
#include "look/Look.h"
#include "look/Metrics.h"
#include "look/Paint.h"
#include "look/Symbols.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>

#include <algorithm>
#include <utility>

namespace tavrine {

using namespace look;

namespace {

constexpr int menuWidth = 290; // the menu's, where the page has room for it
constexpr int leastWidth = 200;
constexpr int padding = 12;
constexpr int spacing = 8;
constexpr int itemHeight = 44;
constexpr int emptyHeight = 96;
constexpr double draggedScale = 0.94;
constexpr double draggedOpacity = 0.6;
const QString moveEarlier = QStringLiteral("Move Earlier");
const QString moveLater = QStringLiteral("Move Later");
const Spring reorder = Spring::responding(0.3, 0.825);

} // namespace

class LayoutPreviewView::Item final : public Control {
public:
    Item(QuickAction action, LayoutPreviewView &view) : Control(&view), m_action(action), m_view(view) {
        setText(inDesktopWords(QLatin1String(textOf(action).title)));
        setAccessibleDescription(inDesktopWords(QStringLiteral("Drag to reorder")));
        setFocusPolicy(Qt::StrongFocus);
        setCursor(Qt::OpenHandCursor);
    }

    [[nodiscard]] QStringList actionNames() const override {
        return {inDesktopWords(moveEarlier), inDesktopWords(moveLater)};
    }
    void act(const QString &name) override {
        m_view.m_model.moveBy(m_action, name == inDesktopWords(moveLater) ? 1 : -1);
    }

protected:
    void paint(QPainter &painter) override {
        if (m_view.m_model.dragging() == m_action) {
            painter.setOpacity(draggedOpacity);
            painter.translate(rect().center());
            painter.scale(draggedScale, draggedScale);
            painter.translate(-rect().center());
        }
        fillRounded(painter, rect(), radius::row, ground(theme().elevated));
        strokeHairline(painter, rect(), radius::row, theme().outline);
        const QRectF symbol(space::small, 0, symbolsize::large, height());
        paintSymbol(painter, symbol, QLatin1String(textOf(m_action).icon), symbolsize::medium, theme().text);
        const qreal left = symbol.right() + space::small;
        const QRectF words(left, 0, width() - left - space::tiny, height());
        if (lineWidth(text(), TextRole::callout) <= words.width()) {
            paintLine(painter, words, text(), TextRole::callout, theme().text);
            return;
        }
        painter.setFont(fontFor(TextRole::mini));
        painter.setPen(theme().text);
        painter.drawText(words, int(Qt::AlignLeft) | int(Qt::AlignVCenter) | int(Qt::TextWordWrap), text());
    }
    void mousePressEvent(QMouseEvent *event) override {
        if (event->button() != Qt::LeftButton)
            return;
        setFocus(Qt::MouseFocusReason);
        m_view.m_model.beginDrag(m_action);
        setCursor(Qt::ClosedHandCursor);
        raise();
    }
    void mouseMoveEvent(QMouseEvent *event) override {
        if (m_view.m_model.dragging() == m_action)
            m_view.dragged(m_action, mapTo(&m_view, event->pos()));
    }
    void mouseReleaseEvent(QMouseEvent *) override {
        setCursor(Qt::OpenHandCursor);
        m_view.m_over.reset();
        m_view.m_model.performDrop();
    }
    void keyPressEvent(QKeyEvent *event) override {
        const bool isBack = event->key() == Qt::Key_Left || event->key() == Qt::Key_Up;
        const bool isOn = event->key() == Qt::Key_Right || event->key() == Qt::Key_Down;
        if (isBack || isOn)
            m_view.m_model.moveBy(m_action, isOn ? 1 : -1);
        else
            Control::keyPressEvent(event);
    }

private:
    QuickAction m_action;
    LayoutPreviewView &m_view;
};

LayoutPreviewView::LayoutPreviewView(LayoutSettingsModel &model, QWidget *parent) : QWidget(parent), m_model(model) {
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setRole(*this, QAccessible::Grouping);
    setAccessibleName(inDesktopWords(QStringLiteral("PREVIEW")));
    connect(&model, &LayoutSettingsModel::changed, this, &LayoutPreviewView::refresh);
    refresh();
}

LayoutPreviewView::~LayoutPreviewView() = default;

QSize LayoutPreviewView::sizeHint() const {
    const int rows = int(m_rows.size());
    return {menuWidth, rows == 0 ? emptyHeight : 2 * padding + rows * itemHeight + (rows - 1) * spacing};
}

QSize LayoutPreviewView::minimumSizeHint() const {
    return {leastWidth, sizeHint().height()};
}

int LayoutPreviewView::previewWidth() const {
    return std::min(menuWidth, width());
}

std::map<QuickAction, QRect> LayoutPreviewView::places() const {
    std::map<QuickAction, QRect> found;
    const int left = (width() - previewWidth()) / 2 + padding;
    int y = padding;
    for (const LayoutRow &row : m_rows) {
        const int count = int(row.items.size());
        const int wide = (previewWidth() - 2 * padding - (count - 1) * spacing) / count;
        int x = left;
        for (const QuickAction action : row.items) {
            found[action] = QRect(x, y, wide, itemHeight);
            x += wide + spacing;
        }
        y += itemHeight + spacing;
    }
    return found;
}

void LayoutPreviewView::refresh() {
    const auto rows = m_model.rows();
    const bool isOther = rows != m_rows;
    m_rows = rows;
    const auto where = places();
    for (const auto &[action, place] : where) {
        Item *&item = m_items[action];
        if (!item) {
            item = new Item(action, *this);
            item->setGeometry(place);
        }
        item->show();
        item->update();
    }
    for (const auto &[action, item] : m_items)
        item->setVisible(where.contains(action));
    if (isOther) {
        Item *before = nullptr; // Tab goes through them as they stand
        for (const LayoutRow &row : m_rows)
            for (const QuickAction action : row.items)
                if (Item *last = std::exchange(before, m_items.at(action)))
                    setTabOrder(last, before);
        updateGeometry();
        moveTo(where, isVisible());
        update();
    }
}

void LayoutPreviewView::moveTo(const std::map<QuickAction, QRect> &places, bool isAnimated) {
    std::map<QuickAction, QRect> from;
    for (const auto &[action, place] : places)
        from[action] = isAnimated ? m_items.at(action)->geometry() : place;
    const auto step = [this, from, places](double part) {
        for (const auto &[action, place] : places) {
            const QRect &start = from.at(action);
            const auto between = [part](int a, int b) { return qRound(a + (b - a) * part); };
            m_items.at(action)->setGeometry(between(start.x(), place.x()), between(start.y(), place.y()),
                                            between(start.width(), place.width()), place.height());
        }
    };
    if (isAnimated)
        m_motion.start(reorder, step);
    else
        step(1);
}

/// By where things will stand, not by where they are on their way.
void LayoutPreviewView::dragged(QuickAction action, QPoint place) {
    const auto where = places();
    const auto found = std::ranges::find_if(where, [place](const auto &each) { return each.second.contains(place); });
    const auto over = found == where.end() ? std::nullopt : std::optional(found->first);
    // Said once for each that is entered: the row may bring the same one under the pointer again.
    if (std::exchange(m_over, over) != over && over && *over != action)
        m_model.dropEntered(*over);
}

void LayoutPreviewView::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    preparePainter(painter);
    const Theme &theme = themeOf(this);
    const QRectF menu((width() - previewWidth()) / 2.0, 0, previewWidth(), height());
    fillRounded(painter, menu, radius::card, over(theme.surface, theme.control));
    strokeHairline(painter, menu, radius::card, theme.outline);
    if (m_rows.empty())
        paintLine(painter, menu, inDesktopWords(QStringLiteral("All items hidden")), TextRole::body,
                  theme.secondaryText, Qt::AlignHCenter);
}

/// The window is moved by its ground, and not by this.
void LayoutPreviewView::mousePressEvent(QMouseEvent *event) {
    event->accept();
}

void LayoutPreviewView::resizeEvent(QResizeEvent *event) {
    m_motion.stop();
    moveTo(places(), false);
    QWidget::resizeEvent(event);
}

} // namespace tavrine
