#pragma once

#include "ports/UserNotifications.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QHash>
#include <QObject>

namespace tavrine {

/// The notifications of the desktop's own server, org.freedesktop.Notifications, which knows no permission: it is given
/// where there is a server.
class DesktopNotifications final : public QObject, public UserNotifications {
    Q_OBJECT

public:
    void requestAuthorization(std::function<void(bool isGranted)> answered) override;
    using UserNotifications::add;
    void add(const UserNotification &notification, std::function<void()> pressed) override;

private Q_SLOTS:
    void onActionInvoked(const QDBusMessage &signal);

private:
    void show(QDBusConnection bus, const UserNotification &notification, const std::function<void()> &pressed);

    /// What stands under an identifier, by the server that gave the number: another server's numbers are others'.
    struct Shown {
        QString server;
        uint number = 0;
        std::function<void()> pressed = {};
    };
    QHash<QString, Shown> m_shown;
    QString m_server;       ///< that answered last
    QString m_heardOn = {}; ///< the connection on which presses are heard of
};

} // namespace tavrine
