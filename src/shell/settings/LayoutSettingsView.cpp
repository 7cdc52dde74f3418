#include "shell/settings/LayoutSettingsView.h"

#include "base/DesktopWords.h"
#include "look/Indicators.h"
#include "look/Look.h"
#include "look/Metrics.h"
#include "look/Paint.h"
#include "look/Symbols.h"
#include "look/Tile.h"
#include "look/Toggle.h"
#include "shell/settings/LayoutPreviewView.h"

#include <QHBoxLayout>
#include <QPainter>

namespace tavrine {

using namespace look;

namespace {

constexpr int rowHeight = 48;

} // namespace

/// One place, with its switch. The handle says that rows have an order, which the preview changes.
class LayoutSettingsView::VisibilityRow final : public QWidget {
public:
    VisibilityRow(QuickAction action, LayoutSettingsModel &model) : m_action(action), m_model(model) {
        setFixedHeight(rowHeight);
        if (!LayoutSettingsModel::canHide(action)) {
            setAccessibleName(inDesktopWords(QLatin1String(textOf(action).title)));
            return;
        }
        auto *row = new QHBoxLayout(this);
        row->setContentsMargins(0, 0, space::medium, 0);
        row->addStretch();
        m_toggle = new Toggle;
        m_toggle->setAccessibleName(inDesktopWords(QLatin1String(textOf(action).title)));
        row->addWidget(m_toggle);
        connect(m_toggle, &QAbstractButton::toggled, &model,
                [&model, action](bool isOn) { model.setShown(action, isOn); });
        refresh();
    }
    void refresh() {
        if (!m_toggle)
            return;
        m_toggle->setChecked(m_model.isShown(m_action));
        m_toggle->setEnabled(m_model.isSwitchEnabled(m_action));
    }

protected:
    void paintEvent(QPaintEvent *) override {
        QPainter painter(this);
        preparePainter(painter);
        const Theme &theme = themeOf(this);
        QRectF place(space::medium, 0, symbolsize::medium, height());
        paintSymbol(painter, place, QStringLiteral("line.3.horizontal"), symbolsize::small, theme.tertiaryText);
        place.translate(symbolsize::medium + space::medium, 0);
        paintSymbol(painter, place, QLatin1String(textOf(m_action).icon), symbolsize::medium, theme.text);
        const qreal left = place.right() + space::medium;
        paintLine(painter, QRectF(left, 0, width() - left - 70, height()),
                  inDesktopWords(QLatin1String(textOf(m_action).title)), TextRole::body, theme.text);
        if (!m_toggle)
            paintSymbol(painter, QRectF(width() - 44, 0, 32, height()), QStringLiteral("lock.fill"), symbolsize::medium,
                        theme.tertiaryText);
    }

private:
    QuickAction m_action;
    LayoutSettingsModel &m_model;
    Toggle *m_toggle = nullptr;
};

LayoutSettingsView::LayoutSettingsView(FeatureFlags &flags, UserDefaults &defaults, NotificationCenter &center)
    : SettingsPage(QStringLiteral("Layout"),
                   QStringLiteral("Drag items in the preview to reorder. Toggle to show or hide.")),
      m_model(flags, defaults, center) {
    addPreview();
    addVisibility();
    addOptions();
    connect(&m_model, &LayoutSettingsModel::changed, this, [this] {
        for (const auto &[action, row] : m_rows)
            row->refresh();
        orderRows();
    });
}

void LayoutSettingsView::addPreview() {
    column().addSpacing(space::huge);
    auto *heading = new QWidget;
    auto *row = new QHBoxLayout(heading);
    row->setContentsMargins(space::tiny, 0, space::tiny, 0);
    auto *hint = new Label(QStringLiteral("Drag to reorder"), TextRole::caption, Label::Tone::secondary);
    hint->setAlignment(Qt::AlignRight);
    row->addWidget(new Label(QStringLiteral("PREVIEW"), TextRole::captionStrong, Label::Tone::secondary), 1);
    row->addWidget(hint, 1);
    heading->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    add(heading);
    column().addSpacing(space::small);
    add(new LayoutPreviewView(m_model));
    addNote(QStringLiteral("Adjacent tiles pair side-by-side in the actual menu."), QStringLiteral("info.circle"));
}

void LayoutSettingsView::addVisibility() {
    m_visibility = addSection(QStringLiteral("VISIBILITY"));
    for (const QuickAction action : m_model.items()) {
        auto *row = new VisibilityRow(action, m_model);
        m_rows[action] = row;
        m_visibility->add(row);
    }
    m_order = m_model.items();
}

void LayoutSettingsView::orderRows() {
    if (m_order == m_model.items())
        return;
    m_order = m_model.items();
    std::vector<QWidget *> widgets;
    for (const QuickAction action : m_order)
        widgets.push_back(m_rows.at(action));
    m_visibility->setOrder(widgets);
}

void LayoutSettingsView::addOptions() {
    const auto [row, toggle] = makeToggleRow(QStringLiteral("text.alignleft"), QStringLiteral("Include Subtitle"),
                                             QStringLiteral("Show description text on tiles"));
    addSection(QStringLiteral("OPTIONS"))->add(row);
    addNote(QStringLiteral("Lo-Fi Vibe and Keep Awake always show their subtitles."));
    toggle->setChecked(m_model.showsSubtitles());
    connect(toggle, &QAbstractButton::toggled, &m_model, &LayoutSettingsModel::setShowsSubtitles);
    connect(&m_model, &LayoutSettingsModel::changed, toggle,
            [this, toggle = toggle] { toggle->setChecked(m_model.showsSubtitles()); });
}

} // namespace tavrine
