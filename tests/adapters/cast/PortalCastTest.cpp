// Screens that a person shows by the portal, which is played: its contract, and what comes of a question.
#include "adapters/portal/PortalCast.h"

#include "adapters/cast/CastStreamLoop.h"
#include "contracts/ScreenStreamContract.h"
#include "support/CastNode.h"
#include "support/Eventually.h"
#include "support/PrivatePipeWire.h"
#include "support/ScreenCastPortal.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace tavrine::test {
namespace {

using namespace std::chrono_literals;

constexpr QSize points(640, 400);
constexpr quint32 onlyDisplay = 7;

/// Streams of one screen that the played portal shows.
class PortalStreams final : public QObject, public ScreenStreams {
public:
    [[nodiscard]] bool tellsWindows() const override { return false; }
    void getShareableContent(ContentAnswer answer) override {
        QMetaObject::invokeMethod(
            this, [answer] { answer(ShareableContent{.displays = {{onlyDisplay}}, .windows = {}}); },
            Qt::QueuedConnection);
    }
    [[nodiscard]] std::unique_ptr<ScreenStream> makeStream(const ScreenContentFilter &filter,
                                                           const ScreenStreamConfiguration &configuration,
                                                           Handlers handlers) override {
        std::optional<StreamPlan> plan;
        if (filter.displayID == onlyDisplay)
            plan = StreamPlan{.area = QRect(0, 0, configuration.width, configuration.height),
                              .keptOut = {},
                              .showsPointer = configuration.showsCursor,
                              .interval = configuration.minimumFrameInterval,
                              .queueDepth = configuration.queueDepth};
        return std::make_unique<ThreadedScreenStream>(
            plan,
            [configuration, screen = screen, path = tokens(),
             patience = patience](const StreamPlan &each, ThreadedScreenStream::Session &session) {
                return std::make_unique<CastStreamLoop>(
                    std::make_unique<PortalCast>(screen, CastTokens(path), patience), each, configuration, session);
            },
            std::move(handlers));
    }
    [[nodiscard]] QString tokens() const { return m_folder.filePath(QStringLiteral("own/tokens.json")); }

    PortalScreen screen{.name = QStringLiteral("played"), .place = QRect({100, 0}, points), .isOnly = false};
    PortalCast::Patience patience;

private:
    QTemporaryDir m_folder;
};

struct PortalDesk {
    PortalDesk() { portal.call("Show", {node.number(), 100, 0}); }
    ScreenStreams &streams() { return portalStreams; }
    [[nodiscard]] static quint32 display() { return onlyDisplay; }
    void paint(const QRect &area, quint32 colour) { node.paint(area, colour); }
    static WindowNumber addWindow() { return 1; } // which no stream can tell
    void removeWindow(WindowNumber /*window*/) {}
    template <class Condition>
    bool eventually(Condition condition) {
        return tavrine::testing::waitUntil(condition);
    }
    bool passTime(std::chrono::milliseconds length) {
        letPass(length);
        return true;
    }
    void settle() { letPass(120ms); }

    PrivatePipeWire pipeWire;
    CastNode node{{.size = points, .repeatsFirst = true}};
    ScreenCastPortal portal;
    PortalStreams portalStreams;
};

INSTANTIATE_TYPED_TEST_SUITE_P(Portal, ScreenStreamContract, PortalDesk);

class PortalCasting : public ::testing::Test {
protected:
    /// What the start answers: empty for success.
    [[nodiscard]] QString start() {
        ScreenStreamConfiguration configuration;
        configuration.sourceRect = QRectF(10, 20, 100, 50);
        configuration.width = 100;
        configuration.height = 50;
        std::optional<QString> answer;
        stream = desk.streams().makeStream(
            {onlyDisplay, {}}, configuration,
            {[this](const ScreenSample &sample) { log.take(sample); }, [this](const QString &why) { end = why; }});
        stream->startCapture([&](std::optional<QString> error) { answer = error.value_or(QString()); });
        return desk.eventually([&] { return answer.has_value(); }) ? *answer : QStringLiteral("no answer");
    }
    [[nodiscard]] QString startAgain() {
        stream.reset();
        EXPECT_TRUE(desk.eventually([this] { return desk.portal.state().open == 0; }));
        return start();
    }

