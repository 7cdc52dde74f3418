// Copies that the desktop tells of: recorded as soon as they have settled.
#include "ManagerTest.h"

namespace tavrine {
namespace {

class ToldCopy : public ManagerTest {
protected:
    void SetUp() override {
        ManagerTest::SetUp();
        start();
        pasteboard.setTellsChanges(true);
    }
    void settle() { time.advance(ClipboardManager::settlingTime); }
};

TEST_F(ToldCopy, isRecordedOnceItHasSettledAndNotWithTheNextTick) {
    pasteboard.copyFromOutside(str("hello"));
    time.advance(29ms);
    EXPECT_TRUE(manager->history().empty());
    time.advance(1ms);
    EXPECT_EQ(historyContents(), QStringList{str("hello")});
    const std::vector<ClipboardItem> recorded = rows();
    time.advance(5s);
    EXPECT_EQ(rows(), recorded) << "no tick records it again";
}

TEST_F(ToldCopy, isLeftToTheTicksWhileTheDesktopDoesNotTellWhoIsInFront) {
    workspace.setAnswers(false);
    pasteboard.copyFromOutside(str("secret"));
    settle();
    EXPECT_TRUE(rows().empty());
    workspace.setFrontmost(str("org.keepassxc.keepassxc"));
    workspace.setAnswers(true);
    time.advance(5s);
    EXPECT_TRUE(rows().empty());
}

TEST_F(ToldCopy, isRecordedBesideAnotherOfTheSameHalfSecond) {
    pasteboard.copyFromOutside(str("one"));
    settle();
    pasteboard.copyFromOutside(str("two"));
    settle();
    EXPECT_EQ(historyContents(), (QStringList{str("two"), str("one")}));
}

TEST_F(ToldCopy, inTwoStepsIsOneCopy) {
    pasteboard.copyFromOutside(picture(3, 3));
    time.advance(29ms);
    pasteboard.copyFromOutside(picture(3, 3));
    time.advance(29ms);
    EXPECT_TRUE(rows().empty());
    time.advance(1ms);
    EXPECT_EQ(rows().size(), 1U);
    time.advance(5s);
    EXPECT_EQ(rows().size(), 1U);
}

TEST_F(ToldCopy, withoutEndIsLeftToTheTicks) {
    for (int i = 0; i < 200; ++i) { // of which each takes 10 ms
        pasteboard.copyFromOutside(QString::number(i));
        time.advance(10ms);
    }
    EXPECT_EQ(rows().size(), 4U) << "two seconds";
}

TEST_F(ToldCopy, fourTimesBetweenTwoTicksIsHeededAndWhatFollowsIsLeftToTheNext) {
    time.advance(500ms);           // a tick
    for (int i = 0; i < 10; ++i) { // 40 ms each
        pasteboard.copyFromOutside(QString::number(i));
        time.advance(40ms);
    }
    EXPECT_EQ(rows().size(), 4U);
    time.advance(100ms);
    EXPECT_EQ(rows().size(), 5U) << "the last one, by the tick";
    pasteboard.copyFromOutside(str("after it"));
    time.advance(40ms);
    EXPECT_EQ(rows().size(), 6U);
}

TEST_F(ToldCopy, ofAnExcludedApplicationThatLeavesRightAfterItIsDropped) {
    manager->addExcludedApp({QUuid::createUuid(), str("com.example.vault"), str("An application")});
    workspace.setFrontmost(str("com.example.vault"));
    pasteboard.copyFromOutside(str("secret"));
    workspace.setFrontmost(std::nullopt);
    time.advance(5s);
    EXPECT_TRUE(rows().empty());
}

TEST_F(ToldCopy, isDroppedWhereAnExcludedApplicationIsFoundInFrontALittleLater) {
    pasteboard.copyFromOutside(str("secret"));
    workspace.setFrontmost(str("org.keepassxc.keepassxc"));
    settle();
    workspace.setFrontmost(std::nullopt);
    time.advance(5s);
    EXPECT_TRUE(rows().empty());
}

TEST_F(ToldCopy, thatIsConcealedIsNotRecorded) {
    pasteboard.setContentsFromOutside(plainTypes + QStringList{QLatin1String(pasteboardType::concealed)},
                                      str("secret"));
    time.advance(5s);
    EXPECT_TRUE(rows().empty());
}

TEST_F(ToldCopy, isNotRecordedWhileMonitoringIsOff) {
    manager->pauseMonitoring();
    pasteboard.copyFromOutside(str("while off"));
    time.advance(5s);
    EXPECT_TRUE(rows().empty());
}

TEST_F(ToldCopy, isNotRecordedByAPauseThatBeganBeforeItSettled) {
    pasteboard.copyFromOutside(str("just before"));
    manager->pauseMonitoring();
    time.advance(1s);
    EXPECT_TRUE(rows().empty());
}

TEST_F(ToldCopy, ofOursWaitsForTheTick) {
    pasteboard.clearContents();
    pasteboard.setString(str("mine"));
    time.advance(499ms);
    EXPECT_TRUE(rows().empty());
    time.advance(1ms);
    EXPECT_EQ(rows().size(), 1U);
}

TEST_F(ToldCopy, isToldToNobodyAfterTheManagersEnd) {
    quit();
    pasteboard.copyFromOutside(str("late"));
    time.advance(1s);
    EXPECT_TRUE(rows().empty());
}

} // namespace
} // namespace tavrine
