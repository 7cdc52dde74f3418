#pragma once

#include "adapters/linux/PluginLoader.h"
#include "support/Eventually.h"
#include "support/FramePicture.h"
#include "support/ScreenClient.h"

#include <QGuiApplication>
#include <QProcess>
#include <QScreen>

#include <mutex>

#include <gtest/gtest.h>

namespace tavrine::test {

using namespace std::chrono_literals;
using testing::ScreenClient;

inline constexpr QRect area{100, 80, 320, 240};

inline std::string describe(const QImage &seen, const QImage &expected) {
    int wrong = 0;
    QPoint first(-1, -1);
    for (int y = 0; y < seen.height(); ++y)
        for (int x = 0; x < seen.width(); ++x)
            if ((seen.pixel(x, y) & 0xffffffU) != (expected.pixel(x, y) & 0xffffffU) && wrong++ == 0)
                first = {x, y};
    return wrong == 0 ? std::string()
                      : QStringLiteral("%1 wrong, the first at %2,%3: %4 instead of %5")
                            .arg(wrong)
                            .arg(first.x())
                            .arg(first.y())
                            .arg(seen.pixel(first), 0, 16)
                            .arg(expected.pixel(first), 0, 16)
                            .toStdString();
}

class ScreenStreamTest : public ::testing::Test {
protected:
    ScreenStreamTest() {
        board = client.add(client.wholeScreen(), 0x303030);
        if (!client.isComposited())
            return;
        for (const QPoint place : {area.center(), client.wholeScreen().bottomRight()})
            static_cast<void>(shown(place, 0x303030));
    }

    std::unique_ptr<ScreenStream> start(const QList<WindowNumber> &keptOut, const QRect &where = area,
                                        bool showsPointer = false,
                                        const QScreen &screen = *QGuiApplication::primaryScreen()) {
        ScreenStreamConfiguration configuration;
        configuration.sourceRect = where;
        configuration.width = where.width();
        configuration.height = where.height();
        configuration.showsCursor = showsPointer;
        const auto display = static_cast<quint32>(qHash(screen.name()));
        auto stream = plugin.port()->makeStream(
            {display, keptOut}, configuration,
            {[this](const ScreenSample &sample) { take(sample); }, [this](const QString &error) { ended = error; }});
        std::optional<std::optional<QString>> answer;
        stream->startCapture([&](std::optional<QString> error) { answer = std::move(error); });
        EXPECT_TRUE(eventually([&] { return answer && frames() > 0; }));
        EXPECT_EQ(answer->value_or(QString()), QString());
        return stream;
    }
    /// As whoever writes a movie: only what is said to have changed is taken over.
    void take(const ScreenSample &sample) {
        const std::lock_guard lock(mutex);
        const QImage whole = pictureOf(*sample.frame);
        if (followed.isNull())
            followed = QImage(whole.size(), QImage::Format_RGB32);
        for (const QRect &rect : sample.frame->changed)
            for (int y = rect.top(); y <= rect.bottom(); ++y)
                std::copy_n(reinterpret_cast<const QRgb *>(whole.constScanLine(y)) + rect.x(), rect.width(),
                            reinterpret_cast<QRgb *>(followed.scanLine(y)) + rect.x());
        isTold = isTold && followed == whole;
        ++count;
    }
    int frames() {
        const std::lock_guard lock(mutex);
        return count;
    }
    QImage picture() {
        const std::lock_guard lock(mutex);
        return followed;
    }
    /// Whether every difference was told so far.
    bool isAllTold() {
        const std::lock_guard lock(mutex);
        return isTold;
    }
    /// The screen, once it shows the colour at a place: a compositor takes its time.
    QImage shown(QPoint place, quint32 colour) {
        EXPECT_TRUE(
            eventually([&] { return (client.screen(QRect(place, QSize(1, 1))).pixel(0, 0) & 0xffffffU) == colour; }));
        return client.screen(area);
    }
    quint32 seenAt(int x, int y) { return picture().pixel(x, y) & 0xffffffU; }
    bool comesToBe(const QImage &expected, std::chrono::milliseconds longest = 10s) {
        return eventually([&] { return describe(picture(), expected).empty(); }, longest);
    }

    /// Of a screen that `xrandr` knows.
    static bool xrandr(const QStringList &arguments) {
        QProcess program;
        program.setStandardErrorFile(QProcess::nullDevice());
        program.start(QStringLiteral("xrandr"), arguments);
        return program.waitForFinished() && program.exitCode() == 0;
    }

    ScreenClient client;
    quint32 board = 0;
    PluginLoader<ScreenStreams> plugin{QStringLiteral("screen_stream")};
    std::optional<QString> ended;
    std::mutex mutex;
    QImage followed;
    int count = 0;
    bool isTold = true;
};

} // namespace tavrine::test
