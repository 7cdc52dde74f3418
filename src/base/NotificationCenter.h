#pragma once

#include <QString>
#include <QVariantMap>

#include <functional>
#include <memory>
#include <vector>

namespace tavrine {

/// What an observer is handed: the name it registered for and what the poster added.
struct Notification {
    QString name;
    QVariantMap userInfo;
};

/// Named news from anyone to anyone, delivered at once, on the main thread, in the order of registration.
///
/// There are two process-wide centres: the default one, and the workspace's for news of other applications, which
/// the workspace port owns. An observer that goes away while a notification is under way is not called any more; one
/// that arrives during it is first called for the next.
class NotificationCenter {
public:
    using Handler = std::function<void(const Notification &)>;

    /// Keeps an observer registered; releasing it removes the observer. It may outlive the centre.
    using Token = std::shared_ptr<void>;

    NotificationCenter();
    ~NotificationCenter();
    NotificationCenter(const NotificationCenter &) = delete;
    NotificationCenter &operator=(const NotificationCenter &) = delete;

    [[nodiscard]] static NotificationCenter &defaultCenter();

    [[nodiscard]] Token addObserver(const QString &name, Handler handler);
    void post(const QString &name, const QVariantMap &userInfo = {});

private:
    struct Observer;
    std::vector<std::weak_ptr<Observer>> m_observers;
};

} // namespace tavrine
