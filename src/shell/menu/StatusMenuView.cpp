#include "shell/menu/StatusMenuView.h"

#include "base/DesktopWords.h"
#include "look/Accessibility.h"
#include "look/Control.h"
#include "look/Look.h"
#include "look/Metrics.h"
#include "look/Paint.h"
#include "look/PanelKeys.h"
#include "look/ScrollArea.h"
#include "look/Tile.h"
#include "shell/menu/QuickActionsGridView.h"
#include "shell/menu/QuickActionsHeight.h"

#include <QAbstractSpinBox>
#include <QApplication>
#include <QKeyEvent>
#include <QPainter>
#include <QWindow>

#include <algorithm>
#include <cmath>

namespace tavrine {

using namespace look;

namespace {

constexpr int rowHeight = 28;
constexpr int separatorHeight = 9;
constexpr int margin = 5;

/// By what the layout calls the key; a digit also by its place, where Shift writes something else.
bool isPressOf(const QKeyEvent &event, QChar character) {
    const QChar key = character.toUpper();
    return event.key() == key.unicode() || (key.isDigit() && virtualKeyOf(event) == keyCode(QString(key)));
}

} // namespace

/// One entry, or a line between two groups of them.
class StatusMenuView::Row final : public Control {
public:
    Row(StatusMenuItem item, QWidget *parent) : Control(parent), m_item(item) {
        setFixedHeight(isSeparator() ? separatorHeight : rowHeight);
        if (isSeparator()) {
            setFocusPolicy(Qt::NoFocus);
            setRole(*this, QAccessible::Separator);
        }
    }

