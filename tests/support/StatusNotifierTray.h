#pragma once

#include "adapters/linux/StatusNotifierAdaptor.h"

#include <QDBusConnection>
#include <QDBusContext>
#include <QObject>
#include <QVariantMap>

namespace tavrine::test {

/// A tray that speaks org.kde.StatusNotifierWatcher on a bus connection of its own, and looks at its items as hosts do.
class StatusNotifierTray : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierWatcher")
    Q_PROPERTY(bool IsStatusNotifierHostRegistered READ tellHost)
    Q_PROPERTY(QStringList RegisteredStatusNotifierItems READ items)
    Q_PROPERTY(int ProtocolVersion READ protocolVersion)

public:
    StatusNotifierTray();
    ~StatusNotifierTray() override;

    void start(bool withHost = true);
    void end();
    void setHasHost(bool hasHost);
    /// A host that goes as soon as somebody has heard of it.
    void comeAndGo();

    [[nodiscard]] bool hasHost() const { return m_hasHost; }
    [[nodiscard]] bool tellHost();
    [[nodiscard]] QStringList items() const { return m_items; }
    [[nodiscard]] int protocolVersion() const { return 0; }

    /// What the item told when it was read last. Read again after every signal of the item.
    [[nodiscard]] const QVariantMap &properties() const { return m_properties; }
    [[nodiscard]] StatusNotifierPixmaps pixmaps() const;
    [[nodiscard]] StatusNotifierToolTip toolTip() const;
    /// The signals of the item, in order.
    [[nodiscard]] const QStringList &signalsSeen() const { return m_signals; }

    void call(const QString &method, QPoint place);
    /// A notch of the wheel over the icon.
    void scroll(int delta);

public Q_SLOTS:
    Q_SCRIPTABLE void RegisterStatusNotifierItem(const QString &service);

Q_SIGNALS:
    Q_SCRIPTABLE void StatusNotifierHostRegistered();
    Q_SCRIPTABLE void StatusNotifierHostUnregistered();
    Q_SCRIPTABLE void StatusNotifierItemRegistered(const QString &service);

private Q_SLOTS:
    void onNewIcon() { onSignal(QStringLiteral("NewIcon")); }
    void onNewToolTip() { onSignal(QStringLiteral("NewToolTip")); }
    void onNewStatus(const QString &status) { onSignal(QStringLiteral("NewStatus ") + status); }
    void onNewTitle() { onSignal(QStringLiteral("NewTitle")); }
    void onOwnerChanged(const QString &name, const QString &before, const QString &after);

private:
    void onSignal(const QString &signal);
    void readItem();

    QDBusConnection m_bus;
    QStringList m_items;
    QStringList m_signals;
    QVariantMap m_properties;
    bool m_hasHost = false;
    bool m_goesNext = false;
};

} // namespace tavrine::test
