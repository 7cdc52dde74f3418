#pragma once

#include <QString>

#include <functional>

namespace tavrine {

/// A message that the desktop shows without asking for anything.
struct UserNotification {
    QString identifier; ///< one that is still shown under the same identifier is replaced
    QString title;
    QString body;
    bool operator==(const UserNotification &) const = default;
};

/// The desktop's notifications. Lives on the main thread; no call waits for anybody.
class UserNotifications {
public:
    virtual ~UserNotifications() = default;

    /// Whether messages of ours are shown; answered in a later turn. A desktop that shows no notifications has not
    /// granted it; one that hangs does not answer.
    virtual void requestAuthorization(std::function<void(bool isGranted)> answered) = 0;
    /// Shows it at once, in this desktop's words. Quiet when it cannot be shown. `pressed` is called when the person
    /// presses it, as long as it is shown; a desktop that knows no presses never calls it, and with none there is
    /// nothing to press.
    virtual void add(const UserNotification &notification, std::function<void()> pressed) = 0;
    void add(const UserNotification &notification) { add(notification, {}); }
};

} // namespace tavrine
