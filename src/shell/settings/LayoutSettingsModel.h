#pragma once

#include "base/NotificationCenter.h"
#include "shell/FeatureFlags.h"
#include "shell/menu/QuickActionsLayout.h"

#include <QObject>
#include <QStringList>

#include <optional>

namespace tavrine {

/// The order of the Quick Actions and what stands in them, for the page that changes both. Lives as long as its page;
/// main thread.
///
///  1. What the page shows is stored when it opens, and at each change: so the recorder's tile, which is not on the
///     page, loses its place in the stored order, and the menu gives it back its place behind the screenshot.
///  2. Each place stands on the page once, however often the stored order has it.
class LayoutSettingsModel : public QObject {
    Q_OBJECT

public:
    /// All outlive the model.
    LayoutSettingsModel(FeatureFlags &flags, UserDefaults &defaults, NotificationCenter &center,
                        QObject *parent = nullptr);

    [[nodiscard]] const std::vector<QuickAction> &items() const { return m_items; }
    /// What the menu will show of them.
    [[nodiscard]] std::vector<LayoutRow> rows() const;

    /// Whether a switch goes with the place; that of the settings cannot be hidden.
    [[nodiscard]] static bool canHide(QuickAction action) { return action != QuickAction::settings; }
    [[nodiscard]] bool isShown(QuickAction action) const;
    void setShown(QuickAction action, bool isShown);
    /// False where the tool itself is off.
    [[nodiscard]] bool isSwitchEnabled(QuickAction action) const;
    [[nodiscard]] bool showsSubtitles() const;
    void setShowsSubtitles(bool isOn);

    // A drag.
    void beginDrag(QuickAction action) { setDragging(action); }
    /// The dragged place comes over another one, and takes its place in the row.
    void dropEntered(QuickAction target);
    void performDrop() { setDragging(std::nullopt); }
    [[nodiscard]] std::optional<QuickAction> dragging() const { return m_dragging; }
    /// By the keyboard: one place earlier or later among those that are shown. False at the end of the way.
    bool moveBy(QuickAction action, int direction);

Q_SIGNALS:
    void changed();

private:
    void load();
    void store();
    void setDragging(std::optional<QuickAction> action);

    FeatureFlags &m_flags;
    UserDefaults &m_defaults;
    std::vector<QuickAction> m_items;
    std::optional<QuickAction> m_dragging;
    NotificationCenter::Token m_observer;
};

} // namespace tavrine
