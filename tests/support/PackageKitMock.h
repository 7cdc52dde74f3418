#pragma once

#include "support/DBusMock.h"

#include <QDBusObjectPath>
#include <QDBusVirtualObject>

#include <functional>

namespace tavrine::test {

/// PackageKit as its clients see it, on the test program's own system bus. What it says is told it by the test,
/// nonsense too; nothing in here knows of packages.
class PackageKitMock final : public QDBusVirtualObject {
public:
    PackageKitMock() { start(); }
    ~PackageKitMock() override { end(); }

    void start() {
        m_bus = std::make_unique<QDBusConnection>(
            QDBusConnection::connectToBus(privateSystemBus().address(), QStringLiteral("mock-packagekit")));
        m_bus->registerVirtualObject(QStringLiteral("/"), this, QDBusConnection::SubPath);
        EXPECT_TRUE(m_bus->registerService(QStringLiteral("org.freedesktop.PackageKit")));
    }
    /// As by a kill: its names go, and no call of its is answered any more.
    void end() {
        m_bus.reset();
        QDBusConnection::disconnectFromBus(QStringLiteral("mock-packagekit"));
    }

    // What it says, as identifiers of packages.
    QStringList installed;
    QStringList updates;
    uint exit = 1;
    /// The call of this name gets no answer, and nothing follows.
    QString hangsAt;
    /// Takes a call instead of us, when it returns true.
    std::function<bool(const QDBusMessage &, QDBusConnection &)> instead;
    /// What it was asked.
    QStringList calls;
    QList<QVariantList> arguments;

    [[nodiscard]] bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override {
        QDBusConnection bus = connection;
        calls.append(message.member());
        arguments.append(message.arguments());
        if (message.member() == hangsAt || (instead && instead(message, bus))) {
            message.setDelayedReply(true);
            return true;
        }
        if (message.member() == QLatin1String("CreateTransaction")) {
            bus.send(message.createReply(
                QVariant::fromValue(QDBusObjectPath(QStringLiteral("/%1_transaction").arg(++m_transactions)))));
            return true;
        }
        bus.send(message.createReply());
        if (message.member() == QLatin1String("Resolve"))
            tell(message.path(), installed, bus);
        else if (message.member() == QLatin1String("GetUpdates"))
            tell(message.path(), updates, bus);
        return true;
    }
    [[nodiscard]] QString introspect(const QString &) const override { return {}; }

    static void emitSignal(QDBusConnection &bus, const QString &path, const char *name, const QVariantList &values) {
        auto signal = QDBusMessage::createSignal(path, QStringLiteral("org.freedesktop.PackageKit.Transaction"),
                                                 QLatin1String(name));
        signal.setArguments(values);
        bus.send(signal);
    }

private:
    void tell(const QString &path, const QStringList &packages, QDBusConnection &bus) const {
        for (const QString &package : packages)
            emitSignal(bus, path, "Package", {uint(5), package, QStringLiteral("A summary")});
        emitSignal(bus, path, "Finished", {exit, uint(12)});
        emitSignal(bus, path, "Destroy", {});
    }

    std::unique_ptr<QDBusConnection> m_bus;
    int m_transactions = 0;
};

} // namespace tavrine::test
