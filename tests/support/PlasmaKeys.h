#pragma once

#include "adapters/linux/SessionBus.h"
#include "base/VirtualKeys.h"
#include "support/BusAnswer.h"
#include "support/Eventually.h"
#include "support/WaylandHand.h"

#include <QDBusConnectionInterface>
#include <QObject>
#include <QProcess>

#include <memory>
#include <vector>

namespace tavrine::testing {

/// Plasma's service of hot keys: KWin's own with a person at the keyboard, in a session of KWin's; else the one that
/// serves an X server, started here, whose keys nobody presses: the server keeps those of a dead service for a moment.
/// Another program has hot keys of its own there.
class PlasmaKeys : public QObject {
    Q_OBJECT

public:
    PlasmaKeys() {
        if (qEnvironmentVariableIsSet("WAYLAND_DISPLAY"))
            m_hand = std::make_unique<WaylandHand>();
        m_bus = sessionBus::open(std::chrono::seconds(10)); // that of the program: signals come in their order
        start();
        m_bus->connect(service(), QString(), QStringLiteral("org.kde.kglobalaccel.Component"),
                       QStringLiteral("globalShortcutPressed"), this, SLOT(pressed(QString, QString, qlonglong)));
        // What an earlier test has left is remembered there.
        for (int id = 1; id < 10; ++id)
            call(QStringLiteral("unregister"),
                 {QStringLiteral("com.veltrane.Tavrine"), QStringLiteral("hotkey-%1").arg(id)});
    }
    ~PlasmaKeys() override { end(); }

    static QString service() { return QStringLiteral("org.kde.kglobalaccel"); }
    [[nodiscard]] bool isOwnProcess() const { return !m_hand; }
    void start() {
        if (isOwnProcess())
            m_process.start(QStringLiteral("kglobalaccel5"), QStringList());
        static_cast<void>(test::eventually([this] { return m_bus->interface()->isServiceRegistered(service()); }));
        take(QStringLiteral("last"), m_last);
    }
    void end() {
        if (!isOwnProcess())
            return;
        m_process.kill();
        m_process.waitForFinished();
        static_cast<void>(test::eventually([this] { return !m_bus->interface()->isServiceRegistered(service()); }));
    }

    /// In a session of KWin's: the keys and then one more combination, whose news comes behind all others.
    void press(const std::vector<int> &virtualKeys) {
        strike(virtualKeys);
        const int before = m_lastPresses;
        strike({commandKey, shiftKey, controlKey, zKey});
        if (!test::eventually([&] { return m_lastPresses > before; }))
            ++m_failures;
    }
    /// False when the combination is taken.
    bool take(const QString &name, int key) {
        call(QStringLiteral("doRegister"), {idOf(name)});
        const QDBusMessage answer =
            call(QStringLiteral("setShortcut"), {idOf(name), QVariant::fromValue(QList<int>{key}), 6U});
        return qdbus_cast<QList<int>>(answer.arguments().value(0)) == QList<int>{key};
    }
    void free(const QString &name) { call(QStringLiteral("unregister"), {QStringLiteral("other"), name}); }
    QDBusMessage call(const QString &method, const QVariantList &arguments) const {
        auto message = QDBusMessage::createMethodCall(service(), QStringLiteral("/kglobalaccel"),
                                                      QStringLiteral("org.kde.KGlobalAccel"), method);
        message.setArguments(arguments);
        message.setAutoStartService(false); // the bus knows how to, and there would be two
        return test::answerOf(*m_bus, message);
    }
    /// As if the keys of an action were pressed.
    void invoke(const QString &component, const QString &action) const {
        auto message = QDBusMessage::createMethodCall(service(), QStringLiteral("/component/") + component,
                                                      QStringLiteral("org.kde.kglobalaccel.Component"),
                                                      QStringLiteral("invokeShortcut"));
        message << action;
        static_cast<void>(test::answerOf(*m_bus, message));
    }
    [[nodiscard]] int failures() const { return m_failures; }

    static constexpr int commandKey = 55;
    static constexpr int shiftKey = 56;
    static constexpr int controlKey = 59;

public Q_SLOTS:
    void pressed(const QString &component, const QString &action, qlonglong /*timestamp*/) {
        m_lastPresses += component == QLatin1String("other") && action == QLatin1String("last") ? 1 : 0;
    }

private:
    static constexpr int zKey = 6;
    static QStringList idOf(const QString &name) {
        return {QStringLiteral("other"), name, QStringLiteral("Other"), name};
    }
    void strike(const std::vector<int> &virtualKeys) {
        for (const int key : virtualKeys)
            m_hand->down(*evdevPosition(key));
        for (auto key = virtualKeys.rbegin(); key != virtualKeys.rend(); ++key)
            m_hand->up(*evdevPosition(*key));
    }

    const int m_last = int(Qt::META | Qt::SHIFT | Qt::CTRL) | Qt::Key_Z;
    std::unique_ptr<WaylandHand> m_hand;
    std::optional<QDBusConnection> m_bus;
    QProcess m_process;
    int m_lastPresses = 0;
    int m_failures = 0;
};

} // namespace tavrine::testing
