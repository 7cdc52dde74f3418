#pragma once

#include "look/SettingsPage.h"
#include "look/Tile.h"
#include "shell/settings/FeatureRowModel.h"

namespace tavrine {

namespace look {
class Unfolding;
} // namespace look

/// One switch of the features page: icon, title, description, and what says that the tool is starting. Belongs to its
/// page; main thread.
class FeatureRowView final : public look::SettingsRow {
    Q_OBJECT

public:
    FeatureRowView(Feature feature, FeatureFlags &flags, Time &time, QWidget *parent = nullptr);

    /// Stands before the switch. Takes the widget over.
    void addControl(QWidget *widget);

protected:
    void mouseReleaseEvent(QMouseEvent *event) override;

private:
    void refresh();
    void placeEnd();

    FeatureRowModel m_model;
    QWidget *m_end;
    look::Unfolding *m_starting;
    look::Toggle *m_toggle;
};

/// The switches of all tools, in the order of their table. Belongs to the window; main thread.
class FeaturesSettingsView final : public look::SettingsPage {
    Q_OBJECT

public:
    /// Both outlive the page. `clearAndDisable` is what the button beside the clipboard's switch does.
    FeaturesSettingsView(FeatureFlags &flags, Time &time, const std::function<void()> &clearAndDisable);
};

} // namespace tavrine
