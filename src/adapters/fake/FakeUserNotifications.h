#pragma once

#include "adapters/fake/VirtualTime.h"
#include "base/DesktopWords.h"
#include "ports/UserNotifications.h"

#include <QHash>
#include <QList>

namespace tavrine {

/// A desktop that shows what it is given, unless the test says otherwise.
class FakeUserNotifications final : public UserNotifications {
public:
    explicit FakeUserNotifications(VirtualTime &time) : m_time(time) {}

    void requestAuthorization(std::function<void(bool)> answered) override {
        if (!m_isHanging)
            m_time.async([answered = std::move(answered), isGranted = m_isGranted] { answered(isGranted); });
    }
    using UserNotifications::add;
    void add(const UserNotification &notification, std::function<void()> pressed) override {
        ++m_added;
        if (!m_isGranted)
            return;
        m_pressed[notification.identifier] = std::move(pressed);
        m_shown.removeIf([&](const auto &each) { return each.identifier == notification.identifier; });
        m_shown.append({notification.identifier, notification.title, inDesktopWords(notification.body)});
    }

    void setGranted(bool isGranted) { m_isGranted = isGranted; }
    void setHanging(bool isHanging) { m_isHanging = isHanging; }
    /// The person presses the one that is shown under `identifier`; false when there is nothing to press.
    bool press(const QString &identifier) {
        const auto pressed = m_pressed.value(identifier);
        if (pressed)
            m_time.async(pressed);
        return pressed != nullptr;
    }
    [[nodiscard]] const QList<UserNotification> &shown() const { return m_shown; }
    [[nodiscard]] int added() const { return m_added; }

private:
    VirtualTime &m_time;
    bool m_isGranted = true;
    bool m_isHanging = false;
    QHash<QString, std::function<void()>> m_pressed;
    QList<UserNotification> m_shown;
    int m_added = 0;
};

} // namespace tavrine
