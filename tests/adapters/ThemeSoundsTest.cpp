#include "adapters/linux/ThemeSounds.h"

#include "support/Eventually.h"
#include "support/SoundRecording.h"
#include "support/Text.h"

#include <QCoreApplication>
#include <QElapsedTimer>

#include <gtest/gtest.h>

namespace tavrine::test {
namespace {

using namespace std::chrono_literals;

const QString pop = QStringLiteral("Pop");

/// Counts what begins to play on the sound server.
class Beginnings {
public:
    Beginnings() {
        m_program.start(QStringLiteral("pactl"), {QStringLiteral("subscribe")});
        m_program.waitForStarted();
        // It tells of others who come once it listens.
        m_isListening = eventually([this] {
            static_cast<void>(PrivateSound::streams());
            return read().contains("client");
        });
    }
    ~Beginnings() {
        m_program.kill();
        m_program.waitForFinished();
    }
    [[nodiscard]] bool isListening() const { return m_isListening; }
    [[nodiscard]] qsizetype count() { return read().count("Event 'new' on sink-input"); }

private:
    const QByteArray &read() {
        m_said += m_program.readAllStandardOutput();
        return m_said;
    }

    QProcess m_program;
    QByteArray m_said;
    bool m_isListening = false;
};

class ThemeSoundsTest : public testing::Test {
protected:
    /// Milliseconds that the calls took.
    qint64 play(int times) {
        QElapsedTimer timer;
        timer.start();
        for (int i = 0; i < times; ++i)
            sounds.play(pop);
        return timer.elapsed();
    }

    DesktopThemes themes;
    ThemeSounds sounds{QCoreApplication::applicationDirPath(), [this] { return themes; }};
};

TEST_F(ThemeSoundsTest, eachCallIsHeard) {
    PrivateSound server(SoundServerKind::pulseAudio);
    SoundRecording recording(text("one"));
    Beginnings beginnings;
    ASSERT_TRUE(beginnings.isListening());
    ASSERT_TRUE(eventually([&] { return recording.samples() > 0; })); // a sound is shorter than a recorder's start
    const qsizetype before = beginnings.count();                      // the recording of the test may count as one
    EXPECT_LT(play(3), 1000);
    EXPECT_TRUE(eventually([&] { return beginnings.count() == before + 3; })) << beginnings.count();
    EXPECT_TRUE(eventually([&] { return recording.loudSamples() > 0; }));
}

TEST_F(ThemeSoundsTest, ofManyCallsAtOnceAFewAreHeard) {
    PrivateSound server(SoundServerKind::pulseAudio);
    Beginnings beginnings;
    ASSERT_TRUE(beginnings.isListening());
    play(1000);
    EXPECT_TRUE(eventually([&] { return beginnings.count() >= 20; })) << beginnings.count();
    letPass(500ms);
    EXPECT_LE(beginnings.count(), 60);
}

TEST_F(ThemeSoundsTest, aServerThatHangsKeepsNobodyWaitingAndIsHeardWhenItGoesOn) {
    PrivateSound server(SoundServerKind::pulseAudio);
    Beginnings beginnings;
    ASSERT_TRUE(beginnings.isListening());
    server.hang();
    EXPECT_LT(play(2), 1000);
    letPass(300ms);
    EXPECT_EQ(beginnings.count(), 0);
    server.goOn();
    EXPECT_TRUE(eventually([&] { return beginnings.count() == 2; })) << beginnings.count();
}

TEST_F(ThemeSoundsTest, theProgramEndsWhenNothingWasPlayedForAWhileEvenOnAServerThatHangs) {
    PrivateSound server(SoundServerKind::pulseAudio);
    server.hang();
    ThemeSounds brief(
        QCoreApplication::applicationDirPath(), [] { return DesktopThemes(); }, 200ms);
    EXPECT_EQ(brief.processIdentifier(), 0); // nothing runs before the first sound
    brief.play(pop);
    const qint64 program = brief.processIdentifier();
    EXPECT_GT(program, 0);
    EXPECT_TRUE(eventually([&] { return brief.processIdentifier() == 0; }));
    EXPECT_TRUE(eventually([&] { return ::kill(static_cast<pid_t>(program), 0) != 0; }));
    server.goOn();
}

TEST_F(ThemeSoundsTest, whereTheDesktopHasItsSoundsOffNothingIsStarted) {
    themes.hasEventSounds = false;
    play(1);
    EXPECT_EQ(sounds.processIdentifier(), 0);
    themes.hasEventSounds = true;
    letPass(10ms); // another turn
    play(1);
    EXPECT_GT(sounds.processIdentifier(), 0);
}

TEST_F(ThemeSoundsTest, theDesktopIsAskedOnceATurn) {
    int questions = 0;
    ThemeSounds many(QCoreApplication::applicationDirPath(), [&] {
        ++questions;
        return DesktopThemes{.icons = {}, .sounds = {}, .hasEventSounds = false};
    });
    for (int i = 0; i < 10'000; ++i)
        many.play(pop);
    EXPECT_EQ(questions, 1);
}

TEST_F(ThemeSoundsTest, aNameThatNobodyKnowsIsSilent) {
    sounds.play(text("Basso\ndialog-error"));
    EXPECT_EQ(sounds.processIdentifier(), 0);
}

TEST_F(ThemeSoundsTest, aThemeThatIsNotThereFallsBackOnTheCommonOne) {
    PrivateSound server(SoundServerKind::pulseAudio);
    Beginnings beginnings;
    ASSERT_TRUE(beginnings.isListening());
    themes.sounds = text("no theme of this name");
    play(1);
    EXPECT_TRUE(eventually([&] { return beginnings.count() == 1; }));
}

TEST_F(ThemeSoundsTest, aProgramThatWasKilledIsStartedAnew) {
    PrivateSound server(SoundServerKind::pulseAudio);
    Beginnings beginnings;
    ASSERT_TRUE(beginnings.isListening());
    play(1);
    const qint64 first = sounds.processIdentifier();
    ::kill(static_cast<pid_t>(first), SIGKILL);
    ASSERT_TRUE(eventually([&] { return sounds.processIdentifier() == 0; }));
    const qsizetype before = beginnings.count();
    play(1);
    EXPECT_TRUE(eventually([&] { return beginnings.count() == before + 1; }));
}

TEST_F(ThemeSoundsTest, withoutASoundServerNothingHappens) {
    PrivateSound server(SoundServerKind::pulseAudio);
    server.end();
    EXPECT_LT(play(3), 1000);
    letPass(200ms);
}

TEST(ThemeSoundsWithoutProgram, areSilent) {
    ThemeSounds sounds(QStringLiteral("/nowhere"), [] { return DesktopThemes(); });
    sounds.play(pop);
    EXPECT_TRUE(eventually([&] { return sounds.processIdentifier() == 0; }));
}

} // namespace
} // namespace tavrine::test
