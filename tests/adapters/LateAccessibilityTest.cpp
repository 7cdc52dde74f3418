// When Qt's bridge to screen readers is started, with a session bus that plays all parts.

#include "adapters/linux/LateAccessibility.h"

#include "support/Eventually.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QVariantMap>

#include <gtest/gtest.h>

namespace tavrine::test {
namespace {

using namespace std::chrono_literals;

/// The owner of org.a11y.Bus and, on the same bus, the registry of the accessible programs.
class Accessibility final : public QDBusVirtualObject {
public:
    Accessibility() {
        m_bus.registerVirtualObject(QStringLiteral("/org/a11y"), this, QDBusConnection::SubPath);
        m_bus.registerService(QStringLiteral("org.a11y.Bus"));
    }
    ~Accessibility() override { QDBusConnection::disconnectFromBus(QStringLiteral("test-a11y")); }

    bool isScreenReaderThere = false;
    int questions = 0;

    void startRegistry() { m_bus.registerService(QStringLiteral("org.a11y.atspi.Registry")); }
    void startScreenReader() {
        isScreenReaderThere = true;
        auto notice = QDBusMessage::createSignal(QStringLiteral("/org/a11y/bus"),
                                                 QStringLiteral("org.freedesktop.DBus.Properties"),
                                                 QStringLiteral("PropertiesChanged"));
        notice << QStringLiteral("org.a11y.Status") << QVariantMap{{QStringLiteral("ScreenReaderEnabled"), true}}
               << QStringList();
        m_bus.send(notice);
    }

    QString introspect(const QString &) const override { return {}; }
    bool handleMessage(const QDBusMessage &message, const QDBusConnection &bus) override {
        ++questions;
        if (message.member() == QLatin1String("GetAll"))
            return bus.send(message.createReply(QVariantMap{
                {QStringLiteral("IsEnabled"), false}, {QStringLiteral("ScreenReaderEnabled"), isScreenReaderThere}}));
        if (message.member() == QLatin1String("GetAddress"))
            return bus.send(message.createReply(qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS")));
        return false;
    }

private:
    QDBusConnection m_bus = QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("test-a11y"));
};

TEST(LateAccessibility, beginsOnceWhenAScreenReaderStartsAndTheRegistryAnswers) {
    Accessibility owner;
    owner.startRegistry();
    int begun = 0;
    LateAccessibility accessibility([&](const QString &) { ++begun; });
    ASSERT_TRUE(eventually([&] { return owner.questions == 1; }));
    letPass(100ms);
    EXPECT_EQ(begun, 0); // nobody looks
    owner.startScreenReader();
    EXPECT_TRUE(eventually([&] { return begun == 1; }));
    owner.startScreenReader();
    letPass(100ms);
    EXPECT_EQ(begun, 1);
}

TEST(LateAccessibility, anOwnerThatComesLaterIsAsked) {
    int begun = 0;
    LateAccessibility accessibility([&](const QString &) { ++begun; });
    letPass(50ms);
    Accessibility owner;
    owner.isScreenReaderThere = true;
    owner.startRegistry();
    EXPECT_TRUE(eventually([&] { return begun == 1; }));
}

TEST(LateAccessibility, aRegistryThatIsNotThereIsNotStartedFor) {
    Accessibility owner;
    owner.isScreenReaderThere = true;
    int begun = 0;
    LateAccessibility accessibility([&](const QString &) { ++begun; });
    ASSERT_TRUE(eventually([&] { return owner.questions == 2; }));
    letPass(100ms);
    EXPECT_EQ(begun, 0);
}

} // namespace
} // namespace tavrine::test
