#pragma once

#include <QImage>
#include <QPoint>
#include <QString>

#include <functional>

namespace tavrine {

/// What the item shows. A template image is a mask: the desktop's own colour for such symbols takes its place.
struct StatusImage {
    /// Draws the image for `scale` device pixels per point; the result has scale times `width` by `height` pixels.
    std::function<QImage(double scale)> draw;
    int width = 0;
    int height = 0;
    bool isTemplate = false;
};

/// The program's place in the desktop's tray. Lives on the main thread.
///
///  1. The image may have any width.
///  2. The item appears in a tray that starts later, and again in one that was restarted.
///  3. A desktop without a tray costs nothing and breaks nothing.
class StatusItem {
public:
    virtual ~StatusItem() = default;
    virtual void setVisible(bool visible) = 0;
    [[nodiscard]] virtual bool isVisible() const = 0;
    virtual void setImage(const StatusImage &image) = 0;
    virtual void setToolTip(const QString &toolTip) = 0;
    /// Called when the person asks for the menu, with the place of the click in global coordinates.
    virtual void setOnPress(std::function<void(QPoint)> onPress) = 0;
    /// Called when the item is in a tray for the first time since it was out of one.
    virtual void setOnShown(std::function<void()> onShown) = 0;
};

} // namespace tavrine
