// The built program for persons who want larger text, by the settings of their desktop: on sway and on KWin.

#include "adapters/wayland/frozen/KWinScreenShots.h"
#include "desktop/Program.h"
#include "support/ColourRuns.h"
#include "support/CommandOutput.h"
#include "support/Movies.h"
#include "support/SettingsPortal.h"
#include "support/Wait.h"
#include "support/WaylandHand.h"
#include "support/WaylandPattern.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QImage>

#include <gtest/gtest.h>

namespace tavrine::testing {
namespace {

const auto group = QStringLiteral("org.gnome.desktop.interface");
const auto key = QStringLiteral("text-scaling-factor");

bool isKWin() {
    return qgetenv("XDG_CURRENT_DESKTOP") == "KDE";
}

/// An output by what other programs get of it; none when the compositor is late.
QImage seenOn(const WaylandOutput &output) {
    if (!isKWin())
        return QImage::fromData(
                   outputOf(QStringLiteral("grim"), {QStringLiteral("-t"), QStringLiteral("ppm"), QStringLiteral("-o"),
                                                     QString::fromStdString(output.name), QStringLiteral("-")}))
            .convertToFormat(QImage::Format_RGB32);
    const auto shots = KWinScreenShots::open();
    const auto shot = shots ? shots->take(output.name) : std::nullopt;
    if (!shot)
        return {};
    QImage picture(shot->seenSize(), QImage::Format_RGB32);
    picture.fill(Qt::black);
    shot->putInto({reinterpret_cast<quint32 *>(picture.bits()), picture.width(), picture.height()}, {}, picture.rect());
    return picture;
}

/// A picture of the largest output takes a second on a busy machine, and two of them must be one.
constexpr std::chrono::seconds patience{40};

class WaylandTextScale : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(pattern.isThere());
        park();
    }

    /// Where no panel stands; one compositor draws the pointer into pictures.
    void park() { hand.move(hand.layout().bottomRight() - QPoint(4, 4)); }
    [[nodiscard]] QImage seen() const { return seenOn(pattern.outputs().front()); }
    [[nodiscard]] double pixelsPerPoint() const { return pattern.outputs().front().scale(); }

