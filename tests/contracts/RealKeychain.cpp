// The key ring of the desktop under its contract, and what its service can do to us: a GNOME key ring of its own on a
// bus where nothing is started by itself.

#include "adapters/linux/QtKeychainStore.h"
#include "contracts/KeyRingDaemon.h"
#include "contracts/KeychainContract.h"
#include "support/Eventually.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusVirtualObject>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QProcess>

#include <thread>

namespace tavrine::test {
namespace {

using namespace std::chrono_literals;

const auto secretService = QStringLiteral("org.freedesktop.secrets");

bool isOnTheBus(const QString &name) {
    return QDBusConnection::sessionBus().interface()->isServiceRegistered(name);
}

/// A GNOME key ring of its own, unlocked at first.
class KeyRing {
public:
    KeyRing() { start(true); }
    ~KeyRing() { endService(); }

    Keychain &keychain() { return m_store; }

    void start(bool isUnlocked) {
        m_daemon.start(isUnlocked);
        if (!eventually([] { return isOnTheBus(secretService); }))
            ADD_FAILURE() << "no key ring: " << m_daemon.output().toStdString();
    }
    void endService() {
        m_daemon.end();
        EXPECT_TRUE(eventually([] { return !isOnTheBus(secretService); }));
    }
    void hold() { m_daemon.hold(); }

    void lock() {
        QDBusMessage call =
            QDBusMessage::createMethodCall(secretService, QStringLiteral("/org/freedesktop/secrets"),
                                           QStringLiteral("org.freedesktop.Secret.Service"), QStringLiteral("Lock"));
        call << QVariant::fromValue(
            QList{QDBusObjectPath(QStringLiteral("/org/freedesktop/secrets/collection/login"))});
        EXPECT_EQ(QDBusConnection::sessionBus().call(call).type(), QDBusMessage::ReplyMessage);
    }

private:
    KeyRingDaemon m_daemon;
    QtKeychainStore m_store{5s};
};

INSTANTIATE_TYPED_TEST_SUITE_P(Gnome, KeychainContract, KeyRing);

/// Stands where the desktop's question for the password would: asked, it never answers.
class SilentPrompter final : public QDBusVirtualObject {
public:
    SilentPrompter() {
        QDBusConnection::sessionBus().registerVirtualObject(QStringLiteral("/org/gnome/keyring/Prompter"), this);
        EXPECT_TRUE(QDBusConnection::sessionBus().registerService(QStringLiteral("org.gnome.keyring.SystemPrompter")));
    }
    ~SilentPrompter() override {
        QDBusConnection::sessionBus().unregisterService(QStringLiteral("org.gnome.keyring.SystemPrompter"));
        QDBusConnection::sessionBus().unregisterObject(QStringLiteral("/org/gnome/keyring/Prompter"));
    }
    [[nodiscard]] bool wasAsked() const { return m_wasAsked; }

    bool handleMessage(const QDBusMessage &message, const QDBusConnection &bus) override {
        m_wasAsked = true;
        bus.send(message.createReply());
        return true;
    }
    [[nodiscard]] QString introspect(const QString &) const override { return {}; }

private:
    bool m_wasAsked = false;
};

class DesktopKeychain : public testing::Test {
protected:
    KeyRing ring;
    KeychainItem item{QStringLiteral("com.veltrane.Tavrine"), QStringLiteral("cloudUploadScript")};

