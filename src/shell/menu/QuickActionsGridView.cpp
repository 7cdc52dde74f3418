#include "shell/menu/QuickActionsGridView.h"

#include "base/DesktopWords.h"
#include "look/Accessibility.h"

#include <QEvent>

#include <algorithm>

namespace tavrine {
namespace {

constexpr int cardWidth = QuickActionsGrid::width - 2 * QuickActionsGrid::padding;

int heightOf(const QWidget &widget) {
    if (widget.hasHeightForWidth())
        return widget.heightForWidth(cardWidth);
    return widget.sizeHint().height();
}

} // namespace

ControlCenterActionTile::ControlCenterActionTile(const QString &icon, const QString &title, const QString &subtitle,
                                                 QWidget *parent)
    : Tile(icon, title, subtitle, Kind::action, parent) {}

ControlCenterToggle::ControlCenterToggle(const QString &icon, const QString &title, const QString &subtitleOff,
                                         QWidget *parent)
    : Tile(icon, title, subtitleOff, Kind::toggle, parent) {}

QuickActionsGrid::QuickActionsGrid(QuickActionsModel &model, MakeCard makeCard, QWidget *parent)
    : QWidget(parent), m_model(model), m_makeCard(std::move(makeCard)) {
    look::setRole(*this, QAccessible::Grouping);
    setAccessibleName(inDesktopWords(QStringLiteral("Quick Actions")));
    connect(&model, &QuickActionsModel::changed, this, &QuickActionsGrid::refresh);
    refresh();
}

QuickActionsGrid::~QuickActionsGrid() = default;

QWidget *QuickActionsGrid::makeTile(QuickAction action) {
    const QuickActionText &text = textOf(action);
    const QString icon = QLatin1String(text.icon);
    const QString title = QLatin1String(text.title);
    look::Tile *tile = nullptr;
    if (m_model.isToggle(action))
        tile = new ControlCenterToggle(icon, title, m_model.subtitle(action), this);
    else
        tile = new ControlCenterActionTile(icon, title, m_model.subtitle(action), this);
    connect(tile, &QAbstractButton::clicked, &m_model, [this, action] { m_model.run(action); });
    return tile;
}

QWidget *QuickActionsGrid::widgetFor(QuickAction action) {
    const auto found = m_widgets.find(action);
    if (found != m_widgets.end())
        return found->second;
    QWidget *made = textOf(action).isCard ? m_makeCard(action) : makeTile(action);
    if (made)
        made->setParent(this);
    m_widgets[action] = made;
    return made;
}

/// Widgets stay once they are made, so that a control under the pointer is not replaced by its own press.
void QuickActionsGrid::refresh() {
    m_rows = m_model.rows();
    std::vector<QWidget *> shown;
    for (const LayoutRow &row : m_rows) {
        for (const QuickAction action : row.items) {
            QWidget *widget = widgetFor(action);
            shown.push_back(widget);
            if (auto *tile = qobject_cast<look::Tile *>(widget)) {
                tile->setSubtitle(m_model.subtitle(action));
                tile->setChecked(m_model.isOn(action));
            }
        }
    }
    for (const auto &[action, widget] : m_widgets) {
        if (widget)
            widget->setVisible(std::ranges::find(shown, widget) != shown.end());
    }
    for (std::size_t i = 1; i < shown.size(); ++i) {
        if (shown[i - 1] && shown[i])
            setTabOrder(shown[i - 1], shown[i]);
    }
    place();
}

int QuickActionsGrid::rowHeight(const LayoutRow &row) const {
    int high = 0;
    for (const QuickAction action : row.items) {
        if (const QWidget *widget = m_widgets.at(action))
            high = std::max(high, heightOf(*widget));
    }
    return high;
}

int QuickActionsGrid::measuredHeight() const {
    int high = padding;
    for (const LayoutRow &row : m_rows)
        high += rowHeight(row) + spacing;
    return m_rows.empty() ? 0 : high - spacing + padding;
}

void QuickActionsGrid::place() {
    int y = padding;
    for (const LayoutRow &row : m_rows) {
        const int high = rowHeight(row);
        const int count = static_cast<int>(row.items.size());
        const int wide = (cardWidth - (count - 1) * spacing) / count;
        int x = padding;
        for (const QuickAction action : row.items) {
            if (QWidget *widget = m_widgets.at(action))
                widget->setGeometry(x, y, wide, high);
            x += wide + spacing;
        }
        y += high + spacing;
    }
    if (const int measured = measuredHeight(); std::exchange(m_measured, measured) != measured)
        Q_EMIT measureChanged();
}

bool QuickActionsGrid::event(QEvent *event) {
    if (event->type() == QEvent::LayoutRequest)
        place();
    return QWidget::event(event);
}

void QuickActionsGrid::resizeEvent(QResizeEvent *event) {
    place();
    QWidget::resizeEvent(event);
}

} // namespace tavrine
