#pragma once

#include "adapters/fake/VirtualTime.h"
#include "base/DesktopWords.h"
#include "ports/UserNotifications.h"

#include <QList>

namespace tavrine {

/// A desktop that shows what it is given, unless the test says otherwise.
class FakeUserNotifications final : public UserNotifications {
public:
    explicit FakeUserNotifications(VirtualTime &time) : m_time(time) {}

    void requestAuthorization(std::function<void(bool)> answered) override {
        m_time.async([answered = std::move(answered), isGranted = m_isGranted] { answered(isGranted); });
    }
    void add(const UserNotification &notification) override {
        ++m_added;
        if (!m_isGranted)
            return;
        m_shown.removeIf([&](const auto &each) { return each.identifier == notification.identifier; });
        m_shown.append({notification.identifier, notification.title, inDesktopWords(notification.body)});
    }

    void setGranted(bool isGranted) { m_isGranted = isGranted; }
    [[nodiscard]] const QList<UserNotification> &shown() const { return m_shown; }
    [[nodiscard]] int added() const { return m_added; }

private:
    VirtualTime &m_time;
    bool m_isGranted = true;
    QList<UserNotification> m_shown;
    int m_added = 0;
};

} // namespace tavrine