    static bool failed(const Keychain::Data &data) { return data == Keychain::Data(KeychainStatus::failure); }
};

TEST_F(DesktopKeychain, otherProgramsReadTheScriptAsPlainText) {
    const QByteArray script = "function uploadImage() {\n  return 'häßlich';\n}\n";
    ASSERT_EQ(ring.keychain().add(item, script), KeychainStatus::success);
    QProcess tool;
    tool.start(QStringLiteral("secret-tool"), {QStringLiteral("lookup"), QStringLiteral("server"), item.service,
                                               QStringLiteral("user"), item.account});
    ASSERT_TRUE(tool.waitForFinished());
    EXPECT_EQ(tool.readAllStandardOutput(), script);
}

TEST_F(DesktopKeychain, aServiceThatComesBackIsAskedAgain) {
    ASSERT_EQ(ring.keychain().add(item, "script"), KeychainStatus::success);
    ring.endService();
    EXPECT_TRUE(failed(ring.keychain().copyMatching(item)));
    ring.start(true);
    EXPECT_EQ(ring.keychain().copyMatching(item), Keychain::Data(QByteArray("script")));
    EXPECT_EQ(ring.keychain().update(item, "next"), KeychainStatus::success);
    EXPECT_EQ(ring.keychain().copyMatching(item), Keychain::Data(QByteArray("next")));
}

TEST_F(DesktopKeychain, aServiceThatDiesUnderACallFailsIt) {
    ASSERT_EQ(ring.keychain().add(item, "script"), KeychainStatus::success);
    ring.hold();
    Keychain::Data answer = QByteArray();
    QElapsedTimer timer;
    timer.start();
    std::thread caller([&] { answer = ring.keychain().copyMatching(item); });
    letPass(200ms);
    ring.endService();
    caller.join();
    EXPECT_TRUE(failed(answer));
    EXPECT_LT(timer.elapsed(), 4000); // before its own time was up
}

TEST_F(DesktopKeychain, aServiceThatHangsCostsTheAgreedTime) {
    ASSERT_EQ(ring.keychain().add(item, "script"), KeychainStatus::success);
    QtKeychainStore impatient(300ms);
    ring.hold();
    QElapsedTimer timer;
    timer.start();
    EXPECT_TRUE(failed(impatient.copyMatching(item)));
    EXPECT_GE(timer.elapsed(), 300);
    EXPECT_LT(timer.elapsed(), 2000);
}

TEST_F(DesktopKeychain, aLockedKeyRingThatCannotAskIsAFailureAndKeepsItsItem) {
    ASSERT_EQ(ring.keychain().add(item, "script"), KeychainStatus::success);
    ring.lock();
    EXPECT_TRUE(failed(ring.keychain().copyMatching(item)));
    EXPECT_EQ(ring.keychain().update(item, "other"), KeychainStatus::failure);
    EXPECT_EQ(ring.keychain().add(item, "other"), KeychainStatus::failure);
    EXPECT_EQ(ring.keychain().remove(item), KeychainStatus::failure);
    ring.endService();
    ring.start(true);
    EXPECT_EQ(ring.keychain().copyMatching(item), Keychain::Data(QByteArray("script")));
}

TEST_F(DesktopKeychain, aPromptThatNobodyAnswersFailsAfterTheAgreedTime) {
    ASSERT_EQ(ring.keychain().add(item, "script"), KeychainStatus::success);
    SilentPrompter prompter;
    ring.lock();
    QtKeychainStore impatient(1s);
    Keychain::Data answer = QByteArray();
    bool isDone = false;
    QElapsedTimer timer;
    timer.start();
    std::thread caller([&] {
        answer = impatient.copyMatching(item);
        QMetaObject::invokeMethod(qApp, [&] { isDone = true; });
    });
    EXPECT_TRUE(eventually([&] { return isDone; }));
    caller.join();
    EXPECT_TRUE(prompter.wasAsked());
    EXPECT_TRUE(failed(answer));
    EXPECT_GE(timer.elapsed(), 1000);
    EXPECT_LT(timer.elapsed(), 3000);
}

TEST_F(DesktopKeychain, aServiceThatDiedAtThePromptIsAskedAgain) {
    ASSERT_EQ(ring.keychain().add(item, "script"), KeychainStatus::success);
    ring.lock();
    QtKeychainStore impatient(300ms);
    {
        SilentPrompter prompter;
        bool isDone = false;
        std::thread caller([&] {
            EXPECT_TRUE(failed(impatient.copyMatching(item)));
            QMetaObject::invokeMethod(qApp, [&] { isDone = true; });
        });
        EXPECT_TRUE(eventually([&] { return isDone && prompter.wasAsked(); }));
        caller.join();
    }
    ring.endService();
    ring.start(true);
    EXPECT_EQ(ring.keychain().copyMatching(item), Keychain::Data(QByteArray("script")));
}

TEST_F(DesktopKeychain, aCancelEndsTheCallThatWaitsAtThePrompt) {
    ASSERT_EQ(ring.keychain().add(item, "script"), KeychainStatus::success);
    SilentPrompter prompter;
    ring.lock();
    QtKeychainStore patient; // minutes
    Keychain::Data answer = QByteArray();
    std::thread caller([&] { answer = patient.copyMatching(item); });
    EXPECT_TRUE(eventually([&] { return prompter.wasAsked(); }));
    QElapsedTimer timer;
    timer.start();
    patient.cancel();
    caller.join();
    EXPECT_LT(timer.elapsed(), 200);
    EXPECT_TRUE(failed(answer));
}

} // namespace
} // namespace tavrine::test

int main(int argc, char **argv) {
    testing::InitGoogleTest(&argc, argv);
    // For the whole process: the libraries keep to the first bus that they see.
    tavrine::test::EmptyBus bus;
    if (!bus.start())
        return 1;
    qputenv("DBUS_SESSION_BUS_ADDRESS", bus.address().toUtf8());
    qunsetenv("XDG_CURRENT_DESKTOP");
    const QGuiApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