    [[nodiscard]] StatusMenuItem item() const { return m_item; }
    [[nodiscard]] bool isSeparator() const { return m_item == StatusMenuItem::separator; }
    void show(const StatusMenuEntry &entry) {
        setText(inDesktopWords(entry.title));
        m_key = inDesktopWords(label(entry.keyEquivalent));
        setEnabled(entry.isEnabled);
        setAccessibleDescription(m_key);
        update();
    }

protected:
    void paint(QPainter &painter) override {
        if (isSeparator()) {
            painter.fillRect(QRectF(space::medium - margin, std::floor(height() / 2.0), width() - space::medium, 1),
                             theme().separator);
            return;
        }
        const bool isChosen = isEnabled() && (hoverPart() > 0.5 || hasFocus());
        if (isChosen)
            fillRounded(painter, rect(), radius::control, theme().accent);
        const QRectF words = QRectF(rect()).adjusted(space::medium - margin + 2, 0, -space::medium + margin - 2, 0);
        paintLine(painter, words, text(), TextRole::body, isChosen ? theme().onAccent : theme().text);
        paintLine(painter, words, m_key, TextRole::caption, isChosen ? theme().onAccent : theme().secondaryText,
                  Qt::AlignRight);
    }
    void enterEvent(QEnterEvent *event) override {
        Control::enterEvent(event);
        if (!isSeparator() && isEnabled())
            setFocus(Qt::MouseFocusReason); // one row is chosen at a time, by hand or by key
    }
    /// The entry itself shows where the keyboard is, without a ring.
    void focusInEvent(QFocusEvent *event) override {
        QAbstractButton::focusInEvent(event);
        update();
    }

private:
    StatusMenuItem m_item;
    QString m_key;
};

StatusMenuView::StatusMenuView(StatusMenu &menu, QuickActionsGrid *grid, QuickActionsHeight &height, QWidget *parent)
    : PanelSurface(radius::card, parent), m_menu(menu), m_grid(grid), m_height(height),
      m_pane(new ScrollPane(grid, this)) {
    setFocusPolicy(Qt::NoFocus); // has the keyboard at first, and is no stop of the Tab key
    setAccessibleName(inDesktopWords(QStringLiteral("Tavrine")));
    connect(grid, &QuickActionsGrid::measureChanged, this,
            [grid] { QCoreApplication::postEvent(grid, new QEvent(QEvent::LayoutRequest)); });
    for (const StatusMenuEntry &entry : menu.entries()) {
        auto *row = new Row(entry.item, this);
        connect(row, &QAbstractButton::clicked, this, [this, item = entry.item] { fire(item); });
        m_rows.push_back(row);
    }
    connect(&menu, &StatusMenu::changed, this, &StatusMenuView::refresh);
    connect(&height, &QuickActionsHeight::changed, this, [this] {
        place();
        Q_EMIT sizeChanged();
    });
    refresh();
}

StatusMenuView::~StatusMenuView() = default;

void StatusMenuView::prepare(QPoint place) {
    m_openedAt = place;
    m_isPressedInside = false;
    m_isHeldPressOver = false;
    lead(nullptr);
    refresh();
}

void StatusMenuView::refresh() {
    const auto &entries = m_menu.entries();
    for (std::size_t i = 0; i < m_rows.size(); ++i)
        m_rows[i]->show(entries[i]);
}

int StatusMenuView::entriesHeight() const {
    int high = margin;
    for (const Row *row : m_rows)
        high += row->height();
    return high;
}

QSize StatusMenuView::sizeHint() const {
    return {QuickActionsGrid::width, qRound(m_height.height()) + entriesHeight()};
}

bool StatusMenuView::hasMenuOpen() {
    return QApplication::activePopupWidget() != nullptr;
}

double StatusMenuView::measuredGrid() const {
    return m_grid->measuredHeight();
}

void StatusMenuView::place() {
    // A screen may have no room for all of it.
    const int high = std::min(qRound(m_height.height()), height() - entriesHeight());
    m_pane->setGeometry(0, 0, width(), std::max(high, 0));
    int y = high;
    for (Row *row : m_rows) {
        row->setGeometry(margin, y, width() - 2 * margin, row->height());
        y += row->height();
    }
}

void StatusMenuView::fire(StatusMenuItem item) {
    const StatusMenuEntry &entry = m_menu.entry(item);
    if (!entry.isEnabled || !entry.action)
        return;
    const auto action = entry.action;
    Q_EMIT closeWanted();
    action();
}

bool StatusMenuView::fireByKey(const QKeyEvent &event) {
    const auto modifiers = event.modifiers() & (Qt::ControlModifier | Qt::MetaModifier | Qt::ShiftModifier);
    const bool hasShift = modifiers.testFlag(Qt::ShiftModifier);
    const auto command = modifiers & ~Qt::KeyboardModifiers(Qt::ShiftModifier);
    if (command != Qt::ControlModifier && command != Qt::MetaModifier)
        return false;
    for (const StatusMenuEntry &entry : m_menu.entries()) {
        const KeyEquivalent equivalent = entry.keyEquivalent;
        if (!equivalent.character.isNull() && equivalent.hasShift == hasShift &&
            isPressOf(event, equivalent.character)) {
            fire(entry.item);
            return true;
        }
    }
    return false;
}

/// To the nearest control in the direction of the arrow, by where things stand; past the last one, from the other end.
void StatusMenuView::moveFocus(int key) {
    std::vector<Control *> stops;
    for (Control *control : findChildren<Control *>()) {
        if (control->isVisible() && control->isEnabled() && (control->focusPolicy() & Qt::TabFocus))
            stops.push_back(control);
    }
    if (stops.empty())
        return;
    const auto frameOf = [this](const QWidget *widget) { return QRect(widget->mapTo(this, QPoint()), widget->size()); };
    const bool isDown = key == Qt::Key_Down || key == Qt::Key_Right;
    const bool isVertical = key == Qt::Key_Down || key == Qt::Key_Up;
    QWidget *from = focusWidget();
    const bool isAmongThem = std::ranges::find(stops, from) != stops.end();
    const QRect start = isAmongThem ? frameOf(from)
                        : isDown    ? QRect(0, -1, width(), 1)
                                    : QRect(0, height(), width(), 1);
    Control *best = nullptr;
    int bestDistance = 0;
    for (Control *control : stops) {
        const QRect place = frameOf(control);
        const int ahead = isVertical ? (isDown ? place.top() - start.bottom() : start.top() - place.bottom())
                                     : (isDown ? place.left() - start.right() : start.left() - place.right());
        if (control == from || ahead < 0)
            continue;
        const int aside = isVertical ? std::abs(place.center().x() - start.center().x())
                                     : std::abs(place.center().y() - start.center().y());
        if (!isVertical && aside > place.height())
            continue; // of another row
        const int distance = 4 * ahead + aside;
        if (!best || distance < bestDistance) {
            best = control;
            bestDistance = distance;
        }
    }
    if (!best && isVertical)
        best = *std::ranges::min_element(stops, {}, [&](const Control *control) {
            const int top = frameOf(control).top();
            return isDown ? top : -top;
        });
    if (best) {
        best->setFocus(Qt::TabFocusReason);
        m_pane->reveal(*best);
    }
}

void StatusMenuView::showEvent(QShowEvent *event) {
    QCoreApplication::instance()->installEventFilter(this);
    PanelSurface::showEvent(event);
}

void StatusMenuView::hideEvent(QHideEvent *event) {
    QCoreApplication::instance()->removeEventFilter(this);
    PanelSurface::hideEvent(event);
}

/// What can be pressed at a place of the view.
Control *StatusMenuView::controlAt(QPoint place) const {
    for (QWidget *at = childAt(place); at && at != this; at = at->parentWidget()) {
        if (auto *control = qobject_cast<Control *>(at))
            return control->isEnabled() && (control->focusPolicy() & Qt::TabFocus) ? control : nullptr;
    }
    return nullptr;
}

/// As if the pointer came over it; the toolkit tells nobody of a pointer whose button went down elsewhere.
void StatusMenuView::lead(Control *to) {
    if (m_ledTo == to)
        return;
    if (m_ledTo) {
        QEvent leave(QEvent::Leave);
        QCoreApplication::sendEvent(m_ledTo, &leave);
    }
    m_ledTo = to;
    if (to) {
        QEnterEvent enter({}, {}, {});
        QCoreApplication::sendEvent(to, &enter);
    }
}

/// A press on the item may go on into the menu. It chooses where it is let go, once it has left the item.
bool StatusMenuView::followHeldPress(const QMouseEvent &event) {
    const bool isFromOutside = !m_isPressedInside;
    if (event.type() == QEvent::MouseButtonPress)
        m_isPressedInside = true;
    else if (event.buttons() == Qt::NoButton)
        m_isPressedInside = false;
    const bool isHeldMove = event.type() == QEvent::MouseMove && event.buttons() != Qt::NoButton;
    const bool isRelease = event.type() == QEvent::MouseButtonRelease;
    const QPoint way = event.globalPosition().toPoint() - m_openedAt;
    if (!isFromOutside || !(isHeldMove || isRelease) || way.manhattanLength() < QApplication::startDragDistance())
        return false;
    followHeldPress(mapFrom(window(), event.position().toPoint()), !isRelease);
    return true;
}

void StatusMenuView::followHeldPress(QPoint place, bool isHeld) {
    if (m_isHeldPressOver)
        return;
    m_isHeldPressOver = !isHeld;
    Control *under = controlAt(place);
    lead(isHeld ? under : nullptr);
    if (!isHeld && under)
        under->click();
}

/// Buttons move the focus by the arrows in their own way; in a menu it is the menu's. Sideways keys are a card's own.
bool StatusMenuView::eventFilter(QObject *object, QEvent *event) {
    const bool isMouse = event->type() == QEvent::MouseButtonPress || event->type() == QEvent::MouseMove ||
                         event->type() == QEvent::MouseButtonRelease;
    if (isMouse && object == window()->windowHandle())
        return followHeldPress(*static_cast<QMouseEvent *>(event));
    if (event->type() != QEvent::KeyPress || !object->isWidgetType() || object == this ||
        !isAncestorOf(static_cast<QWidget *>(object)))
        return false;
    const int key = static_cast<QKeyEvent *>(event)->key();
    const bool isSideways = key == Qt::Key_Left || key == Qt::Key_Right;
    if (qobject_cast<QAbstractSpinBox *>(object) || qobject_cast<QAbstractSpinBox *>(object->parent()))
        return false; // the arrows step it
    const bool isOfMenu = key == Qt::Key_Up || key == Qt::Key_Down || (isSideways && qobject_cast<Tile *>(object));
    if (isOfMenu)
        moveFocus(key);
    return isOfMenu;
}

void StatusMenuView::keyPressEvent(QKeyEvent *event) {
    switch (event->key()) {
    case Qt::Key_Escape:
        Q_EMIT closeWanted();
        return;
    case Qt::Key_Up:
    case Qt::Key_Down:
    case Qt::Key_Left:
    case Qt::Key_Right:
        moveFocus(event->key());
        return;
    default:
        if (!fireByKey(*event))
            PanelSurface::keyPressEvent(event);
    }
}

bool StatusMenuView::event(QEvent *event) {
    if (event->type() == QEvent::LayoutRequest)
        place();
    return PanelSurface::event(event);
}

void StatusMenuView::resizeEvent(QResizeEvent *event) {
    place();
    PanelSurface::resizeEvent(event);
}

} // namespace tavrine
