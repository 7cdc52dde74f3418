#pragma once

#include "ports/StatusItem.h"

namespace tavrine {

/// An item in a tray that a test starts, ends and clicks. The tray runs from the beginning.
class FakeStatusItem final : public StatusItem {
public:
    void setVisible(bool visible) override;
    [[nodiscard]] bool isVisible() const override { return m_isVisible; }
    [[nodiscard]] bool isInTray() const override { return isShown(); }
    void setImage(const StatusImage &image) override;
    void setToolTip(const QString &toolTip) override { m_toolTip = toolTip; }
    void setOnPress(OnPress onPress) override { m_onPress = std::move(onPress); }
    void setOnSecondaryPress(OnPress onPress) override { m_onSecondaryPress = std::move(onPress); }
    void setMenu(StatusItemMenu menu) override { m_menu = std::move(menu); }
    void menuChanged() override { ++m_menuChanges; }
    void setOnShown(std::function<void()> onShown) override { m_onShown = std::move(onShown); }

    /// Starts or ends the desktop's tray.
    void setTrayRunning(bool isRunning);

    /// The person clicks at `place`. Nothing happens while the item is in no tray.
    void press(QPoint place, Seconds ago = {});
    void pressWithTheMiddleButton(QPoint place);

    /// As a tray that draws menus itself.
    [[nodiscard]] std::vector<StatusMenuLine> menuLines() const { return m_menu.lines(); }
    void choose(int id) { m_menu.onChosen(id); }
    [[nodiscard]] int menuChanges() const { return m_menuChanges; }

    [[nodiscard]] bool isShown() const { return m_isVisible && m_isTrayRunning; }
    [[nodiscard]] const QString &toolTip() const { return m_toolTip; }
    [[nodiscard]] const StatusImage &image() const { return m_image; }
    [[nodiscard]] QImage render(double scale) const { return m_image.draw ? m_image.draw({.scale = scale}) : QImage(); }
    [[nodiscard]] int imageCount() const { return m_imageCount; } ///< how often an image was set
    [[nodiscard]] int drawings() const { return m_drawings; }     ///< those that do not look like the one before

private:
    void tellIfShown(bool wasShown);

    OnPress m_onPress;
    OnPress m_onSecondaryPress;
    std::function<void()> m_onShown;
    StatusItemMenu m_menu;
    int m_menuChanges = 0;
    StatusImage m_image;
    QString m_toolTip;
    int m_imageCount = 0;
    int m_drawings = 0;
    bool m_isVisible = false;
    bool m_isTrayRunning = true;
};

} // namespace tavrine
