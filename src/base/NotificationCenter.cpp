#include "base/NotificationCenter.h"

namespace tavrine {

struct NotificationCenter::Observer {
    QString name;
    Handler handler;
};

NotificationCenter::NotificationCenter() = default;
NotificationCenter::~NotificationCenter() = default;

NotificationCenter &NotificationCenter::defaultCenter() {
    static NotificationCenter center;
    return center;
}

NotificationCenter::Token NotificationCenter::addObserver(const QString &name, Handler handler) {
    auto observer = std::make_shared<Observer>(Observer{name, std::move(handler)});
    m_observers.push_back(observer);
    return observer;
}

void NotificationCenter::post(const QString &name, const QVariantMap &userInfo) {
    std::erase_if(m_observers, [](const auto &observer) { return observer.expired(); });
    const Notification notification{name, userInfo};
    const auto present = m_observers;
    for (const auto &weak : present) {
        // Held for the length of the call, so that an observer may release its own token.
        if (const auto observer = weak.lock(); observer && observer->name == name)
            observer->handler(notification);
    }
}

} // namespace tavrine
