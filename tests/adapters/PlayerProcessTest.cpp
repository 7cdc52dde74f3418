// The player's process: what is heard of it, how soon, and what is left when something goes wrong.
#include "adapters/linux/PlayerProcess.h"

#include "adapters/linux/HelperLines.h"
#include "adapters/linux/PlayerProtocol.h"
#include "support/Eventually.h"
#include "support/SoundRecording.h"
#include "support/Text.h"

#include <QCoreApplication>
#include <QElapsedTimer>

#include <map>

#include <gmock/gmock.h>

namespace tavrine::test {
namespace {

using namespace std::chrono_literals;
using playerProtocol::Report;
using Clock = SoundRecording::Clock;

/// What takes longer is broken, on a machine however busy. How soon it is on a quiet one, the test prints.
constexpr auto startBound = 3s;
constexpr auto silenceBound = 3s;

/// The processes whose parent is this one and which are players.
QList<pid_t> playersOf(qint64 parent) {
    QFile file(QStringLiteral("/proc/%1/task/%1/children").arg(parent));
    QList<pid_t> players;
    if (!file.open(QIODevice::ReadOnly))
        return players;
    const auto children = QString::fromUtf8(file.readAll()).split(u' ', Qt::SkipEmptyParts);
    for (const QString &child : children) {
        QFile name(QStringLiteral("/proc/%1/comm").arg(child.trimmed()));
        if (name.open(QIODevice::ReadOnly) && name.readAll().startsWith("TavrinePlayer"))
            players.append(child.toInt());
    }
    return players;
}

QByteArray statusOf(pid_t process, const char *field) {
    QFile file(QStringLiteral("/proc/%1/status").arg(process));
    if (file.open(QIODevice::ReadOnly))
        for (const QByteArray &line : file.readAll().split('\n'))
            if (line.startsWith(field))
                return line.mid(line.indexOf(':') + 1).trimmed();
    return {};
}

/// A server and who listens to its first device. A server takes seconds until it is quick, so most tests share one.
struct World {
    PrivateSound sound;
    SoundRecording first{text("one")};
};
std::shared_ptr<World> newWorld(SoundServerKind kind) {
    return std::shared_ptr<World>(new World{.sound = PrivateSound(kind)});
}

class PlayerProcessTest : public testing::TestWithParam<SoundServerKind> {
protected:
    PlayerProcessTest() : PlayerProcessTest(shared(GetParam())) {}
    explicit PlayerProcessTest(std::shared_ptr<World> its)
        : world(std::move(its)), sound(world->sound), first(world->first) {
        sound.enter();
        QFile file(tone);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(toneWave(1));
        players.setDefaultOutputListener([this] {
            ++notices;
            player.reset();
        });
    }
    ~PlayerProcessTest() override {
        player.reset();
        sound.setDefault(text("one"));
        EXPECT_TRUE(eventually([this] { return !first.isHeard(); }));
    }
    static void TearDownTestSuite() { worlds.clear(); }
    static std::shared_ptr<World> shared(SoundServerKind kind) {
        auto &its = worlds[kind];
        if (!its)
            its = newWorld(kind);
        return its;
    }
    void make() {
        players.makePlayer(tone, [this](AudioPlayers::Result result) {
            if (auto *made = std::get_if<std::unique_ptr<AudioPlayer>>(&result)) {
                player = std::move(*made);
                player->setOnEnd([this](const QString &reason) { ended = reason; });
            } else {
                failure = std::get<AudioPlayers::Failure>(result).reason;
            }
        });
    }
    void makeReady() {
        make();
        ASSERT_TRUE(eventually([this] { return player != nullptr || !failure.isEmpty(); }));
        ASSERT_TRUE(player) << failure.toStdString();
    }
    void play() {
        ASSERT_NO_FATAL_FAILURE(makeReady());
        player->setNumberOfLoops(-1);
        player->play();
    }
    void playUntilHeard() {
        ASSERT_NO_FATAL_FAILURE(play());
        ASSERT_TRUE(eventually([this] { return first.isHeard(); }));
    }
    /// So much of the device, not of the clock: time alone says nothing about a recording that comes late.
    static void letCome(const SoundRecording &device, std::chrono::milliseconds length) {
        const qsizetype enough = device.samples() + length / 1ms * PrivateSound::rate / 1'000;
        EXPECT_TRUE(eventually([&] { return device.samples() >= enough; }));
    }
    static void expectNothingOn(const SoundRecording &device) {
        letCome(device, 400ms);
        EXPECT_EQ(device.loudSamples(), 0);
    }
    void expectSilence() {
        letCome(first, 400ms);
        EXPECT_FALSE(first.isHeard());
    }