    PortalDesk desk;
    SampleLog log;
    QString end;
    std::unique_ptr<ScreenStream> stream;
};

TEST_F(PortalCasting, thePersonIsAskedOnceAndEachTokenIsGoodForOneTime) {
    ASSERT_EQ(start(), QString());
    EXPECT_EQ(desk.portal.state().questions, 1U);
    EXPECT_EQ(desk.portal.state().token, QString());
    ASSERT_EQ(startAgain(), QString());
    EXPECT_EQ(desk.portal.state().token, QStringLiteral("token-1"));
    ASSERT_EQ(startAgain(), QString());
    EXPECT_EQ(desk.portal.state().token, QStringLiteral("token-2"));
    EXPECT_EQ(desk.portal.state().questions, 1U);
    const auto kept = QFile::permissions(desk.portalStreams.tokens());
    EXPECT_FALSE(kept & (QFile::ReadGroup | QFile::ReadOther));
}

TEST_F(PortalCasting, aTokenThatIsRefusedLeadsToOneQuestion) {
    ASSERT_EQ(start(), QString());
    desk.portal.call("RefuseTokens", {true});
    ASSERT_EQ(startAgain(), QString());
    EXPECT_EQ(desk.portal.state().questions, 2U);
    EXPECT_EQ(desk.portal.state().sessions, 3U);
}

TEST_F(PortalCasting, aFileOfTokensThatIsNoneLeadsToAQuestion) {
    QDir().mkpath(QFileInfo(desk.portalStreams.tokens()).path());
    QFile file(desk.portalStreams.tokens());
    ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write("{\"played\": [1, 2") > 0);
    file.close();
    ASSERT_EQ(start(), QString());
    EXPECT_EQ(desk.portal.state().token, QString());
    ASSERT_EQ(startAgain(), QString());
    EXPECT_EQ(desk.portal.state().token, QStringLiteral("token-1"));
}

TEST_F(PortalCasting, aPersonWhoSaysNoIsNotAskedOnceMore) {
    desk.portal.call("Answer", {QStringLiteral("no")});
    EXPECT_EQ(start(), QStringLiteral("The person does not show the screen."));
    EXPECT_EQ(desk.portal.state().questions, 1U);
    EXPECT_EQ(desk.portal.state().sessions, 1U);
}

TEST_F(PortalCasting, aPortalThatFailsGivesNoStream) {
    desk.portal.call("Answer", {QStringLiteral("fail")});
    EXPECT_NE(start(), QString());
    EXPECT_EQ(desk.portal.state().questions, 1U);
}

TEST_F(PortalCasting, anotherScreenThanTheOneWithTheAreaIsNotTaken) {
    desk.portal.call("Show", {desk.node.number(), 0, 0});
    EXPECT_EQ(start(), QStringLiteral("The desktop does not show this screen."));
    EXPECT_EQ(log.count(), 0U);
    desk.portalStreams.screen.isOnly = true; // then there is no other, wherever it says that it lies
    EXPECT_EQ(startAgain(), QString());
}

TEST_F(PortalCasting, theTokenOfAScreenOfAnotherShapeIsForgotten) {
    const QRect place = desk.portalStreams.screen.place;
    desk.portalStreams.screen.place.setHeight(3 * place.height());
    EXPECT_NE(start(), QString());
    desk.portalStreams.screen.place = place;
    EXPECT_EQ(startAgain(), QString());
    EXPECT_EQ(desk.portal.state().token, QString());
    EXPECT_EQ(desk.portal.state().questions, 2U);
}

TEST_F(PortalCasting, aPortalThatNeverAnswersIsGivenUp) {
    desk.portal.call("Answer", {QStringLiteral("never")});
    desk.portalStreams.patience.choice = 100ms;
    EXPECT_NE(start(), QString());
    EXPECT_TRUE(desk.eventually([this] { return desk.portal.state().closed == 1; })); // its dialog goes
    stream.reset();
    EXPECT_TRUE(desk.eventually([this] { return desk.portal.state().open == 0; }));
}

TEST_F(PortalCasting, aQuestionThatNobodyAnswersIsNotAskedAgainWithoutItsToken) {
    ASSERT_EQ(start(), QString());
    EXPECT_EQ(desk.portal.state().closed, 0U);
    desk.portal.call("Answer", {QStringLiteral("never")});
    desk.portalStreams.patience.choice = 100ms;
    EXPECT_NE(startAgain(), QString());
    EXPECT_EQ(desk.portal.state().sessions, 2U);
    EXPECT_EQ(desk.portal.state().token, QStringLiteral("token-1"));
}

TEST_F(PortalCasting, aStopIsHeardWhileThePersonIsAsked) {
    desk.portal.call("Answer", {QStringLiteral("never")});
    ScreenStreamConfiguration configuration;
    configuration.width = configuration.height = 10;
    stream = desk.streams().makeStream({onlyDisplay, {}}, configuration, {});
    stream->startCapture([](const auto &) {});
    ASSERT_TRUE(desk.eventually([this] { return desk.portal.state().questions == 1; }));
    stream.reset();
    EXPECT_TRUE(desk.eventually([this] { return desk.portal.state().open == 0; }));
    EXPECT_EQ(desk.portal.state().closed, 1U);
}

TEST_F(PortalCasting, aSessionThatTheDesktopClosesEndsTheStreamAndWhatItHasGivenStays) {
    log.setKeeps(true);
    ASSERT_EQ(start(), QString());
    ASSERT_TRUE(desk.eventually([this] { return log.count() >= 1; }));
    desk.portal.call("CloseSession");
    EXPECT_TRUE(desk.eventually([this] { return !end.isEmpty(); }));
    EXPECT_EQ(pictureOf(*log.takeKept().front()).size(), QSize(100, 50));
}

} // namespace
} // namespace tavrine::test
