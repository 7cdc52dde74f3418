// Players of sound, under one contract over the fake and over the real ones, which play on a sound server that nobody
// hears.
#include "adapters/fake/FakeAudioPlayers.h"
#include "adapters/fake/VirtualTime.h"
#include "adapters/linux/PlayerProcess.h"
#include "support/Eventually.h"
#include "support/SoundRecording.h"

#include <QCoreApplication>

#include <utility>

#include <gmock/gmock.h>

namespace tavrine::test {
namespace {

using namespace std::chrono_literals;
using Cause = AudioPlayers::Failure::Cause;

QString text(const char *utf8) {
    return QString::fromUtf8(utf8);
}

struct FakeSounds {
    AudioPlayers &players() { return fake; }
    AudioDevices &devices() { return fake; }
    template <class Condition>
    bool eventually(Condition condition) {
        time.runPending();
        return condition();
    }
    void settle() { time.runPending(); }
    bool isHeard() { return !fake.heard().isEmpty(); }
    void changeOutput() { fake.changeOutput(); }
    void expectFailure(Cause cause) { fake.failNext({cause, text("why")}); }
    void letLoopsEnd() { fake.endLoops(); }

    VirtualTime time;
    FakeAudioPlayers fake{time};
};

/// On PipeWire, which is sooner ready; what is heard on PulseAudio stands among the adapter's own tests.
struct RealSounds {
    AudioPlayers &players() { return real; }
    AudioDevices &devices() { return real; }
    template <class Condition>
    bool eventually(Condition condition) {
        return test::eventually(condition);
    }
    void settle() { letPass(300ms); }
    bool isHeard() { return recording.isHeard(); }
    void changeOutput() { sound.setDefault(std::exchange(other, other == text("two") ? text("one") : text("two"))); }
    void expectFailure(Cause) {}
    void letLoopsEnd() { letPass(1500ms); } // many times the short tone

    PrivateSound sound{SoundServerKind::pipeWire};
    SoundRecording recording{text("one")};
    QString other = text("two");
    PlayerProcesses real{QCoreApplication::applicationDirPath()};
};

template <class Sounds>
class AudioPlayerContract : public testing::Test {
protected:
    AudioPlayerContract() {
        write(tone, toneWave(1));
        write(shortTone, toneWave(0.2));
        write(page, "<html>Sign in</html>");
        write(empty, {});
    }
    static void write(const QString &path, const QByteArray &contents) {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(contents);
    }
    void make(const QString &path) {
        sounds.players().makePlayer(path, [this](AudioPlayers::Result result) {
            ++answers;
            if (auto *made = std::get_if<std::unique_ptr<AudioPlayer>>(&result))
                player = std::move(*made);
            else
                failure = std::get<AudioPlayers::Failure>(result);
        });
    }
    void play(const QString &path, int loops = -1) {
        answers = 0;
        make(path);
        ASSERT_TRUE(sounds.eventually([&] {
            if (player == nullptr && answers == 1) { // a sound server may not have got its turn yet
                answers = 0;
                make(path);
            }
            return player != nullptr;
        })) << failure.reason.toStdString();
        player->setNumberOfLoops(loops);
        player->prepareToPlay();
        player->play();
    }
    void expectFailure(const QString &path, Cause cause) {
        failure = {};
        answers = 0;
        sounds.expectFailure(cause);
        make(path);
        EXPECT_EQ(answers, 0);
        EXPECT_TRUE(sounds.eventually([this] { return answers == 1; }));
        EXPECT_EQ(player, nullptr);
        EXPECT_EQ(failure.cause, cause) << path.toStdString();
        EXPECT_FALSE(failure.reason.isEmpty());
    }

