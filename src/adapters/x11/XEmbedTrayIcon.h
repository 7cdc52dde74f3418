#pragma once

#include "adapters/linux/TrayIcon.h"

#include <memory>

namespace tavrine {

/// The icon in a tray of the older kind: a window of ours inside the tray's, by the freedesktop system tray protocol.
///
/// Lives on the main thread, on an X connection of its own that sleeps until something happens to the icon or a tray
/// comes or goes. Each docking makes a window anew, in the visual that the tray names. The window has the image's
/// shape; the image is drawn at whatever size the tray gives, in the middle.
///
/// Where the tray offers no transparency, its own background is drawn beneath. Symbols and text take the colour that
/// the tray names, else one that stands out from that background, else a light one.
class XEmbedTrayIcon final : public TrayIcon {
public:
    /// Shows `text` beside the pointer, which rests at `place`; an empty text hides what is shown. Trays of this kind
    /// show no tool tips themselves.
    using ShowToolTip = std::function<void(QPoint place, const QString &text)>;

    explicit XEmbedTrayIcon(ShowToolTip showToolTip);
    ~XEmbedTrayIcon() override;

    void setHandlers(Handlers handlers) override;
    [[nodiscard]] Offer offer() const override;
    [[nodiscard]] bool keepsShape() const override { return true; }
    void setWanted(bool isWanted) override;
    void setImage(const StatusImage &image) override;
    void setToolTip(const QString &toolTip) override;

private:
    class Private;
    std::unique_ptr<Private> d;
};

} // namespace tavrine
