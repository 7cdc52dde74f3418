// The program on the session bus, as launchers and shortcuts of the desktop call it, and as the bus itself starts it.

#include "support/BusAnswer.h"
#include "support/Eventually.h"
#include "support/PrivateBus.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDir>

#include <csignal>

#include <gmock/gmock.h>

namespace tavrine::test {
namespace {

using namespace std::chrono_literals;

const auto name = QStringLiteral("com.veltrane.Tavrine");
const auto path = QStringLiteral("/com/veltrane/Tavrine");
const auto application = QStringLiteral("org.freedesktop.Application");
const auto triggers = QStringLiteral("com.veltrane.Tavrine.Triggers");

/// A bus of its own with a program beside it that prints what it is asked for. The bus knows how to start it.
class ProgramOnTheBus : public ::testing::Test {
protected:
    ProgramOnTheBus() {
        QDir(folder.path()).mkpath(QStringLiteral("dbus-1/services"));
        QFile service(folder.filePath(QStringLiteral("dbus-1/services/com.veltrane.Tavrine.service")));
        if (service.open(QIODevice::WriteOnly))
            service.write("[D-BUS Service]\nName=com.veltrane.Tavrine\nExec=/bin/sh -c \"exec " SINGLE_INSTANCE_PROGRAM
                          " --service >>" +
                          logPath().toUtf8() + " 2>&1\"\n");
        service.close();
        bus = std::make_unique<PrivateBus>(folder.path());
        connection.emplace(QDBusConnection::connectToBus(bus->address(), QStringLiteral("caller")));
    }
    ~ProgramOnTheBus() override {
        const QDBusReply<uint> pid = connection->interface()->servicePid(name);
        if (pid.isValid() && started.processId() != pid.value())
            ::kill(static_cast<pid_t>(pid.value()), SIGKILL); // one that the bus has started
        connection.reset();
        QDBusConnection::disconnectFromBus(QStringLiteral("caller"));
        started.kill();
        started.waitForFinished();
    }

    /// As a person starts it.
    bool start() {
        auto environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), bus->address());
        started.setProcessEnvironment(environment);
        started.setStandardOutputFile(logPath(), QIODevice::Append);
        started.start(QStringLiteral(SINGLE_INSTANCE_PROGRAM), QStringList());
        return eventually([this] { return connection->interface()->isServiceRegistered(name); });
    }
    QDBusMessage call(const QString &method, const QVariantList &arguments) const {
        auto message = QDBusMessage::createMethodCall(name, path, application, method);
        message.setArguments(arguments);
        return test::answerOf(*connection, message);
    }
    QDBusMessage act(const QVariant &action, const QVariantMap &platformData = {}) const {
        return call(QStringLiteral("ActivateAction"), {action, QVariantList(), platformData});
    }
    QDBusMessage tapAlt() const {
        return test::answerOf(*connection, QDBusMessage::createMethodCall(name, path + QStringLiteral("/Triggers"),
                                                                          triggers, QStringLiteral("AltTap")));
    }
    [[nodiscard]] QString logPath() const { return folder.filePath(QStringLiteral("said")); }
    [[nodiscard]] QString said() const {
        QFile log(logPath());
        return log.open(QIODevice::ReadOnly) ? QString::fromUtf8(log.readAll()) : QString();
    }
    [[nodiscard]] bool says(const QString &text) const {
        return eventually([&] { return said().contains(text); });
    }

    QTemporaryDir folder;
    std::unique_ptr<PrivateBus> bus;
    std::optional<QDBusConnection> connection;
    QProcess started;
};

TEST_F(ProgramOnTheBus, everyActionOfTheDesktopFileIsTakenAndToldOnce) {
    ASSERT_TRUE(start());
    QFile entry(QStringLiteral(DESKTOP_FILE));
    ASSERT_TRUE(entry.open(QIODevice::ReadOnly));
    const QStringList lines = QString::fromUtf8(entry.readAll()).split(u'\n');
    const QStringList actions =
        lines.filter(QStringLiteral("Actions=")).value(0).mid(8).split(u';', Qt::SkipEmptyParts);
    ASSERT_EQ(actions.size(), 9);
    for (const QString &action : actions) {
        EXPECT_EQ(act(action).type(), QDBusMessage::ReplyMessage) << qPrintable(action);
        EXPECT_TRUE(says(QStringLiteral("reopened\nfor %1\n").arg(action)));
        EXPECT_TRUE(lines.contains(QStringLiteral("[Desktop Action %1]").arg(action)));
        EXPECT_TRUE(lines.contains(QStringLiteral("Exec=tavrine --%1").arg(action)));
    }
    EXPECT_EQ(said().count(QStringLiteral("reopened")), actions.size());
}

TEST_F(ProgramOnTheBus, anActionThatNobodyKnowsIsRefusedAndDoesNothing) {
    ASSERT_TRUE(start());
    for (const QString &unknown : {QString(), QStringLiteral("Shelf"), QStringLiteral("shelf "), QString(1 << 20, u'x'),
                                   QString(QChar(0x202e))}) {
        const QDBusMessage answer = act(unknown);
        EXPECT_EQ(answer.errorName(), QStringLiteral("org.freedesktop.DBus.Error.InvalidArgs"));
        EXPECT_LT(answer.errorMessage().size(), 100);
    }
    ASSERT_EQ(act(QStringLiteral("shelf")).type(), QDBusMessage::ReplyMessage);
    EXPECT_TRUE(says(QStringLiteral("for shelf\n")));
    EXPECT_EQ(said().count(QStringLiteral("reopened")), 1);
}

