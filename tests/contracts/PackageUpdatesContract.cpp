// What the system's packages say of this program, under one contract over the fake and over PackageKit's client, whose
// daemon is played on a private bus.
#include "adapters/fake/FakePackageUpdates.h"
#include "adapters/fake/VirtualTime.h"
#include "adapters/linux/PackageKitUpdates.h"
#include "support/PackageKitMock.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gmock/gmock.h>

namespace tavrine::test {
namespace {

using namespace std::chrono_literals;
using Answer = PackageUpdates::Answer;
using Start = PackageUpdates::Start;
using testing::Contains;
using testing::ElementsAre;
using testing::Not;

/// Where the bus of the tests looks for daemons that it could start.
const QString &dataFolder() {
    static const QTemporaryDir folder;
    static const QString path = folder.path();
    return path;
}
const bool isBusReady = qputenv("XDG_DATA_HOME", dataFolder().toLocal8Bit()) && privateSystemBus().isRunning();

QString text(const char *utf8) {
    return QString::fromUtf8(utf8);
}

struct FakePackages {
    PackageUpdates &updates() { return fake; }
    void install(const QString &version, const QStringList &available) {
        fake.setAnswer({Answer::Kind::versions, version, available});
    }
    void fallAsleep() {
        fake.setAnswer({Answer::Kind::unavailable});
        fake.setAsleep(true);
    }
    void hang() { fake.setHanging(true); }
    void fail() { fake.setAnswer({Answer::Kind::noAnswer}); }
    template <class Condition>
    bool eventually(Condition condition) {
        time.runPending();
        return condition();
    }
    void settle() { time.runPending(); }

    VirtualTime time;
    FakePackageUpdates fake{time};
};

struct RealPackages {
    PackageUpdates &updates() { return real; }
    void install(const QString &version, const QStringList &available) {
        mock.installed = {identifier(version)};
        for (const QString &each : available)
            mock.updates.append(identifier(each));
    }
    void fallAsleep() { mock.end(); }
    void hang() { mock.hangsAt = text("CreateTransaction"); }
    void fail() { mock.exit = 2; }
    template <class Condition>
    bool eventually(Condition condition) {
        return test::eventually(condition);
    }
    void settle() { letPass(20ms); }
    static QString identifier(const QString &version) {
        return text("tavrine;") + version + text(";amd64;debian-stable-main");
    }

    PackageKitMock mock;
    PackageKitUpdates real{text("tavrine")};
};

template <class System>
class PackageUpdatesContract : public testing::Test {
protected:
    void ask(Start start = Start::ifNeeded) {
        answer.reset();
        question = system.updates().ask(start, [this](const Answer &given) {
            EXPECT_FALSE(answer) << "a second answer";
            answer = given;
            question.reset();
        });
        EXPECT_FALSE(answer) << "the answer comes in a later turn";
    }
    [[nodiscard]] Answer answerTo(Start start = Start::ifNeeded) {
        ask(start);
        EXPECT_TRUE(system.eventually([this] { return answer.has_value(); }));
        system.settle();
        return answer.value_or(Answer{});
    }

