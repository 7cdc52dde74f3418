#include "look/SettingsPage.h"

#include "base/DesktopWords.h"
#include "look/Accessibility.h"
#include "look/Indicators.h"
#include "look/Metrics.h"
#include "look/ScrollArea.h"
#include "look/Tile.h"
#include "look/Toggle.h"
#include "look/WrappedText.h"

#include <QVBoxLayout>

namespace tavrine::look {

SettingsPage::SettingsPage(QWidget *parent) : QWidget(parent) {
    auto *page = new QWidget;
    auto *whole = new QVBoxLayout(page);
    whole->setContentsMargins(0, 0, 0, 0);
    m_column = new QVBoxLayout;
    whole->addLayout(m_column);
    whole->addStretch(1); // what a page has no use for stays below it
    m_column->setContentsMargins(space::huge, space::huge, space::huge, space::huge);
    m_column->setSpacing(0);
    m_pane = new ScrollPane(page, this);
    setRole(*this, QAccessible::Grouping);
}

SettingsPage::SettingsPage(const QString &title, const QString &subtitle, QWidget *parent) : SettingsPage(parent) {
    setAccessibleName(inDesktopWords(title));
    m_column->addWidget(new Label(title, TextRole::title));
    if (!subtitle.isEmpty()) {
        m_column->addSpacing(space::tiny);
        m_column->addWidget(new WrappedText({}, subtitle, WrappedText::Tone::secondary));
    }
    m_column->addSpacing(space::tiny);
}

SettingsPage::~SettingsPage() = default;

Card *SettingsPage::addSection(const QString &heading) {
    auto *card = new Card;
    addSection(heading, card);
    return card;
}

void SettingsPage::addSection(const QString &heading, Card *card) {
    if (heading.isEmpty()) {
        m_column->addSpacing(space::large);
    } else {
        m_column->addSpacing(space::huge);
        auto *label = new Label(heading, TextRole::captionStrong, Label::Tone::secondary);
        label->setContentsMargins(space::tiny, 0, 0, 0);
        m_column->addWidget(label);
        m_column->addSpacing(space::small);
    }
    card->setAccessibleName(inDesktopWords(heading));
    m_column->addWidget(card);
}

void SettingsPage::addNote(const QString &text, const QString &symbol) {
    m_column->addSpacing(space::small);
    add(new WrappedText(symbol, text, WrappedText::Tone::secondary));
}

void SettingsPage::add(QWidget *widget) {
    m_column->addWidget(widget);
}

void SettingsPage::resizeEvent(QResizeEvent *event) {
    m_pane->setGeometry(rect());
    QWidget::resizeEvent(event);
}

ToggleRow makeToggleRow(const QString &symbol, const QString &title, const QString &note) {
    auto *row = new SettingsRow(symbol, title, note);
    auto *toggle = new Toggle;
    toggle->setAccessibleDescription(inDesktopWords(note));
    row->setTrailing(toggle);
    return {row, toggle};
}

SettingsRow *makePreferenceRow(const QString &symbol, const QString &title, const QString &note,
                               const Preference<bool> &preference, UserDefaults &defaults, NotificationCenter &center) {
    const auto [row, toggle] = makeToggleRow(symbol, title, note);
    toggle->setChecked(preference.get(defaults));
    QObject::connect(toggle, &QAbstractButton::toggled, row, [&preference, &defaults](bool isOn) {
        if (preference.get(defaults) != isOn)
            preference.set(defaults, isOn);
    });
    followPreferences(*toggle, center,
                      [toggle = toggle, &preference, &defaults] { toggle->setChecked(preference.get(defaults)); });
    return row;
}

void followPreferences(QObject &owner, NotificationCenter &center, std::function<void()> refresh) {
    refresh();
    auto token = center.addObserver(QLatin1String(UserDefaults::didChangeNotification),
                                    [refresh = std::move(refresh)](const Notification &) { refresh(); });
    QObject::connect(&owner, &QObject::destroyed, [token = std::move(token)]() mutable { token.reset(); });
}

} // namespace tavrine::look
