#pragma once

#include "base/Date.h"

#include <QColor>
#include <QImage>
#include <QPoint>
#include <QString>
#include <QStringList>

#include <functional>
#include <optional>
#include <vector>

namespace tavrine {

/// What a tray gives an image to be drawn on.
struct StatusGround {
    double scale = 1;               ///< device pixels per point
    QColor label = QColor(0, 0, 0); ///< the tray's own colour for text and symbols
    bool isSquare = false;          ///< whatever is drawn is fitted into a square
    /// What is drawn keeps its shape and is scaled to the height of the bar's icons, so that a margin above and below
    /// costs size.
    bool isStrip = false;
};

/// What the item shows. A template image is a mask: the tray's label colour takes its place.
struct StatusImage {
    /// Draws the image: scale times `width` by `height` pixels. On a square ground a wide image may draw itself as a
    /// square of its height instead, so that it can be read there, and on a strip one of less height.
    std::function<QImage(const StatusGround &ground)> draw;
    int width = 0;
    int height = 0;
    bool isTemplate = false;
    /// Two images of one identity look the same. One without is like no other.
    QString identity = {};
};

/// One line of the menu, for trays that draw menus themselves.
struct StatusMenuLine {
    int id = 0; ///< above 0, and the same for the same line; 0 for a line between groups
    QString label;
    bool isEnabled = true;
    std::optional<bool> isOn; ///< of a line that is a switch
    /// Of a combination that chooses it from everywhere, the modifiers first: "Super", "Shift", "V".
    QStringList keys = {};
    [[nodiscard]] bool isSeparator() const { return id == 0; }
    bool operator==(const StatusMenuLine &) const = default;
};

/// The menu as such a tray needs it: asked for when the tray wants it, so that it costs nothing before.
struct StatusItemMenu {
    std::function<std::vector<StatusMenuLine>()> lines;
    std::function<void(int id)> onChosen;
};

/// The program's place in the desktop's tray. Lives on the main thread.
///
///  1. The image may have any width.
///  2. The item appears in a tray that starts later, and again in one that was restarted.
///  3. A tray that draws menus itself shows the one that was set; others tell of the press.
///  4. A desktop without a tray costs nothing and breaks nothing.
///  5. An image that looks like the last one is not drawn again.
class StatusItem {
public:
    virtual ~StatusItem() = default;
    virtual void setVisible(bool visible) = 0;
    [[nodiscard]] virtual bool isVisible() const = 0;
    /// Whether some tray shows it now.
    [[nodiscard]] virtual bool isInTray() const = 0;
    virtual void setImage(const StatusImage &image) = 0;
    virtual void setToolTip(const QString &toolTip) = 0;
    /// `place` is that of the item in global coordinates. Where a desktop tells it only afterwards, the press was `ago`
    /// seconds before.
    using OnPress = std::function<void(QPoint place, Seconds ago)>;
    /// Called when the person asks for the menu.
    virtual void setOnPress(OnPress onPress) = 0;
    /// The same for a press with the middle button, or whatever else the tray has for a second thing to do.
    virtual void setOnSecondaryPress(OnPress onSecondaryPress) = 0;
    virtual void setMenu(StatusItemMenu menu) = 0;
    /// The lines are others now.
    virtual void menuChanged() = 0;
    /// Called when the item is in a tray for the first time since it was out of one.
    virtual void setOnShown(std::function<void()> onShown) = 0;
};

} // namespace tavrine
