// The built program for persons who want larger text, by the settings of their desktop: on sway.

#include "desktop/Program.h"
#include "support/Wait.h"
#include "support/WaylandHand.h"

#include <QDir>
#include <QFile>
#include <QImage>

#include <gtest/gtest.h>

namespace tavrine::testing {
namespace {

QByteArray answerOf(const QString &command, const QStringList &arguments) {
    QProcess process;
    process.start(command, arguments);
    return process.waitForFinished(10'000) ? process.readAllStandardOutput() : QByteArray();
}

QImage seenOnFirst() {
    return QImage::fromData(
               answerOf(QStringLiteral("grim"), {QStringLiteral("-t"), QStringLiteral("ppm"), QStringLiteral("-o"),
                                                 QStringLiteral("HEADLESS-1"), QStringLiteral("-")}))
        .convertToFormat(QImage::Format_RGB32);
}

/// A picture of the largest output takes a second on a busy machine, and two of them must be one.
constexpr std::chrono::seconds patience{40};

class WaylandTextScale : public ::testing::TestWithParam<double> {
protected:
    void SetUp() override { hand.move(hand.layout().bottomRight() - QPoint(4, 4)); }

    /// As the desktop's own settings write it.
    void want(Program &program, double factor) {
        const QString folder = program.home() + QStringLiteral("/.config");
        const QString written = qEnvironmentVariable("XDG_CONFIG_HOME") + QStringLiteral("/dconf/user");
        const QString group = QStringLiteral("org.gnome.desktop.interface");
        const QString key = QStringLiteral("text-scaling-factor");
        (void)answerOf(QStringLiteral("gsettings"), {QStringLiteral("set"), group, key, QString::number(factor)});
        ASSERT_TRUE(waitUntil([&] {
            return answerOf(QStringLiteral("gsettings"), {QStringLiteral("get"), group, key}).trimmed().toDouble() ==
                       factor &&
                   QFile::exists(written);
        }));
        QDir().mkpath(folder + QStringLiteral("/dconf"));
        QFile::remove(folder + QStringLiteral("/dconf/user"));
        ASSERT_TRUE(QFile::copy(written, folder + QStringLiteral("/dconf/user")));
    }
    /// What of the output another picture of it is not, but for the pointer in its lower right corner.
    [[nodiscard]] static QRect changed(const QImage &before, const QImage &after) {
        QRect found;
        for (int y = 0; y < after.height(); ++y) {
            const auto *const one = reinterpret_cast<const QRgb *>(before.constScanLine(y));
            const auto *const other = reinterpret_cast<const QRgb *>(after.constScanLine(y));
            const int end = y > after.height() - 100 ? after.width() - 100 : after.width();
            for (int x = 0; x < end; ++x)
                if (one[x] != other[x])
                    found |= QRect(x, y, 1, 1);
        }
        return found;
    }
    /// Where the panel is, in pixels, once it has come to rest.
    [[nodiscard]] QRect openedBy(Program &program, const char *word) {
        QImage before;
        EXPECT_TRUE(waitUntil(
            [&] { // the shelf is there, and has come to rest
                const QImage now = seenOnFirst();
                return std::exchange(before, now) == now && !now.isNull() &&
                       now.pixel(now.width() / 2, 1) != now.pixel(0, now.height() / 2);
            },
            patience));
        const auto caller = program.startAgain({QLatin1String(word)});
        EXPECT_TRUE(caller->waitForFinished(10'000));
        QRect place;
        EXPECT_TRUE(waitUntil(
            [&] {
                const QRect now = changed(before, seenOnFirst());
                return !now.isEmpty() && std::exchange(place, now) == now;
            },
            patience));
        const QString pictures = qEnvironmentVariable("TAVRINE_TEST_PICTURES");
        if (!pictures.isEmpty())
            seenOnFirst().save(QStringLiteral("%1/%2-%3.png").arg(pictures, QLatin1String(word + 2)).arg(m_factor));
        return place;
    }
    [[nodiscard]] QRect panelAt(double factor, const char *word) {
        Program program;
        m_factor = factor;
        want(program, factor);
        EXPECT_TRUE(program.startOnboarded());
        return openedBy(program, word);
    }

    double m_factor = 1;
    WaylandHand hand;
};

/// Its shadow is measured with it: a shade that is hardly there is one pixel more or less.
TEST_P(WaylandTextScale, panelsAreLargerByItAndStandInTheMiddleAsEver) {
    for (const char *word : {"--clipboard", "--emoji"}) {
        const QRect usual = panelAt(1, word);
        const QRect larger = panelAt(GetParam(), word);
        EXPECT_NEAR(larger.width(), usual.width() * GetParam(), 8) << word;
        EXPECT_NEAR(larger.height(), usual.height() * GetParam(), 12) << word;
        EXPECT_NEAR(larger.center().x(), usual.center().x(), 6) << word;
    }
}

INSTANTIATE_TEST_SUITE_P(Factors, WaylandTextScale, ::testing::Values(1.25, 1.5), [](const auto &factor) {
    return QStringLiteral("By%1").arg(factor.param * 100).toStdString();
});

} // namespace
} // namespace tavrine::testing
