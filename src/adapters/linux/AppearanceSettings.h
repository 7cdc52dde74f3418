#pragma once

#include <QDBusConnection>
#include <QDBusVariant>
#include <QObject>

#include <functional>

namespace tavrine {

/// Whether the person asked the desktop for a light appearance, told by the desktop portal where one is running.
///
/// Lives on the main thread. Never starts the portal: it would stay, for one colour. A portal that appears later is
/// asked then, and its changes are followed.
class AppearanceSettings : public QObject {
    Q_OBJECT

public:
    AppearanceSettings(const QDBusConnection &bus, std::function<void()> onChange, QObject *parent);

    /// False for a dark appearance and where nobody said anything.
    [[nodiscard]] bool prefersLight() const { return m_prefersLight; }

private Q_SLOTS:
    void onSettingChanged(const QString &group, const QString &key, const QDBusVariant &value);

private:
    void read();
    void take(QVariant value);

    QDBusConnection m_bus;
    std::function<void()> m_onChange;
    bool m_prefersLight = false;
};

} // namespace tavrine