    System system;
    std::unique_ptr<PackageUpdates::Question> question;
    std::optional<Answer> answer;
};

using Systems = testing::Types<FakePackages, RealPackages>;
TYPED_TEST_SUITE(PackageUpdatesContract, Systems);

TYPED_TEST(PackageUpdatesContract, theInstalledVersionAndThoseThatStandReadyAreTold) {
    this->system.install(text("2.3.1-1"), {text("2.4.0-1")});
    EXPECT_EQ(this->answerTo(), (Answer{Answer::Kind::versions, text("2.3.1-1"), {text("2.4.0-1")}}));
    EXPECT_EQ(this->answerTo(Start::never), (Answer{Answer::Kind::versions, text("2.3.1-1"), {text("2.4.0-1")}}));
}

TYPED_TEST(PackageUpdatesContract, withNothingReadyTheInstalledVersionIsTold) {
    this->system.install(text("2.3.1"), {});
    EXPECT_EQ(this->answerTo(), (Answer{Answer::Kind::versions, text("2.3.1")}));
}

TYPED_TEST(PackageUpdatesContract, whatIsNoPackageHasNone) {
    EXPECT_EQ(this->answerTo().kind, Answer::Kind::unavailable);
    EXPECT_EQ(this->answerTo(Start::never).kind, Answer::Kind::unavailable);
}

TYPED_TEST(PackageUpdatesContract, whereThereIsNoPackageSystemNobodyKnowsUnlessItCouldNotBeStarted) {
    this->system.fallAsleep();
    EXPECT_EQ(this->answerTo(Start::ifNeeded).kind, Answer::Kind::unavailable);
    EXPECT_EQ(this->answerTo(Start::never).kind, Answer::Kind::noAnswer);
}

TYPED_TEST(PackageUpdatesContract, aFailureIsNoAnswer) {
    this->system.install(text("2.3.1"), {text("2.4.0")});
    this->system.fail();
    EXPECT_EQ(this->answerTo(), Answer{});
}

TYPED_TEST(PackageUpdatesContract, aDroppedQuestionIsNotAnswered) {
    this->system.install(text("2.3.1"), {});
    this->ask();
    this->question.reset();
    this->system.settle();
    EXPECT_FALSE(this->answer);
}

TYPED_TEST(PackageUpdatesContract, whoHangsDoesNotAnswer) {
    this->system.hang();
    this->ask();
    this->system.settle();
    EXPECT_FALSE(this->answer);
}

// PackageKit alone.

class PackageKitTest : public PackageUpdatesContract<RealPackages> {
protected:
    PackageKitTest() { system.install(text("2.3.1"), {text("2.4.0")}); }