    QTemporaryDir folder;
    QString tone = folder.filePath(text("ton – 音.wav"));
    QString shortTone = folder.filePath(text("short.wav"));
    QString page = folder.filePath(text("page.mp3"));
    QString empty = folder.filePath(text("empty.mp3"));
    Sounds sounds;
    int answers = 0;
    AudioPlayers::Failure failure;
    std::unique_ptr<AudioPlayer> player;
};

using All = testing::Types<FakeSounds, RealSounds>;
TYPED_TEST_SUITE(AudioPlayerContract, All);

TYPED_TEST(AudioPlayerContract, aPlayerComesInALaterTurnOnceAndSilent) {
    this->make(this->tone);
    EXPECT_EQ(this->answers, 0);
    EXPECT_TRUE(this->sounds.eventually([this] { return this->answers == 1; }));
    ASSERT_TRUE(this->player);
    this->player->prepareToPlay();
    this->sounds.settle();
    EXPECT_EQ(this->answers, 1);
    EXPECT_FALSE(this->sounds.isHeard());
}

TYPED_TEST(AudioPlayerContract, whatIsPlayedIsHeardUntilThePause) {
    ASSERT_NO_FATAL_FAILURE(this->play(this->tone));
    EXPECT_TRUE(this->sounds.eventually([this] { return this->sounds.isHeard(); }));
    this->player->pause();
    EXPECT_TRUE(this->sounds.eventually([this] { return !this->sounds.isHeard(); }));
    this->player->play(); // nobody goes on with a paused player
    this->sounds.settle();
    EXPECT_FALSE(this->sounds.isHeard());
}

TYPED_TEST(AudioPlayerContract, aStopAndTheDroppingOfAPlayerAreSilenceToo) {
    ASSERT_NO_FATAL_FAILURE(this->play(this->tone));
    EXPECT_TRUE(this->sounds.eventually([this] { return this->sounds.isHeard(); }));
    this->player->stop();
    EXPECT_TRUE(this->sounds.eventually([this] { return !this->sounds.isHeard(); }));
    this->player.reset();
    ASSERT_NO_FATAL_FAILURE(this->play(this->tone));
    EXPECT_TRUE(this->sounds.eventually([this] { return this->sounds.isHeard(); }));
    this->player.reset();
    EXPECT_TRUE(this->sounds.eventually([this] { return !this->sounds.isHeard(); }));
}

TYPED_TEST(AudioPlayerContract, whatIsNoSoundMakesNoPlayer) {
    this->expectFailure(this->page, Cause::contents);
    this->expectFailure(this->empty, Cause::contents);
    this->expectFailure(this->folder.path(), Cause::contents);
    this->expectFailure(this->folder.filePath(text("missing.mp3")), Cause::circumstances);
}

TYPED_TEST(AudioPlayerContract, anotherOutputIsToldWhileSomethingSoundsAndOnlyThen) {
    int notices = 0;
    this->sounds.devices().setDefaultOutputListener([&] {
        ++notices;
        this->player->pause();
    });
    bool hasEnded = false;
    ASSERT_NO_FATAL_FAILURE(this->play(this->tone));
    this->player->setOnEnd([&](const QString &) { hasEnded = true; });
    EXPECT_TRUE(this->sounds.eventually([this] { return this->sounds.isHeard(); }));
    this->sounds.changeOutput();
    EXPECT_TRUE(this->sounds.eventually([&] { return notices == 1; }));
    EXPECT_TRUE(this->sounds.eventually([this] { return !this->sounds.isHeard(); }));
    EXPECT_FALSE(hasEnded); // it was paused
    this->sounds.changeOutput();
    this->sounds.settle();
    EXPECT_EQ(notices, 1);
    EXPECT_FALSE(this->sounds.isHeard());
}

TYPED_TEST(AudioPlayerContract, withoutAListenerAnotherOutputEndsTheSoundAllTheSame) {
    ASSERT_NO_FATAL_FAILURE(this->play(this->tone));
    EXPECT_TRUE(this->sounds.eventually([this] { return this->sounds.isHeard(); }));
    this->sounds.changeOutput();
    EXPECT_TRUE(this->sounds.eventually([this] { return !this->sounds.isHeard(); }));
}

TYPED_TEST(AudioPlayerContract, theEndOfTheLastLoopIsToldWithoutAReason) {
    int ends = 0;
    ASSERT_NO_FATAL_FAILURE(this->play(this->shortTone, 1));
    this->player->setOnEnd([&](const QString &reason) {
        ++ends;
        EXPECT_EQ(reason, QString());
        this->player.reset();
    });
    this->sounds.letLoopsEnd();
    EXPECT_TRUE(this->sounds.eventually([&] { return ends == 1; }));
}

TYPED_TEST(AudioPlayerContract, loopsOfLessThanNoneHaveNoEnd) {
    int ends = 0;
    ASSERT_NO_FATAL_FAILURE(this->play(this->shortTone, -1));
    this->player->setOnEnd([&](const QString &) { ++ends; });
    EXPECT_TRUE(this->sounds.eventually([this] { return this->sounds.isHeard(); }));
    this->sounds.letLoopsEnd();
    this->sounds.settle();
    EXPECT_EQ(ends, 0);
    EXPECT_TRUE(this->sounds.eventually([this] { return this->sounds.isHeard(); }));
}

} // namespace
} // namespace tavrine::test
