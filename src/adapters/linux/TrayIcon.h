#pragma once

#include "ports/StatusItem.h"

namespace tavrine {

/// One way into a tray, used by `TrayStatusItem`, which decides when. Lives on the main thread.
class TrayIcon {
public:
    /// Whether the desktop runs a tray of this kind; `unknown` until the first answer, for about a second at most.
    enum class Offer { unknown, no, yes };

    struct Handlers {
        std::function<void()> onOfferChanged;
        std::function<void()> onShown; ///< the tray has taken the icon in
        std::function<void(QPoint)> onPress;
        std::function<void(QPoint)> onSecondaryPress;
    };

    virtual ~TrayIcon() = default;
    virtual void setHandlers(Handlers handlers) = 0;
    [[nodiscard]] virtual Offer offer() const = 0;

    /// Whether trays of this kind show a wide image at full height; others fit it into a square.
    [[nodiscard]] virtual bool keepsShape() const = 0;

    /// Enters or leaves the tray. A tray that is not there is not waited for; `TrayStatusItem` asks again when the
    /// offer changes.
    virtual void setWanted(bool isWanted) = 0;
    virtual void setImage(const StatusImage &image) = 0;
    virtual void setToolTip(const QString &toolTip) = 0;

    /// For trays that draw menus themselves; others have no use for it.
    virtual void setMenu(const StatusItemMenu & /*menu*/) {}
    virtual void menuChanged() {}
};

} // namespace tavrine