    PackageKitMock &mock = system.mock;
    /// Instead of the answer to `method`, the signals that `say` makes.
    void insteadOf(const char *method, std::function<void(QDBusConnection &, const QString &path)> say) {
        mock.instead = [method, say = std::move(say)](const QDBusMessage &message, QDBusConnection &bus) {
            if (message.member() != QLatin1String(method))
                return false;
            bus.send(message.createReply());
            say(bus, message.path());
            return true;
        };
    }
    static void finish(QDBusConnection &bus, const QString &path) {
        PackageKitMock::emitSignal(bus, path, "Finished", {1U, 1U});
    }
};

TEST_F(PackageKitTest, theInstalledVersionIsAskedForFirstAndInTheBackgroundWhenNobodyWaits) {
    static_cast<void>(answerTo(Start::never));
    EXPECT_EQ(mock.calls, QStringList({text("CreateTransaction"), text("SetHints"), text("Resolve"),
                                       text("CreateTransaction"), text("SetHints"), text("GetUpdates")}));
    EXPECT_EQ(mock.arguments.at(1), QVariantList{QStringList({text("interactive=false"), text("background=true")})});
    EXPECT_EQ(mock.arguments.at(2), (QVariantList{qulonglong(4), QStringList(text("tavrine"))}));
    EXPECT_EQ(mock.arguments.at(5), QVariantList{qulonglong(2)});
    mock.arguments.clear();
    static_cast<void>(answerTo(Start::ifNeeded));
    EXPECT_EQ(mock.arguments.at(1), QVariantList{QStringList({text("interactive=false"), text("background=false")})});
}

TEST_F(PackageKitTest, otherPackagesDoNotCount) {
    mock.updates = QStringList{text("tavrine-data;9;amd64;x"), text("Tavrine;9;amd64;x"), text("libc6;9;amd64;x")};
    EXPECT_EQ(answerTo(), (Answer{Answer::Kind::versions, text("2.3.1")}));
}

TEST_F(PackageKitTest, sixteenVersionsAreTheMostThatCount) {
    for (int i = 0; i < 100; ++i)
        mock.updates.append(RealPackages::identifier(QString::number(i)));
    EXPECT_EQ(answerTo().available.size(), 16);
}

TEST_F(PackageKitTest, aDaemonThatIsKilledHasNotAnswered) {
    for (const char *method : {"CreateTransaction", "Resolve", "GetUpdates"}) {
        mock.hangsAt = text(method);
        ask();
        ASSERT_TRUE(eventually([&] { return mock.calls.contains(text(method)); }));
        mock.end();
        EXPECT_TRUE(eventually([this] { return answer.has_value(); })) << method;
        EXPECT_EQ(answer, Answer{}) << method;
        mock.start();
    }
}

TEST_F(PackageKitTest, aDaemonThatIsKilledBetweenItsAnswerAndItsLastSignalHasNotAnswered) {
    bool isBegun = false;
    insteadOf("GetUpdates", [&](QDBusConnection &, const QString &) { isBegun = true; });
    ask();
    ASSERT_TRUE(eventually([&] { return isBegun; }));
    letPass(50ms); // its answer is on its way
    EXPECT_FALSE(answer);
    mock.end();
    EXPECT_TRUE(eventually([this] { return answer.has_value(); }));
    EXPECT_EQ(answer, Answer{});
}

TEST_F(PackageKitTest, aTransactionThatGoesBeforeItHasFinishedIsNoAnswer) {
    insteadOf("GetUpdates",
              [](QDBusConnection &bus, const QString &path) { PackageKitMock::emitSignal(bus, path, "Destroy", {}); });
    EXPECT_EQ(answerTo(), Answer{});
}

TEST_F(PackageKitTest, errorsAreNoAnswer) {
    for (const char *method : {"CreateTransaction", "Resolve", "GetUpdates"}) {
        mock.instead = [method](const QDBusMessage &message, QDBusConnection &bus) {
            if (message.member() != QLatin1String(method))
                return false;
            return bus.send(message.createErrorReply(QDBusError::AccessDenied, text("no")));
        };
        EXPECT_EQ(answerTo(), Answer{}) << method;
    }
}

TEST_F(PackageKitTest, anAnswerThatIsNoTransactionIsNone) {
    for (const QVariant &nonsense : {QVariant(text("/1")), QVariant(7), QVariant(QByteArray(1000, 'x'))}) {
        mock.instead = [nonsense](const QDBusMessage &message, QDBusConnection &bus) {
            return message.member() == QLatin1String("CreateTransaction") && bus.send(message.createReply(nonsense));
        };
        EXPECT_EQ(answerTo(), Answer{});
    }
    mock.instead = [](const QDBusMessage &message, QDBusConnection &bus) { return bus.send(message.createReply()); };
    EXPECT_EQ(answerTo(), Answer{});
}

TEST_F(PackageKitTest, signalsThatMakeNoSenseAreNoAnswer) {
    const QString good = RealPackages::identifier(text("2.4.0"));
    for (const auto &[signal, values] : {
             std::pair("Package", QVariantList{}),
             std::pair("Package", QVariantList{good, 5U, text("x")}),
             std::pair("Package", QVariantList{5U, good}),
             std::pair("Package", QVariantList{5U, text("tavrine;2.4.0;amd64"), text("x")}),
             std::pair("Package", QVariantList{5U, good + text(";more"), text("x")}),
             std::pair("Package", QVariantList{5U, QString(), text("x")}),
             std::pair("Package", QVariantList{5U, text("tavrine;") + QString(1000, u'9') + text(";;"), text("x")}),
             std::pair("Finished", QVariantList{}),
             std::pair("Finished", QVariantList{text("success"), 1U}),
             std::pair("Finished", QVariantList{0U, 1U}),
             std::pair("Finished", QVariantList{3U, 1U}),
         }) {
        insteadOf("GetUpdates", [&, signal = signal, values = values](QDBusConnection &bus, const QString &path) {
            PackageKitMock::emitSignal(bus, path, signal, values);
            finish(bus, path);
        });
        EXPECT_EQ(answerTo(), Answer{}) << signal << ' ' << values.size();
    }
}

TEST_F(PackageKitTest, anIdentifierOfAThousandSignsIsTheLongest) {
    const auto answerOfLength = [this](qsizetype length) {
        const QString start = text("other;1;amd64;");
        mock.updates = {start + QString(length - start.size(), u'x')};
        return answerTo().kind;
    };
    EXPECT_EQ(answerOfLength(1000), Answer::Kind::versions);
    EXPECT_EQ(answerOfLength(1001), Answer::Kind::noAnswer);
}

TEST_F(PackageKitTest, signalsOfOtherTransactionsAndOtherProgramsDoNotCount) {
    auto stranger = QDBusConnection::connectToBus(privateSystemBus().address(), text("stranger"));
    insteadOf("GetUpdates", [&](QDBusConnection &bus, const QString &path) {
        const QVariantList forged{5U, RealPackages::identifier(text("9.9")), text("x")};
        PackageKitMock::emitSignal(stranger, path, "Package", forged);
        PackageKitMock::emitSignal(stranger, path, "Finished", {1U, 1U});
        PackageKitMock::emitSignal(bus, text("/1_transaction"), "Package", forged);
        PackageKitMock::emitSignal(bus, text("/1_transaction"), "Destroy", {});
        PackageKitMock::emitSignal(bus, text("/1_transaction"), "Finished", {2U, 1U});
        letPass(50ms);
        PackageKitMock::emitSignal(bus, path, "Package", {5U, RealPackages::identifier(text("2.4.1")), text("x")});
        finish(bus, path);
    });
    EXPECT_EQ(answerTo(), (Answer{Answer::Kind::versions, text("2.3.1"), {text("2.4.1")}}));
    QDBusConnection::disconnectFromBus(text("stranger"));
}

TEST_F(PackageKitTest, aDroppedQuestionIsCancelledThere) {
    mock.hangsAt = text("GetUpdates");
    ask();
    ASSERT_TRUE(eventually([this] { return mock.calls.contains(text("GetUpdates")); }));
    question.reset();
    EXPECT_TRUE(eventually([this] { return mock.calls.last() == text("Cancel"); }));
    mock.hangsAt.clear();
    mock.calls.clear();
    static_cast<void>(answerTo());
    EXPECT_THAT(mock.calls, Not(Contains(text("Cancel")))) << "one that has finished";
}

/// A daemon that the bus would start: a program that only leaves a trace.
TEST_F(PackageKitTest, theDaemonIsStartedForAPersonAndNotOtherwise) {
    ASSERT_TRUE(isBusReady);
    mock.end();
    const QTemporaryDir traces;
    const QString services = dataFolder() + text("/dbus-1/services");
    ASSERT_TRUE(QDir().mkpath(services));
    QFile file(services + text("/org.freedesktop.PackageKit.service"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    const QString trace = traces.filePath(text("started"));
    file.write(text("[D-BUS Service]\nName=org.freedesktop.PackageKit\nExec=/bin/sh -c \"touch %1; exit 1\"\n")
                   .arg(trace)
                   .toUtf8());
    file.close();
    auto bus = QDBusConnection::connectToBus(privateSystemBus().address(), text("reloader"));
    const auto reload = [&] {
        return bus.call(QDBusMessage::createMethodCall(text("org.freedesktop.DBus"), text("/org/freedesktop/DBus"),
                                                       text("org.freedesktop.DBus"), text("ReloadConfig")));
    };
    ASSERT_EQ(reload().type(), QDBusMessage::ReplyMessage);
    EXPECT_EQ(answerTo(Start::never), Answer{});
    EXPECT_FALSE(QFile::exists(trace));
    EXPECT_EQ(answerTo(Start::ifNeeded), Answer{}) << "it could not be started";
    EXPECT_TRUE(QFile::exists(trace));
    file.remove();
    static_cast<void>(reload());
    QDBusConnection::disconnectFromBus(text("reloader"));
}

} // namespace
} // namespace tavrine::test