    QTemporaryDir folder;
    QString tone = folder.filePath(text("tone.wav"));
    static inline std::map<SoundServerKind, std::shared_ptr<World>> worlds;
    std::shared_ptr<World> world;
    PrivateSound &sound;
    SoundRecording &first;
    PlayerProcesses players{QCoreApplication::applicationDirPath(), 6s}; // for a machine that does a lot else
    std::unique_ptr<AudioPlayer> player;
    QString failure;
    std::optional<QString> ended;
    int notices = 0;
};

/// For tests that leave no server behind that others could use.
class OwnServerTest : public PlayerProcessTest {
protected:
    OwnServerTest() : PlayerProcessTest(newWorld(GetParam())) {}
};

const auto bothKinds = testing::Values(SoundServerKind::pulseAudio, SoundServerKind::pipeWire);
const auto nameOfKind = [](const auto &each) {
    return each.param == SoundServerKind::pulseAudio ? "PulseAudio" : "PipeWire";
};
INSTANTIATE_TEST_SUITE_P(Servers, PlayerProcessTest, bothKinds, nameOfKind);
INSTANTIATE_TEST_SUITE_P(Servers, OwnServerTest, bothKinds, nameOfKind);

TEST_P(PlayerProcessTest, aPlayThatIsExpectedReadsAheadOnceAndLeavesNoProgram) {
    const auto running = [] { return playersOf(QCoreApplication::applicationPid()); };
    players.expectPlayer();
    EXPECT_EQ(running().size(), 1);
    EXPECT_TRUE(eventually([&] { return running().isEmpty(); }));
    players.expectPlayer();
    EXPECT_TRUE(running().isEmpty()) << "they are in memory";
}

TEST_P(PlayerProcessTest, aPlayThatComesWhileItReadsAheadWaitsForNothing) {
    players.expectPlayer();
    makeReady();
}

TEST_P(PlayerProcessTest, afterAPlayNothingIsReadAhead) {
    ASSERT_NO_FATAL_FAILURE(makeReady());
    player.reset();
    EXPECT_TRUE(eventually([] { return playersOf(QCoreApplication::applicationPid()).isEmpty(); }));
    players.expectPlayer();
    EXPECT_TRUE(playersOf(QCoreApplication::applicationPid()).isEmpty());
}

TEST_P(PlayerProcessTest, aPressIsHeardAtOnceAndSoIsThePause) {
    ASSERT_NO_FATAL_FAILURE(playUntilHeard()); // whatever comes from the disk has come
    player.reset();
    ASSERT_TRUE(eventually([this] { return !first.isHeard(); }));
    const auto pressed = Clock::now();
    ASSERT_NO_FATAL_FAILURE(playUntilHeard());
    const auto start = first.changed() - pressed;
    letPass(300ms);
    const auto paused = Clock::now();
    player->pause();
    ASSERT_TRUE(eventually([this] { return !first.isHeard(); }));
    const auto silence = first.changed() - paused;
    EXPECT_LT(start, startBound);
    EXPECT_LT(silence, silenceBound);
    std::printf("heard after %.0f ms, silent after %.0f ms\n", std::chrono::duration<double, std::milli>(start).count(),
                std::chrono::duration<double, std::milli>(silence).count());
}

/// A second of a low tone, and then a high one.
QByteArray wavesThatRise() {
    constexpr qsizetype beginning = 44 + PrivateSound::rate * 2; // the head, and a second
    return toneWave(12, 250).first(beginning) + toneWave(12, 1'000).sliced(beginning);
}

/// How often they change their sign, over two; from the first that is heard on.
double hertzOf(const std::vector<std::int16_t> &samples) {
    const auto isLoud = [](std::int16_t sample) { return std::abs(sample) > SoundRecording::quiet; };
    const auto begin = std::find_if(samples.begin(), samples.end(), isLoud);
    int changes = 0;
    for (auto each = begin; each != samples.end() && each + 1 != samples.end(); ++each)
        changes += (*each < 0) != (each[1] < 0) ? 1 : 0;
    const auto length = samples.end() - begin;
    return length > 0 ? changes / 2.0 * PrivateSound::rate / double(length) : 0;
}

TEST_P(PlayerProcessTest, whatIsPlayedAfterAPauseIsHeardFromItsBeginning) {
    constexpr double between = 600;
    QFile file(tone);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(wavesThatRise());
    file.close();
    playUntilHeard();
    ASSERT_TRUE(eventually([this] {
        first.keep();
        letCome(first, 100ms);
        return hertzOf(first.kept()) > between;
    }));
    player->pause();
    ASSERT_TRUE(eventually([this] { return !first.isHeard(); }));
    player.reset();
    first.keep();
    ASSERT_NO_FATAL_FAILURE(playUntilHeard());
    letCome(first, 100ms);
    const double heard = hertzOf(first.kept());
    EXPECT_LT(heard, between);
    EXPECT_GT(heard, 0);
}

TEST_P(PlayerProcessTest, theSeamOfALoopIsNotHeard) {
    ASSERT_NO_FATAL_FAILURE(playUntilHeard());
    letPass(200ms);
    // A busy machine breaks sound off now and then, wherever it is. A gap at the seam would be there every time.
    bool isWhole = false;
    for (int listening = 0; listening < 4 && !isWhole; ++listening) {
        first.keep();
        letPass(1'600ms); // one seam at least
        const auto samples = first.kept();
        ASSERT_GT(samples.size(), std::size_t(PrivateSound::rate));
        isWhole = breaksIn(samples).empty();
    }
    EXPECT_TRUE(isWhole);
}

TEST_P(PlayerProcessTest, anotherDefaultDeviceSilencesTheMusicBeforeItIsHeardThere) {
    const SoundRecording second(text("two"));
    ASSERT_TRUE(eventually([&] { return second.samples() > 0; }));
    ASSERT_NO_FATAL_FAILURE(playUntilHeard());
    sound.setDefault(text("two"));
    EXPECT_TRUE(eventually([this] { return notices == 1; }));
    expectSilence();
    expectNothingOn(second);
    sound.setDefault(text("one"));
    expectNothingOn(second);
    EXPECT_EQ(notices, 1);
    play(); // and this is how the recording would have heard it
    sound.setDefault(text("two"));
    ASSERT_TRUE(eventually([this] { return notices == 2; }));
    play();
    EXPECT_TRUE(eventually([&] { return second.isHeard(); }));
    expectSilence(); // each recording hears its own device
}

TEST_P(PlayerProcessTest, aDeviceThatComesBackIsNotPlayedOnAgain) {
    ASSERT_NO_FATAL_FAILURE(playUntilHeard());
    players.setDefaultOutputListener([this] {
        ++notices;
        player->pause();
    });
    sound.setDefault(text("two"));
    ASSERT_TRUE(eventually([this] { return notices == 1; }));
    expectSilence();
    sound.setDefault(text("one"));
    expectSilence();
    EXPECT_EQ(notices, 1);
    player.reset();
    play(); // and this is how the recording would have heard it
    EXPECT_TRUE(eventually([this] { return first.isHeard(); }));
}

TEST_P(OwnServerTest, aDeviceThatGoesTakesTheMusicWithIt) {
    const SoundRecording second(text("two"));
    ASSERT_TRUE(eventually([&] { return second.samples() > 0; }));
    ASSERT_NO_FATAL_FAILURE(playUntilHeard());
    sound.removeDevice(text("one"));
    EXPECT_TRUE(eventually([this] { return notices == 1; }));
    expectNothingOn(second);
}

TEST_P(OwnServerTest, theEndOfTheSoundServerIsTold) {
    ASSERT_NO_FATAL_FAILURE(playUntilHeard());
    sound.end();
    EXPECT_TRUE(eventually([this] { return notices == 1; }));
    EXPECT_TRUE(eventually([] { return playersOf(QCoreApplication::applicationPid()).isEmpty(); }));
}

TEST_P(OwnServerTest, withoutASoundServerThereIsNoPlayerAndNoWait) {
    sound.end();
    const auto pressed = Clock::now();
    make();
    ASSERT_TRUE(eventually([this] { return !failure.isEmpty(); }));
    EXPECT_LT(Clock::now() - pressed, 5s) << "of 6 for one that does not answer";
    EXPECT_EQ(player, nullptr);
}

TEST_P(PlayerProcessTest, aPlayerThatCrashesIsToldAndNothingRemains) {
    ASSERT_NO_FATAL_FAILURE(playUntilHeard());
    ASSERT_EQ(playersOf(QCoreApplication::applicationPid()).size(), 1);
    ::kill(playersOf(QCoreApplication::applicationPid()).front(), SIGABRT);
    EXPECT_TRUE(eventually([this] { return ended.has_value(); }));
    EXPECT_FALSE(ended->isEmpty());
    EXPECT_TRUE(eventually([] { return playersOf(QCoreApplication::applicationPid()).isEmpty(); }));
    EXPECT_TRUE(eventually([this] { return sound.streams() == 0; }));
}

TEST_P(PlayerProcessTest, aPlayerIsLockedInBeforeItReadsTheSound) {
    ASSERT_NO_FATAL_FAILURE(playUntilHeard());
    const pid_t process = playersOf(QCoreApplication::applicationPid()).value(0);
    EXPECT_EQ(statusOf(process, "Seccomp:"), "2");
    EXPECT_EQ(statusOf(process, "NoNewPrivs:"), "1");
    std::printf("the player: %s resident, %s threads\n", statusOf(process, "VmRSS:").constData(),
                statusOf(process, "Threads:").constData());
}

// One server is enough for what has nothing to do with it.

class PulseAudioTest : public PlayerProcessTest {};
INSTANTIATE_TEST_SUITE_P(Server, PulseAudioTest, testing::Values(SoundServerKind::pulseAudio), nameOfKind);

TEST_P(PulseAudioTest, aPlayerThatHangsIsKilledAfterItsTime) {
    ASSERT_NO_FATAL_FAILURE(playUntilHeard());
    const pid_t process = playersOf(QCoreApplication::applicationPid()).value(0);
    ::kill(process, SIGSTOP);
    const auto stopped = Clock::now();
    EXPECT_TRUE(eventually([this] { return ended.has_value(); }, 30s));
    EXPECT_GT(Clock::now() - stopped, 500ms);
    EXPECT_TRUE(eventually([] { return playersOf(QCoreApplication::applicationPid()).isEmpty(); }));
}

TEST_P(PulseAudioTest, aSoundServerThatHangsStopsNothingButTheMusic) {
    ASSERT_NO_FATAL_FAILURE(playUntilHeard());
    sound.hang();
    EXPECT_TRUE(eventually([this] { return ended.has_value(); }, 30s));
    player.reset();
    const auto pressed = Clock::now();
    make(); // returns at once
    EXPECT_LT(Clock::now() - pressed, 2s);
    sound.goOn();
}

TEST_P(PulseAudioTest, aPlayerEndsWithWhoeverStartedIt) {
    QProcess parent;
    parent.start(text("sh"), {text("-c"), text("\"$0\" 3<\"$1\"; true"),
                              QCoreApplication::applicationDirPath() + text("/TavrinePlayer"), tone});
    ASSERT_TRUE(parent.waitForStarted());
    parent.write(playerProtocol::playLine(-1).c_str());
    ASSERT_TRUE(eventually([this] { return first.isHeard(); }));
    const pid_t process = playersOf(parent.processId()).value(0);
    ASSERT_NE(process, 0);
    // It hangs as well, and its parent is killed without a word.
    ::kill(process, SIGSTOP);
    ::kill(static_cast<pid_t>(parent.processId()), SIGKILL);
    EXPECT_TRUE(eventually([&] { return ::kill(process, 0) != 0 || statusOf(process, "State:").startsWith("Z"); }));
}

TEST_P(PulseAudioTest, manyPressesLeaveOnePlayerAndNoDescriptor) {
    ASSERT_NO_FATAL_FAILURE(playUntilHeard());
    const auto descriptors = [] { return QDir(text("/proc/self/fd")).entryList().size(); };
    const auto before = descriptors();
    for (int i = 0; i < 12; ++i)
        make(); // each takes the place of the one before
    ASSERT_TRUE(eventually([] { return playersOf(QCoreApplication::applicationPid()).size() == 1; }));
    EXPECT_TRUE(eventually([&] { return descriptors() <= before; })) << descriptors() << " of " << before;
}

// The library plays such a loop or gives it up, before the press or after it: it has no time of its own to do either.
TEST_P(PulseAudioTest, aLoopOfAMomentIsHeardOrEndsWithAReason) {
    QFile file(tone);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(toneWave(0.001));
    file.close();
    for (const auto beforePress : {0ms, 300ms}) {
        ended.reset();
        makeReady();
        letPass(beforePress);
        player->setNumberOfLoops(-1);
        player->play();
        EXPECT_TRUE(eventually([this] { return ended.has_value() || first.isHeard(); }));
        letPass(300ms);
        EXPECT_TRUE(!ended || !ended->isEmpty()) << "after " << beforePress.count() << " ms";
        player.reset();
        EXPECT_TRUE(eventually([this] { return !first.isHeard(); }));
    }
}

TEST_P(PulseAudioTest, thereIsNoPlayerWhereItsProgramIsMissing) {
    PlayerProcesses nowhere(folder.path());
    QString reason;
    nowhere.makePlayer(tone,
                       [&](AudioPlayers::Result result) { reason = std::get<AudioPlayers::Failure>(result).reason; });
    EXPECT_TRUE(eventually([&] { return !reason.isEmpty(); }));
    EXPECT_TRUE(reason.contains(text("No such file"))) << reason.toStdString();
}

// What the two say to each other.

TEST(PlayerProtocol, everyReportComesBackAsItWent) {
    for (const auto kind :
         {Report::Kind::ready, Report::Kind::alive, Report::Kind::ended, Report::Kind::outputChanged}) {
        const std::string line = playerProtocol::lineOf({kind});
        EXPECT_EQ(line.back(), '\n');
        EXPECT_EQ(playerProtocol::reportIn({line.data(), line.size() - 1}), Report{kind});
    }
    const Report failed{Report::Kind::contentsFailed, "no\nsound\x01 – 音"};
    const std::string line = playerProtocol::lineOf(failed);
    EXPECT_EQ(std::count(line.begin(), line.end(), '\n'), 1);
    EXPECT_EQ(playerProtocol::reportIn({line.data(), line.size() - 1}),
              (Report{Report::Kind::contentsFailed, "no sound  – 音"}));
}

TEST(PlayerProtocol, whatNoPlayerSaysIsNothing) {
    using namespace std::string_literals;
    for (const std::string &line : {""s, " "s, "READY"s, "ready "s, "ready now"s, "alivealive"s, "alive\0"s, "play -1"s,
                                    std::string(600, 'r'), "\xff\xfe"s})
        EXPECT_EQ(playerProtocol::reportIn(line), std::nullopt) << line;
}

TEST(PlayerProtocol, onlyNumbersOfLoopsAreCommands) {
    EXPECT_EQ(playerProtocol::loopsIn("play -1"), -1);
    EXPECT_EQ(playerProtocol::loopsIn("play 0"), 0);
    EXPECT_EQ(playerProtocol::playLine(3), "play 3\n");
    for (const char *line : {"play", "play ", "play -2", "play 1 2", "play 99999999999", "play x", "pause", ""})
        EXPECT_EQ(playerProtocol::loopsIn(line), std::nullopt) << line;
}

TEST(PlayerProtocol, everyCommandForAMovieComesBackAsItWentAndNothingElseIsOne) {
    using playerProtocol::MovieCommand;
    for (const auto command : {MovieCommand::play, MovieCommand::pause, MovieCommand::mute, MovieCommand::unmute}) {
        const std::string line = playerProtocol::lineOf(command);
        EXPECT_EQ(line.back(), '\n');
        EXPECT_EQ(playerProtocol::movieCommandIn({line.data(), line.size() - 1}), command);
    }
    for (const char *line : {"", "play -1", "Play", "mute ", "stop", "quit"})
        EXPECT_EQ(playerProtocol::movieCommandIn(line), std::nullopt) << line;
}

TEST(HelperLines, piecesBecomeLines) {
    HelperLines lines;
    EXPECT_TRUE(lines.take("rea").empty());
    EXPECT_EQ(lines.take("dy\nali"), (std::vector<std::string>{"ready"}));
    EXPECT_EQ(lines.take("ve\n\nx\n"), (std::vector<std::string>{"alive", "", "x"}));
    EXPECT_FALSE(lines.isBroken());
}

TEST(HelperLines, aLineWithoutAnEndIsNotKept) {
    HelperLines lines;
    EXPECT_TRUE(lines.take(std::string(HelperLines::longest, 'x')).empty());
    EXPECT_FALSE(lines.isBroken());
    EXPECT_TRUE(lines.take("x").empty());
    EXPECT_TRUE(lines.isBroken());
}

} // namespace
} // namespace tavrine::test
