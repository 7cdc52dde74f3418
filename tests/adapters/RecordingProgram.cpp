// recording_program FILE WIDTH HEIGHT: records a moving pattern with sound in real time until it is killed. Says
// "begun" with its first picture.
#include "adapters/linux/RecorderProcess.h"
#include "support/ScreenFrames.h"

#include <QCoreApplication>
#include <QTextStream>

#include <cstdio>
#include <thread>

using namespace tavrine;
using namespace std::chrono_literals;

int main(int count, char **arguments) {
    QCoreApplication application(count, arguments);
    if (count != 4)
        return 2;
    const QSize size(QString::fromLocal8Bit(arguments[2]).toInt(), QString::fromLocal8Bit(arguments[3]).toInt());
    RecorderProcesses recorders(QCoreApplication::applicationDirPath());
    auto made = recorders.makeWriter(QString::fromLocal8Bit(arguments[1]));
    auto *writer = std::get_if<std::unique_ptr<MovieWriter>>(&made);
    if (!writer ||
        !(*writer)->addVideoInput({.width = size.width(), .height = size.height(), .averageBitRate = 6'000'000}) ||
        !(*writer)->addAudioInput({}) || !(*writer)->startWriting())
        return 1;
    test::ScreenFrames frames(size, 12);
    const auto begin = std::chrono::steady_clock::now();
    const auto now = [begin] { return std::chrono::nanoseconds(std::chrono::steady_clock::now() - begin); };
    (*writer)->startSessionAtSourceTime(0s);
    for (int i = 0;; ++i) {
        const QRect changed(i * 5 % (size.width() - 120), i * 3 % (size.height() - 120), 120, 120);
        auto frame = frames.next(
            changed, [&](QPainter &painter) { painter.fillRect(changed, QColor::fromHsv(i % 360, 200, 200)); });
        (*writer)->appendVideo({.status = 0, .presentationTime = now(), .frame = std::move(frame)});
        (*writer)->appendAudio({.presentationTime = std::chrono::nanoseconds(i * 1s) / 60,
                                .data = QByteArray(735 * microphoneChannels * int(sizeof(float)), '\0')});
        if (i == 0) {
            std::puts("begun");
            std::fflush(stdout);
        }
        std::this_thread::sleep_until(begin + (i + 1) * 1s / 60);
    }
}
