#pragma once

#include "adapters/linux/TrayIcon.h"

#include <vector>

namespace tavrine {

/// The status item: in the first tray of those that the desktop offers, in another one as soon as that is to be had or
/// the first is gone. Lives on the main thread.
///
/// A tray that is still unknown is waited for before a lesser one is entered, so that the icon does not jump at the
/// start of the session. An image that is too wide to be read in a square goes to a tray that keeps its shape, where
/// the desktop has one: many panels offer both kinds.
class TrayStatusItem final : public StatusItem {
public:
    /// Finds out where the item is that was just pressed, and calls `found` on the main thread: within the call, or
    /// later. What is not called is not pressed.
    using Placing = std::function<void(std::function<void(QPoint)> found)>;

    /// `trays` in the order of preference. Without `placing` a tray's word is taken.
    explicit TrayStatusItem(std::vector<std::unique_ptr<TrayIcon>> trays, Placing placing = {});

    void setVisible(bool visible) override;
    [[nodiscard]] bool isVisible() const override { return m_isVisible; }
    [[nodiscard]] bool isInTray() const override { return m_isShown; }
    void setImage(const StatusImage &image) override;
    void setToolTip(const QString &toolTip) override;
    void setOnPress(OnPress onPress) override { m_onPress = std::move(onPress); }
    void setOnSecondaryPress(OnPress onPress) override { m_onSecondaryPress = std::move(onPress); }
    void setMenu(StatusItemMenu menu) override;
    void menuChanged() override;
    void setOnShown(std::function<void()> onShown) override { m_onShown = std::move(onShown); }

private:
    [[nodiscard]] TrayIcon *best() const;
    void choose();
    void press(const OnPress &handler, QPoint told);

    std::vector<std::unique_ptr<TrayIcon>> m_trays;
    const Placing m_placing;
    OnPress m_onPress;
    OnPress m_onSecondaryPress;
    std::function<void()> m_onShown;
    TrayIcon *m_chosen = nullptr;
    QString m_identity; ///< of the last image
    bool m_isWide = false;
    bool m_isVisible = false;
    bool m_isShown = false;
};

} // namespace tavrine