TEST_F(ProgramOnTheBus, argumentsOfOtherTypesAreRefusedAndDoNothing) {
    ASSERT_TRUE(start());
    EXPECT_EQ(act(7).type(), QDBusMessage::ErrorMessage);
    EXPECT_EQ(call(QStringLiteral("ActivateAction"), {QStringLiteral("shelf")}).type(), QDBusMessage::ErrorMessage);
    EXPECT_EQ(call(QStringLiteral("Activate"), {QStringLiteral("shelf")}).type(), QDBusMessage::ErrorMessage);
    EXPECT_EQ(call(QStringLiteral("Format"), {}).type(), QDBusMessage::ErrorMessage);
    ASSERT_EQ(call(QStringLiteral("Activate"), {QVariantMap()}).type(), QDBusMessage::ReplyMessage);
    EXPECT_TRUE(says(QStringLiteral("reopened\n")));
    EXPECT_EQ(said(), QStringLiteral("first\nreopened\n"));
}

TEST_F(ProgramOnTheBus, ofALaunchersIdentifiersOnlyShortTextsCount) {
    ASSERT_TRUE(start());
    const auto startupId = QStringLiteral("desktop-startup-id");
    const auto token = QStringLiteral("activation-token");
    ASSERT_EQ(act(QStringLiteral("emoji"), {{startupId, QString(1 << 20, u'x')}, {token, 7}}).type(),
              QDBusMessage::ReplyMessage);
    ASSERT_EQ(act(QStringLiteral("emoji"), {{startupId, QVariantList{1, 2}}, {token, QString(1025, u'y')}}).type(),
              QDBusMessage::ReplyMessage);
    ASSERT_EQ(act(QStringLiteral("shelf"), {{startupId, QString(1024, u'z')}, {token, QStringLiteral("t")}}).type(),
              QDBusMessage::ReplyMessage);
    EXPECT_TRUE(says(QStringLiteral("for shelf\n")));
    EXPECT_EQ(said(),
              QStringLiteral("first\nreopened\nfor emoji\nreopened\nfor emoji\nreopened\nby %1\nwith t\nfor shelf\n")
                  .arg(QString(1024, u'z')));
}

TEST_F(ProgramOnTheBus, aTapOfAltIsToldToTheProgramThatRuns) {
    ASSERT_TRUE(start());
    EXPECT_EQ(tapAlt().type(), QDBusMessage::ReplyMessage);
    EXPECT_TRUE(says(QStringLiteral("for alt-tap\n")));
}

// The bus starts it.

TEST_F(ProgramOnTheBus, aLaunchersActivationStartsItAndOpensNothingMore) {
    EXPECT_EQ(call(QStringLiteral("Activate"), {QVariantMap()}).type(), QDBusMessage::ReplyMessage);
    ASSERT_EQ(act(QStringLiteral("shelf")).type(), QDBusMessage::ReplyMessage);
    EXPECT_TRUE(says(QStringLiteral("for shelf\n")));
    EXPECT_EQ(said(), QStringLiteral("first\nreopened\nfor shelf\n"));
}

TEST_F(ProgramOnTheBus, aSecondActivationComesToTheProgramThatTheFirstStarted) {
    ASSERT_EQ(call(QStringLiteral("Activate"), {QVariantMap()}).type(), QDBusMessage::ReplyMessage);
    ASSERT_EQ(call(QStringLiteral("Activate"), {QVariantMap()}).type(), QDBusMessage::ReplyMessage);
    EXPECT_TRUE(says(QStringLiteral("first\nreopened\n")));
}

TEST_F(ProgramOnTheBus, manyCallsAtOnceStartItOnceAndEachIsDone) {
    std::vector<QDBusPendingCall> calls;
    for (int i = 0; i < 5; ++i) {
        auto message = QDBusMessage::createMethodCall(name, path, application, QStringLiteral("ActivateAction"));
        message << QStringLiteral("emoji") << QVariantList() << QVariantMap();
        calls.push_back(connection->asyncCall(message));
    }
    for (QDBusPendingCall &each : calls) {
        each.waitForFinished();
        EXPECT_FALSE(each.isError());
    }
    EXPECT_TRUE(eventually([this] { return said().count(QStringLiteral("for emoji")) == 5; }));
    EXPECT_EQ(said().count(QStringLiteral("first")), 1);
}

TEST_F(ProgramOnTheBus, aStartByTheBusBesideOneThatRunsOpensNothing) {
    ASSERT_TRUE(start());
    QProcess second;
    second.setProcessEnvironment(started.processEnvironment());
    second.start(QStringLiteral(SINGLE_INSTANCE_PROGRAM), {QStringLiteral("--service")});
    ASSERT_TRUE(eventually([&] { return second.state() == QProcess::NotRunning; }));
    EXPECT_EQ(second.exitCode(), 0);
    ASSERT_EQ(act(QStringLiteral("shelf")).type(), QDBusMessage::ReplyMessage);
    EXPECT_TRUE(says(QStringLiteral("for shelf\n")));
    EXPECT_EQ(said(), QStringLiteral("first\nreopened\nfor shelf\n"));
}

TEST_F(ProgramOnTheBus, aTapOfAltDoesNotKeepRunningWhatItStarted) {
    static_cast<void>(tapAlt());
    EXPECT_TRUE(says(QStringLiteral("first\n")));
    EXPECT_TRUE(eventually([this] { return !connection->interface()->isServiceRegistered(name).value(); }));
    EXPECT_EQ(said(), QStringLiteral("first\nTavrine was started by a tap of Alt alone, and does not stay for it.\n"));
}

} // namespace
} // namespace tavrine::test