    /// As the desktop's own settings write it.
    void want(Program &program, double factor) const {
        const QString folder = program.home() + QStringLiteral("/.config");
        if (isKWin()) {
            QFile file(folder + QStringLiteral("/kcmfonts"));
            ASSERT_TRUE(file.open(QIODevice::WriteOnly));
            file.write("[General]\nforceFontDPIWayland=" + QByteArray::number(qRound(96 * factor)) + '\n');
            return;
        }
        const QString written = qEnvironmentVariable("XDG_CONFIG_HOME") + QStringLiteral("/dconf/user");
        (void)outputOf(QStringLiteral("gsettings"), {QStringLiteral("set"), group, key, QString::number(factor)});
        ASSERT_TRUE(waitUntil([&] {
            return outputOf(QStringLiteral("gsettings"), {QStringLiteral("get"), group, key}).trimmed().toDouble() ==
                       factor &&
                   QFile::exists(written);
        }));
        QDir().mkpath(folder + QStringLiteral("/dconf"));
        QFile::remove(folder + QStringLiteral("/dconf/user"));
        ASSERT_TRUE(QFile::copy(written, folder + QStringLiteral("/dconf/user")));
    }
    /// What of the output is not the pattern: the shelf's row and the pointer's corner left out.
    [[nodiscard]] QRect covered(const QImage &picture) const {
        const int shelf = qRound(60 * pixelsPerPoint());
        const int corner = qRound(50 * pixelsPerPoint());
        QRect found;
        for (int y = shelf; y < picture.height(); ++y) {
            const auto *const line = reinterpret_cast<const QRgb *>(picture.constScanLine(y));
            const int end = y > picture.height() - corner ? picture.width() - corner : picture.width();
            for (int x = 0; x < end; ++x)
                if ((line[x] & 0xffffffU) != (WaylandPattern::colourAt(0, x, y) & 0xffffffU))
                    found |= QRect(x, y, 1, 1);
        }
        return found;
    }
    /// Where the panel is, in pixels, once it has come to rest and `isRight`.
    [[nodiscard]] QRect panel(const std::function<bool(const QRect &)> &isRight) const {
        QRect place;
        QElapsedTimer resting; // a compositor that draws by the processor stands still within a fade, too
        resting.start();
        EXPECT_TRUE(waitUntil(
            [&] {
                const QImage now = seen();
                const QRect found = now.isNull() ? QRect() : covered(now);
                if (std::exchange(place, found) != found)
                    resting.restart();
                return resting.elapsed() > 600 && !now.isNull() && isRight(found);
            },
            patience))
            << place.x() << ' ' << place.y() << ' ' << place.width() << ' ' << place.height();
        return place;
    }
    [[nodiscard]] QRect openedBy(const Program &program, const char *word, int atLeast = 1) const {
        EXPECT_TRUE(panel([](const QRect &place) { return place.isEmpty(); }).isEmpty());
        const auto caller = program.startAgain({QLatin1String(word)});
        EXPECT_TRUE(caller->waitForFinished(10'000));
        const QRect place = panel([atLeast](const QRect &found) { return found.width() >= atLeast; });
        keepPicture(QLatin1String(word + 2));
        return place;
    }
    void keepPicture(const QString &name) const {
        const QString pictures = qEnvironmentVariable("TAVRINE_TEST_PICTURES");
        if (!pictures.isEmpty())
            seen().save(QStringLiteral("%1/%2-%3.png").arg(pictures, name).arg(m_factor));
    }
    [[nodiscard]] QRect panelAt(double factor, const char *word) {
        Program program;
        m_factor = factor;
        want(program, factor);
        EXPECT_TRUE(program.startOnboarded());
        return openedBy(program, word);
    }
    /// Its shadow is measured with it: a shade that is hardly there is one pixel more or less.
    static void expectTimes(double factor, const QRect &larger, const QRect &usual) {
        EXPECT_NEAR(larger.width(), usual.width() * factor, 8);
        EXPECT_NEAR(larger.height(), usual.height() * factor, 12);
        EXPECT_NEAR(larger.center().x(), usual.center().x(), 6);
    }

    double m_factor = 1;
    WaylandHand hand;
    WaylandPattern pattern;
};

/// What hears of presses there is clear, and nothing stands still below it.
TEST_F(WaylandTextScale, whatChangesBesideAnOpenPanelIsSeen) {
    Program program;
    ASSERT_TRUE(program.startOnboarded());
    EXPECT_FALSE(openedBy(program, "--clipboard").isEmpty());
    const QPoint beside(100, seen().height() - 100);
    for (const QRgb colour : {0xff14b43cU, 0xffb4143cU, 0xff143cb4U}) {
        pattern.paint(0, {beside - QPoint(20, 20), QSize(40, 40)}, colour);
        EXPECT_TRUE(waitUntil([&] { return seen().pixel(beside) == colour; }, patience)) << std::hex << colour;
    }
}

class WaylandTextScaleOf : public WaylandTextScale, public ::testing::WithParamInterface<double> {};

TEST_P(WaylandTextScaleOf, panelsAreLargerByItAndStandInTheMiddleAsEver) {
    for (const char *word : {"--clipboard", "--emoji"}) {
        SCOPED_TRACE(word);
        const QRect usual = panelAt(1, word);
        expectTimes(GetParam(), panelAt(GetParam(), word), usual);
    }
}

TEST_P(WaylandTextScaleOf, aRecordingThatWasLeftIsPlayedInItsColoursAndItsShape) {
    Program program;
    m_factor = GetParam();
    want(program, m_factor);
    const QString folder = program.home() + QStringLiteral("/.cache/Tavrine/tmp");
    ASSERT_TRUE(QDir().mkpath(folder));
    ASSERT_NO_FATAL_FAILURE(
        test::makeMovie(folder + QStringLiteral("/tavrine-rec-1.mp4"),
                        QStringLiteral("color=c=0xC81E28:s=320x360:r=30:d=3[a];color=c=0x2850DC:s=320x360:r=30:d=3[b];"
                                       "[a][b]hstack=inputs=2[c];color=c=0x14B43C:s=640x360:r=30:d=3[d];"
                                       "[c][d]concat=n=2")));
    ASSERT_TRUE(program.startOnboarded());
    const int atLeast = qRound(100 * pixelsPerPoint());
    QRect left;
    QRect right;
    EXPECT_TRUE(waitUntil(
        [&] {
            const QImage now = seen();
            left = filledBy(qRgb(0xC8, 0x1E, 0x28), now, atLeast);
            right = filledBy(qRgb(0x28, 0x50, 0xDC), now, atLeast);
            return !left.isEmpty() && !right.isEmpty();
        },
        patience))
        << qPrintable(program.output());
    keepPicture(QStringLiteral("preview"));
    EXPECT_EQ(left.top(), right.top());
    EXPECT_EQ(left.bottom(), right.bottom());
    EXPECT_NEAR(right.left() - left.right(), 1, 4);
    const QRect whole = left | right;
    EXPECT_NEAR(double(whole.width()) / whole.height(), 16.0 / 9, 0.03);
    EXPECT_GT(whole.width(), 320 * pixelsPerPoint() * m_factor);
    EXPECT_TRUE(waitUntil([&] { return filledBy(qRgb(0x14, 0xB4, 0x3C), seen(), atLeast) == whole; }, patience));
}

/// The capture tool reads the setting by itself, and takes no pixel more for it.
TEST_P(WaylandTextScaleOf, aCaptureIsExactToThePixel) {
    Program program;
    m_factor = GetParam();
    want(program, GetParam());
    ASSERT_TRUE(program.startOnboarded());
    EXPECT_TRUE(panel([](const QRect &place) { return place.isEmpty(); }).isEmpty());
    const auto caller = program.startAgain({QStringLiteral("--capture")});
    ASSERT_TRUE(caller->waitForFinished(10'000));
    EXPECT_FALSE(panel([](const QRect &place) { return !place.isEmpty(); }).isEmpty()); // it is frozen
    const QPoint from(100, 200);
    const QPoint to(400, 350);
    hand.drag(from, to);
    QImage taken;
    EXPECT_TRUE(waitUntil([&taken] {
        taken = QImage::fromData(
            outputOf(QStringLiteral("wl-paste"), {QStringLiteral("--type"), QStringLiteral("image/png")}));
        return !taken.isNull();
    }));
    const double scale = pixelsPerPoint();
    const QRect pixels(from * scale, to * scale);
    ASSERT_EQ(taken.size(), pixels.size());
    EXPECT_TRUE(taken.convertToFormat(QImage::Format_RGB32) == WaylandPattern::expected(0, pixels));
}

INSTANTIATE_TEST_SUITE_P(Factors, WaylandTextScaleOf, ::testing::Values(1.25, 1.5), [](const auto &factor) {
    return QStringLiteral("By%1").arg(factor.param * 100).toStdString();
});

/// The setting changes while the program runs.
class WaylandTextScaleChange : public WaylandTextScale {
protected:
    void SetUp() override {
        WaylandTextScale::SetUp();
        portal.set(group, key, 1.0, false);
        ASSERT_TRUE(portal.appear());
        ASSERT_TRUE(program.startOnboarded());
    }
    void change(double factor) {
        portal.set(group, key, factor);
        m_factor = factor;
    }

    test::SettingsPortal portal;
    Program program;
};

TEST_F(WaylandTextScaleChange, anOpenPanelIsLargerAtOnceInTheMiddleAndTakesKeysAsBefore) {
    const QRect usual = openedBy(program, "--clipboard");
    change(1.25);
    const QRect larger = panel([&](const QRect &place) { return place.width() > usual.width() * 1.2; });
    keepPicture(QStringLiteral("changed"));
    expectTimes(1.25, larger, usual);
    hand.tap(KEY_ESC);
    EXPECT_TRUE(panel([](const QRect &place) { return place.isEmpty(); }).isEmpty());
    change(1);
    expectTimes(1, openedBy(program, "--clipboard"), usual);
}

TEST_F(WaylandTextScaleChange, aPanelThatIsOpenedAfterItIsAsLargeAsAfterAStart) {
    const QRect usual = openedBy(program, "--emoji");
    hand.tap(KEY_ESC);
    EXPECT_TRUE(panel([](const QRect &place) { return place.isEmpty(); }).isEmpty());
    change(1.5);
    // The word may come to the program before the change does.
    expectTimes(1.5, openedBy(program, "--emoji", usual.width() + 100), usual);
    EXPECT_TRUE(program.isRunning());
}

} // namespace
} // namespace tavrine::testing
