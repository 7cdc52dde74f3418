// What every teller of the session's notices promises, run on the fake and on a private desktop with a logind that is
// played.

#include "adapters/fake/FakeSessionNotices.h"
#include "adapters/fake/VirtualTime.h"
#include "adapters/x11/X11SessionNotices.h"
#include "support/DBusMock.h"

#include <QDir>
#include <QGuiApplication>
#include <QRasterWindow>

#include <algorithm>

#include <gtest/gtest.h>

namespace tavrine::test {
namespace {

using namespace std::chrono_literals;

constexpr SessionNotice everyNotice[] = {
    SessionNotice::didWake,         SessionNotice::screensDidWake, SessionNotice::activeSpaceDidChange,
    SessionNotice::didBecomeActive, SessionNotice::didUnhide,      SessionNotice::screenIsUnlocked};

class Session {
public:
    virtual ~Session() = default;
    virtual SessionNotices &notices() = 0;
    virtual void happen(SessionNotice notice) = 0;
    virtual bool comes(const std::function<bool()> &condition) = 0;
    virtual void rest() = 0;
};

class FakeSession final : public Session {
public:
    SessionNotices &notices() override { return m_fake; }
    void happen(SessionNotice notice) override { m_fake.happen(notice); }
    bool comes(const std::function<bool()> &condition) override {
        m_time.advance(1s);
        return condition();
    }
    void rest() override { m_time.advance(1s); }

private:
    VirtualTime m_time;
    FakeSessionNotices m_fake{m_time};
};

void run(const QString &program, const QStringList &arguments) {
    EXPECT_EQ(QProcess::execute(program, arguments), 0) << program.toStdString();
}

class X11Session final : public Session {
public:
    SessionNotices &notices() override { return m_real; }
    void happen(SessionNotice notice) override {
        switch (notice) {
        case SessionNotice::didWake:
            (void)m_logind.call(QStringLiteral("/org/freedesktop/login1"), QStringLiteral("org.freedesktop.DBus.Mock"),
                                QStringLiteral("EmitSignal"),
                                {QStringLiteral("org.freedesktop.login1.Manager"), QStringLiteral("PrepareForSleep"),
                                 QStringLiteral("b"), QVariantList{false}});
            return;
        case SessionNotice::screensDidWake:
            run(QStringLiteral("xset"), {QStringLiteral("s"), QStringLiteral("activate")});
            return run(QStringLiteral("xset"), {QStringLiteral("s"), QStringLiteral("reset")});
        case SessionNotice::activeSpaceDidChange:
            m_desktop = 1 - m_desktop;
            return run(QStringLiteral("wmctrl"), {QStringLiteral("-s"), QString::number(m_desktop)});
        case SessionNotice::didBecomeActive:
            m_window.hide();
            EXPECT_TRUE(eventually([] { return !QGuiApplication::focusWindow(); }));
            m_window.show();
            m_window.requestActivate();
            return;
        case SessionNotice::didUnhide:
            run(QStringLiteral("wmctrl"), {QStringLiteral("-k"), QStringLiteral("on")});
            return run(QStringLiteral("wmctrl"), {QStringLiteral("-k"), QStringLiteral("off")});
        case SessionNotice::screenIsUnlocked:
            auto signal = QDBusMessage::createSignal(QStringLiteral("/ScreenSaver"),
                                                     QStringLiteral("org.freedesktop.ScreenSaver"),
                                                     QStringLiteral("ActiveChanged"));
            signal << false;
            QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("test-session")).send(signal);
        }
    }
    bool comes(const std::function<bool()> &condition) override { return eventually(condition); }
    void rest() override { letPass(100ms); }

private:
    DBusMock m_logind{DBusMock::Bus::system, QStringLiteral("logind"), QStringLiteral("org.freedesktop.login1")};
    X11SessionNotices m_real;
    QRasterWindow m_window;
    static inline int m_desktop = 0; // stays from one test to the next
};

template <class T>
std::unique_ptr<Session> make() {
    return std::make_unique<T>();
}

class SessionNoticesContract : public ::testing::TestWithParam<std::unique_ptr<Session> (*)()> {
protected:
    SessionNotices::Token follow() {
        return session->notices().follow([this](SessionNotice notice) { told.push_back(notice); });
    }
    [[nodiscard]] qsizetype countOf(SessionNotice notice) const { return std::count(told.begin(), told.end(), notice); }
    /// The buses are opened behind the following: what comes from there is told once it is heard.
    [[nodiscard]] bool isHeard(SessionNotice notice) {
        for (int tries = 0; tries < 50; ++tries) {
            session->happen(notice);
            session->rest();
            if (countOf(notice) > 0)
                return true;
        }
        return false;
    }

    std::unique_ptr<Session> session = GetParam()();
    std::vector<SessionNotice> told;
};

INSTANTIATE_TEST_SUITE_P(Fake, SessionNoticesContract, ::testing::Values(&make<FakeSession>));
INSTANTIATE_TEST_SUITE_P(X11, SessionNoticesContract, ::testing::Values(&make<X11Session>));

TEST_P(SessionNoticesContract, eachNoticeIsToldAndNoOtherForIt) {
    const auto following = follow();
    for (const SessionNotice notice : everyNotice) {
        told.clear();
        EXPECT_TRUE(session->notices().tells(notice)) << static_cast<int>(notice);
        EXPECT_TRUE(isHeard(notice)) << static_cast<int>(notice);
        EXPECT_EQ(countOf(notice), static_cast<qsizetype>(told.size())) << static_cast<int>(notice);
    }
}

TEST_P(SessionNoticesContract, allWhoFollowAreTold) {
    const auto first = follow();
    const auto second = follow();
    session->happen(SessionNotice::activeSpaceDidChange);
    EXPECT_TRUE(session->comes([this] { return countOf(SessionNotice::activeSpaceDidChange) == 2; }));
}

TEST_P(SessionNoticesContract, whoStopsFollowingWithinTheHandlerHearsNoMore) {
    SessionNotices::Token following;
    following = session->notices().follow([&](SessionNotice notice) {
        told.push_back(notice);
        following.reset();
    });
    session->happen(SessionNotice::activeSpaceDidChange);
    EXPECT_TRUE(session->comes([this] { return told.size() == 1; }));
    session->happen(SessionNotice::activeSpaceDidChange);
    session->rest();
    EXPECT_EQ(told.size(), 1U);
}

TEST_P(SessionNoticesContract, whatHappenedBeforeIsNotTold) {
    session->happen(SessionNotice::activeSpaceDidChange);
    session->rest();
    const auto following = follow();
    session->rest();
    EXPECT_TRUE(told.empty());
}

TEST(X11SessionNoticesTest, nothingIsWatchedWhileNobodyFollows) {
    const auto sockets = [] {
        letPass(20ms);
        return QDir(QStringLiteral("/proc/self/fd")).entryList(QDir::Files | QDir::System).size();
    };
    X11SessionNotices notices;
    auto warm = notices.follow([](SessionNotice) {}); // the buses stay open for all
    letPass(200ms);
    warm.reset();
    const auto before = sockets();
    auto following = notices.follow([](SessionNotice) {});
    EXPECT_EQ(sockets(), before + 1);
    following.reset();
    EXPECT_EQ(sockets(), before);
}

} // namespace
} // namespace tavrine::test
