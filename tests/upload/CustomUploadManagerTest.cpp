#include "upload/UploadFixture.h"

#include <QElapsedTimer>
#include <QSignalSpy>

#include <array>
#include <cstddef>
#include <new>

namespace tavrine::test {
namespace {

using CustomUpload = UploadFixture;

const QString enabledKey = QStringLiteral("cloudUploadEnabled");
const QString script = QStringLiteral("function uploadImage() {}");

TEST_F(CustomUpload, isOffUntilThePersonTurnsItOn) {
    EXPECT_FALSE(makeManager().isEnabled());
    manager->setEnabled(true);
    EXPECT_TRUE(manager->isEnabled());
    EXPECT_EQ(defaults.get<bool>(enabledKey), true);
    EXPECT_TRUE(makeManager().isEnabled());
    manager->setEnabled(false);
    EXPECT_EQ(defaults.get<bool>(enabledKey), false);
}

TEST_F(CustomUpload, aPreferenceThatIsNoBoolCountsAsOff) {
    defaults.set(enabledKey, 1);
    EXPECT_FALSE(makeManager().isEnabled());
    defaults.set(enabledKey, QStringLiteral("true"));
    EXPECT_FALSE(makeManager().isEnabled());
}

TEST_F(CustomUpload, theScriptIsEmptyUntilTheKeyRingAnswers) {
    keychain.store(item, script.toUtf8());
    keychain.hold();
    EXPECT_EQ(makeManager().savedScript(), QString());
    EXPECT_TRUE(happens([&] { return keychain.calls().size() == 1; }));
    EXPECT_EQ(manager->savedScript(), QString());
    keychain.release();
    EXPECT_TRUE(happens([&] { return manager->savedScript() == script; }));
}

TEST_F(CustomUpload, whatWasReadIsNotWrittenBack) {
    makeManagerWith(script);
    manager.reset(); // its queue has ended
    EXPECT_EQ(keychain.calls(), QStringList{QStringLiteral("read")});
    EXPECT_EQ(keychain.stored(item), script.toUtf8());
}

TEST_F(CustomUpload, bytesThatAreNoTextAreNoScriptAndStayAsTheyAre) {
    keychain.store(item, "function \xff");
    makeManager();
    QSignalSpy changed(manager.get(), &CustomUploadManager::changed);
    EXPECT_TRUE(happens([&] { return changed.count() == 1; }));
    EXPECT_EQ(manager->savedScript(), QString());
    manager.reset();
    EXPECT_EQ(keychain.stored(item), "function \xff");
}

TEST_F(CustomUpload, aScriptComesBackLetterForLetter) {
    makeManagerWith(QStringLiteral("\ufeff// häßlich 🙂\r\n\tlet a;\n\n"));
}

TEST_F(CustomUpload, savingMakesTheItemAndSavingAgainUpdatesIt) {
    makeManager().setScript(QStringLiteral("first"));
    EXPECT_EQ(manager->savedScript(), QStringLiteral("first"));
    EXPECT_TRUE(happens([&] { return keychain.stored(item) == "first"; }));
    manager->setScript(QStringLiteral("second"));
    EXPECT_TRUE(happens([&] { return keychain.stored(item) == "second"; }));
    EXPECT_EQ(keychain.calls(), QStringList({QStringLiteral("read"), QStringLiteral("update"), QStringLiteral("add"),
                                             QStringLiteral("update")}));
}

TEST_F(CustomUpload, anEmptyScriptRemovesTheItem) {
    makeManagerWith(script).setScript(QString());
    EXPECT_TRUE(happens([&] { return keychain.stored(item).isEmpty(); }));
    EXPECT_EQ(keychain.calls().last(), QStringLiteral("remove"));
}

TEST_F(CustomUpload, aFailedWriteLeavesTheOldScript) {
    makeManagerWith(script);
    keychain.failNext();
    manager->setScript(QStringLiteral("next"));
    EXPECT_EQ(manager->savedScript(), QStringLiteral("next"));
    EXPECT_TRUE(happens([&] { return keychain.calls().size() == 2; }));
    manager.reset();
    EXPECT_EQ(keychain.calls().last(), QStringLiteral("update")); // a failure is no absent item: nothing is added
    EXPECT_EQ(keychain.stored(item), script.toUtf8());
}

TEST_F(CustomUpload, anAbsentServiceIsAnEmptyScriptAndErasesNothing) {
    keychain.store(item, script.toUtf8());
    keychain.setRunning(false);
    makeManager();
    QSignalSpy changed(manager.get(), &CustomUploadManager::changed);
    EXPECT_TRUE(happens([&] { return changed.count() == 1; }));
    EXPECT_EQ(manager->savedScript(), QString());
    manager.reset();
    EXPECT_EQ(keychain.calls(), QStringList{QStringLiteral("read")});
    EXPECT_EQ(keychain.stored(item), script.toUtf8());
}

TEST_F(CustomUpload, aFailedReadCanBeTriedAgain) {
    keychain.store(item, script.toUtf8());
    keychain.failNext();
    makeManager();
    QSignalSpy changed(manager.get(), &CustomUploadManager::changed);
    ASSERT_TRUE(happens([&] { return changed.count() == 1; }));
    manager->loadAgainIfFailed();
    EXPECT_TRUE(happens([&] { return manager->savedScript() == script; }));
}

TEST_F(CustomUpload, aReadThatWasAnsweredIsNotTriedAgain) {
    makeManager();
    QSignalSpy changed(manager.get(), &CustomUploadManager::changed);
    manager->loadAgainIfFailed(); // while it is under way
    ASSERT_TRUE(happens([&] { return changed.count() == 1; }));
    manager->loadAgainIfFailed(); // there is no item, and that is an answer
    manager.reset();
    EXPECT_EQ(keychain.calls(), QStringList{QStringLiteral("read")});
}

TEST_F(CustomUpload, whatThePersonSavedStandsWhenTheKeyRingAnswersLate) {
    keychain.store(item, "the old one");
    keychain.hold();
    makeManager();
    ASSERT_TRUE(happens([&] { return keychain.calls().size() == 1; }));
    manager->setScript(script);
    keychain.release();
    EXPECT_TRUE(happens([&] { return keychain.stored(item) == script.toUtf8(); }));
    manager->setEnabled(true);
    time.runPending();
    EXPECT_EQ(manager->savedScript(), script);
}

TEST_F(CustomUpload, whatIsSavedBecauseAScriptArrivedIsWritten) {
    keychain.store(item, "old");
    makeManager();
    bool isFirst = true;
    QObject::connect(manager.get(), &CustomUploadManager::changed, manager.get(), [&] {
        if (std::exchange(isFirst, false))
            manager->setScript(script);
    });
    EXPECT_TRUE(happens([&] { return keychain.stored(item) == script.toUtf8(); }));
}

TEST_F(CustomUpload, aScriptOfSpacesOnlyIsNotConfigured) {
    makeManager().setEnabled(true);
    for (const QString &blank : {QString(), QStringLiteral(" "), QStringLiteral(" \t\r\n ")}) {
        manager->setScript(blank);
        EXPECT_FALSE(manager->isConfigured());
    }
    manager->setScript(QStringLiteral(" x "));
    EXPECT_TRUE(manager->isConfigured());
}

TEST_F(CustomUpload, switchingOffHidesTheButtonAtOnceAndKeepsTheScript) {
    makeManagerWith(script);
    EXPECT_TRUE(manager->isConfigured());
    QSignalSpy changed(manager.get(), &CustomUploadManager::changed);
    manager->setEnabled(false);
    EXPECT_FALSE(manager->isConfigured());
    EXPECT_EQ(changed.count(), 1);
    EXPECT_EQ(manager->savedScript(), script);
    EXPECT_EQ(keychain.stored(item), script.toUtf8());
    manager->setEnabled(true);
    EXPECT_TRUE(manager->isConfigured());
}

TEST_F(CustomUpload, aKeyRingThatHangsHoldsNeitherTheMainThreadNorTheEnd) {
    keychain.hold();
    QElapsedTimer timer;
    timer.start();
    makeManager().setEnabled(true);
    ASSERT_TRUE(happens([&] { return keychain.calls().size() == 1; }));
    manager.reset();
    EXPECT_LT(timer.elapsed(), 400); // less than the goodbye of a save
}

TEST_F(CustomUpload, aSaveUnderWayIsFinishedBeforeTheEnd) {
    makeManager().setScript(script);
    manager.reset();
    EXPECT_EQ(keychain.stored(item), script.toUtf8());
}

TEST_F(CustomUpload, aSaveThatHangsDelaysTheEndByItsGoodbyeOnly) {
    makeManagerWith(QStringLiteral("old"));
    keychain.hold();
    manager->setScript(script);
    QElapsedTimer timer;
    timer.start();
    manager.reset();
    EXPECT_GE(timer.elapsed(), CustomUploadManager::longestGoodbye.count());
    EXPECT_LT(timer.elapsed(), CustomUploadManager::longestGoodbye.count() + 1000);
    EXPECT_EQ(keychain.stored(item), "old");
}

TEST_F(CustomUpload, anAnswerAfterTheEndIsDropped) {
    keychain.store(item, script.toUtf8());
    // In a place of its own, which shows whether anybody still writes there.
    using Place = std::array<std::byte, sizeof(CustomUploadManager)>;
    alignas(CustomUploadManager) Place place{};
    auto *const ended =
        new (place.data()) CustomUploadManager({.defaults = defaults, .keychain = keychain, .time = time});
    ended->~CustomUploadManager();
    ASSERT_EQ(keychain.calls(), QStringList{QStringLiteral("read")}); // its answer waits in the main queue
    const Place left = place;
    time.runPending();
    EXPECT_EQ(place, left);
}

} // namespace
} // namespace tavrine::test
