#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QVariant>

class QObject;

namespace tavrine::portalSettings {

// The settings that a desktop's portal tells, for all who read some of them. A portal that does not run is not started.

/// Of who has the portal's name, without its arguments.
[[nodiscard]] QDBusMessage question(const QString &method);
/// Has each change told to `slot`, made with `SLOT`, which takes the group, the key and the value as a `QDBusVariant`.
void followChanges(QDBusConnection bus, QObject *receiver, const char *slot);
/// The value itself: portals have been seen to wrap it once more than they say.
[[nodiscard]] QVariant unwrapped(QVariant value);

} // namespace tavrine::portalSettings
