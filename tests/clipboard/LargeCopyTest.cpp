// Large copies, which are prepared on another thread.
#include "ManagerTest.h"

#include <QElapsedTimer>

#include <future>

namespace tavrine {
namespace {

class LargeCopy : public ManagerTest {
protected:
    void SetUp() override {
        ManagerTest::SetUp();
        start();
    }
    /// One more pixel than a person's key can wait for.
    static QImage large() { return picture(500, 501); }
    /// Encoding waits from here on until `m_gate` is opened, and then gives so many bytes.
    void holdEncoding(std::optional<qsizetype> bytes = 1000) {
        coder.setSize([opened = m_gate.get_future().share(), bytes](double) {
            opened.wait();
            return bytes;
        });
    }
    std::promise<void> m_gate;
    /// The tick alone, without what it hands to the other thread.
    void pollOnce() { time.advance(ClipboardManager::pollInterval); }
};

TEST_F(LargeCopy, isRecordedWhenItIsReadyWithoutAFurtherTick) {
    const int timers = time.timerCount();
    pasteboard.copyFromOutside(large());
    pollOnce();
    EXPECT_TRUE(rows().empty()) << "the main thread went on";
    QElapsedTimer clock;
    clock.start();
    while (rows().empty() && clock.elapsed() < 5000)
        time.advance(0s);
    EXPECT_EQ(historyContents(), QStringList{str("Copied Image")});
    EXPECT_TRUE(manager->thumbnailCache().object(manager->history().front().imageFileName.value()));
    EXPECT_EQ(time.timerCount(), timers);
}

TEST_F(LargeCopy, ofAsManyPixelsAsAKeyCanWaitForIsRecordedAtOnce) {
    pasteboard.copyFromOutside(picture(500, 500));
    pollOnce();
    EXPECT_EQ(rows().size(), 1U);
}

TEST_F(LargeCopy, ofTextIsPreparedElsewhereToo) {
    pasteboard.copyFromOutside(QString(1'000'000, u'x'));
    pollOnce();
    EXPECT_EQ(rows().size(), 1U);
    pasteboard.copyFromOutside(QString(1'000'001, u'y'));
    pollOnce();
    EXPECT_EQ(manager->history().size(), 1U);
    manager->finishRecording();
    EXPECT_EQ(manager->history().size(), 2U);
}

TEST_F(LargeCopy, isRecordedBeforeACopyThatFollowsIt) {
    holdEncoding();
    pasteboard.copyFromOutside(large());
    pollOnce();
    pasteboard.copyFromOutside(str("the next"));
    time.advance(5s);
    EXPECT_TRUE(rows().empty()) << "no copy is recorded before the one before it";
    m_gate.set_value();
    manager->finishRecording();
    tick();
    EXPECT_EQ(historyContents(), (QStringList{str("the next"), str("Copied Image")}));
}

TEST_F(LargeCopy, ofATextThatIsThereBringsItsRowToTheTop) {
    const QString large(1'000'001, u'x');
    copy(large);
    const QUuid id = rows().front().id;
    copy(str("between"));
    copy(large);
    ASSERT_EQ(contents(rows()), (QStringList{large, str("between")}));
    EXPECT_NE(rows().front().id, id);
}

TEST_F(LargeCopy, ofAProtectedTextAddsNothing) {
    const QString large(1'000'001, u'x');
    const ClipboardItem pinned = savePinned(large, 5s);
    copy(large);
    EXPECT_EQ(rows(), std::vector{pinned});
}

TEST_F(LargeCopy, whatIsCopiedMeanwhileIsRecordedBehindItInItsOrder) {
    holdEncoding();
    pasteboard.copyFromOutside(large());
    pollOnce();
    for (const char *each : {"one", "two", "three"}) {
        pasteboard.copyFromOutside(str(each));
        pollOnce();
    }
    m_gate.set_value();
    manager->finishRecording();
    EXPECT_EQ(historyContents(), (QStringList{str("three"), str("two"), str("one"), str("Copied Image")}));
}

TEST_F(LargeCopy, theLineBehindItIsBounded) {
    holdEncoding();
    pasteboard.copyFromOutside(large());
    pollOnce();
    for (int i = 0; i < 3; ++i) {
        pasteboard.copyFromOutside(QString(2'000'000, QChar(u'a' + i)));
        pollOnce();
    }
    for (int i = 0; i < 40; ++i) {
        pasteboard.copyFromOutside(QString::number(i));
        pollOnce();
    }
    m_gate.set_value();
    manager->finishRecording();
    ASSERT_EQ(rows().size(), 33U);
    EXPECT_EQ(rows().front().content, str("39")) << "the newest always has its place";
    EXPECT_EQ(rows()[30].content.front(), QChar(u'c'));
    EXPECT_EQ(rows()[31].content.front(), QChar(u'a')) << "of large ones two stand in line";
}

TEST_F(LargeCopy, inLineTakesNoPlaceOfASmallOneAndTwoStandThereAtMost) {
    holdEncoding();
    pasteboard.copyFromOutside(large());
    pollOnce();
    for (int i = 0; i < 4; ++i) {
        pasteboard.copyFromOutside(QString(2'000'000, QChar(u'a' + i)));
        pollOnce();
        pasteboard.copyFromOutside(QString::number(i));
        pollOnce();
    }
    m_gate.set_value();
    manager->finishRecording();
    QStringList beginnings;
    for (const ClipboardItem &item : rows())
        beginnings.append(item.content.left(1));
    EXPECT_EQ(beginnings.join(QString()), str("3d210aC"));
}

TEST_F(LargeCopy, isReadAsItStoodWhenItWasSeen) {
    pasteboard.copyFromOutside(large());
    pollOnce();
    pasteboard.clearFromOutside();
    tick();
    EXPECT_EQ(historyContents(), QStringList{str("Copied Image")});
}

TEST_F(LargeCopy, thatIsUnderWayGoesWithTheHistoryThatIsCleared) {
    pasteboard.copyFromOutside(large());
    pollOnce();
    manager->clearHistory();
    tick();
    EXPECT_TRUE(rows().empty());
    EXPECT_TRUE(storedImages().empty());
}

TEST_F(LargeCopy, thatIsUnderWayIsRecordedThoughMonitoringPauses) {
    pasteboard.copyFromOutside(large());
    pollOnce();
    manager->pauseMonitoring();
    manager->finishRecording();
    ASSERT_EQ(contents(rows()), QStringList{str("Copied Image")});
    EXPECT_TRUE(manager->history().empty());
    EXPECT_FALSE(manager->thumbnailCache().object(rows().front().imageFileName.value()));
}

TEST_F(LargeCopy, thatIsUnderWayAtTheEndLeavesNoFile) {
    pasteboard.copyFromOutside(large());
    pollOnce();
    quit();
    EXPECT_TRUE(storedImages().empty());
    time.advance(1s); // nobody is there to be told
}

TEST_F(LargeCopy, ofRichTextIsNotStrippedWhereATickHasSeenAnotherCopyAlready) {
    manager->setStripRichText(true);
    holdEncoding(std::nullopt);
    const QStringList types = plainTypes + QStringList{str("public.html"), str("public.png")};
    pasteboard.setContentsFromOutside(types, str("older"), large());
    pollOnce();
    pasteboard.setContentsFromOutside(plainTypes + QStringList{str("public.html")}, str("newer"));
    pollOnce();
    m_gate.set_value();
    manager->finishRecording();
    EXPECT_EQ(pasteboard.string(), str("newer"));
    EXPECT_EQ(pasteboard.clearCount(), 1) << "it is stripped itself";
    EXPECT_EQ(historyContents(), (QStringList{str("newer"), str("older")}));
}

TEST_F(LargeCopy, ofRichTextIsNotStrippedWhereAnotherCopyHasFollowed) {
    manager->setStripRichText(true);
    const QStringList types = plainTypes + QStringList{str("public.html")};
    pasteboard.setContentsFromOutside(types, QString(2'000'000, u'x'));
    pollOnce();
    pasteboard.setContentsFromOutside(types, str("newer"));
    manager->finishRecording();
    EXPECT_EQ(pasteboard.string(), str("newer"));
    EXPECT_EQ(pasteboard.clearCount(), 0);
    tick();
    EXPECT_EQ(pasteboard.types(), plainTypes);
}

} // namespace
} // namespace tavrine
