#pragma once

#include "ports/UserNotifications.h"

#include <QDBusConnection>
#include <QHash>
#include <QObject>

namespace tavrine {

/// The notifications of the desktop's own server, org.freedesktop.Notifications, which knows no permission: it is given
/// where there is a server.
class DesktopNotifications final : public QObject, public UserNotifications {
    Q_OBJECT

public:
    void requestAuthorization(std::function<void(bool isGranted)> answered) override;
    void add(const UserNotification &notification) override;

private:
    void show(const QDBusConnection &bus, const UserNotification &notification);

    /// What stands under an identifier, by the server that gave the number: another server's numbers are others'.
    struct Shown {
        QString server;
        uint number = 0;
    };
    QHash<QString, Shown> m_shown;
    QString m_server; ///< that answered last
};

} // namespace tavrine
