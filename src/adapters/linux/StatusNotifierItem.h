#pragma once

#include "adapters/linux/TrayIcon.h"

#include <QDBusConnection>
#include <QObject>

#include <memory>
#include <optional>

class QDBusServiceWatcher;

namespace tavrine {

class DBusMenu;
class PortalAppearance;
class StatusNotifierAdaptor;
class StatusNotifierHosts;

/// The icon in a tray that speaks org.kde.StatusNotifierItem. Lives on the main thread and never waits for the bus.
///
///  1. The offer stands while a watcher runs that knows of a host; a watcher that comes later or restarts counts anew.
///  2. The item is registered under a bus name of its own, org.kde.StatusNotifierItem-<process>-<number>. Giving that
///     name up is what takes the icon away: every host drops an item whose name is gone, while only some hide one
///     whose status is "Passive".
///  3. A change is told once, and only when hosts would see a difference.
///  4. A wide picture goes out as it is where all hosts are known to keep its shape, else as a square.
class StatusNotifierItem final : public QObject, public TrayIcon {
    Q_OBJECT

public:
    StatusNotifierItem();
    ~StatusNotifierItem() override;

    void setHandlers(Handlers handlers) override { m_handlers = std::move(handlers); }
    [[nodiscard]] Offer offer() const override { return m_offer; }
    /// Most hosts fit a picture into a square: 70 x 22 points become 22 x 7 in Xfce's panel.
    [[nodiscard]] bool keepsShape() const override { return m_keepsShape; }
    void setWanted(bool isWanted) override;
    void setImage(const StatusImage &image) override;
    void setToolTip(const QString &toolTip) override;
    void setMenu(const StatusItemMenu &menu) override;
    void menuChanged() override;

private Q_SLOTS:
    void askForHost();

private:
    void onBusOpen(const QDBusConnection &bus);
    void onWatcherChanged(const QString &newOwner);
    void takeHosts(bool keepShape);
    void setOffer(Offer offer);
    void requestName();
    void releaseName();
    void registerItem();
    void exportMenu();
    void refreshPixmaps();
    void tell(std::function<void(QPoint)> Handlers::*whom, QPoint place);

    Handlers m_handlers;
    StatusImage m_image;
    std::optional<QDBusConnection> m_bus;
    StatusNotifierAdaptor *m_adaptor;
    std::unique_ptr<DBusMenu> m_menu;
    std::unique_ptr<PortalAppearance> m_appearance;
    std::unique_ptr<QDBusServiceWatcher> m_watcher;
    std::unique_ptr<StatusNotifierHosts> m_hosts;
    bool m_keepsShape = false;
    Offer m_offer = Offer::unknown;
    QString m_name; ///< the bus name that is held
    int m_number = 1;
    int m_wish = 0; ///< grows with each wish, so that replies to an earlier one are known
    bool m_isWanted = false;
    bool m_isRegistered = false;
};

} // namespace tavrine
