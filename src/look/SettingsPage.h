#pragma once

#include "base/NotificationCenter.h"
#include "base/Preference.h"

#include <QWidget>

class QVBoxLayout;

namespace tavrine::look {
class Card;
class SettingsRow;
class Toggle;

/// A page of the settings: a title, a line under it, and sections of cards, which scroll where they have no room. What
/// all pages share of their looks stands here. Belongs to the window; main thread.
class SettingsPage : public QWidget {
    Q_OBJECT

public:
    SettingsPage(const QString &title, const QString &subtitle, QWidget *parent = nullptr);
    ~SettingsPage() override;

protected:
    /// For a page without a head of its own kind.
    explicit SettingsPage(QWidget *parent = nullptr);

    /// A new card, under a heading where there is one.
    Card *addSection(const QString &heading = {});
    /// The same for a card that exists. Takes it over.
    void addSection(const QString &heading, Card *card);
    /// Small words under the last card.
    void addNote(const QString &text, const QString &symbol = {});
    void add(QWidget *widget);
    [[nodiscard]] QVBoxLayout &column() const { return *m_column; }

    void resizeEvent(QResizeEvent *event) override;

private:
    QVBoxLayout *m_column;
    QWidget *m_pane;
};

/// A row with a switch at its end.
struct ToggleRow {
    SettingsRow *row;
    Toggle *toggle;
};
[[nodiscard]] ToggleRow makeToggleRow(const QString &symbol, const QString &title, const QString &note);

/// A row whose switch is a preference, and follows it whoever changes it. Both outlive the row.
[[nodiscard]] SettingsRow *makePreferenceRow(const QString &symbol, const QString &title, const QString &note,
                                             const Preference<bool> &preference, UserDefaults &defaults,
                                             NotificationCenter &center);

/// Calls `refresh` now, and after each change of the preferences for as long as `owner` lives.
void followPreferences(QObject &owner, NotificationCenter &center, std::function<void()> refresh);

} // namespace tavrine::look
