// live_recording_bench FILE SECONDS: streams the whole screen into a movie as the program does; prints the CPU seconds
// a second of stream and recorder, the frames that were taken, those that were refused, and the length from the first
// to the last. Started by bench/recording on a display of its own, on which another program paints.
#include "adapters/linux/PluginLoader.h"
#include "adapters/linux/RecorderProcess.h"

#include <QGuiApplication>
#include <QScreen>
#include <QTimer>

#include <atomic>
#include <cstdio>

#include <sys/resource.h>

using namespace tavrine;
using namespace std::chrono_literals;

namespace {

double secondsOf(int who) {
    rusage usage{};
    ::getrusage(who, &usage);
    const auto seconds = [](const timeval &time) { return double(time.tv_sec) + double(time.tv_usec) / 1e6; };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

} // namespace

int main(int count, char **arguments) {
    QGuiApplication application(count, arguments);
    if (count != 3)
        return 2;
    const int seconds = std::atoi(arguments[2]);
    const QScreen &screen = *QGuiApplication::primaryScreen();
    const QSize size = screen.geometry().size();
    RecorderProcesses recorders(QCoreApplication::applicationDirPath());
    auto made = recorders.makeWriter(QString::fromLocal8Bit(arguments[1]));
    auto *const writer = std::get_if<std::unique_ptr<MovieWriter>>(&made);
    if (!writer ||
        !(*writer)->addVideoInput({.width = size.width(),
                                   .height = size.height(),
                                   .averageBitRate = std::min(size.width() * size.height() * 6, 30'000'000)}))
        return 1;
    PluginLoader<ScreenStreams> plugin(QGuiApplication::platformName() == QLatin1String("wayland")
                                           ? QStringLiteral("wayland_screen_stream")
                                           : QStringLiteral("screen_stream"));
    ScreenStreamConfiguration configuration;
    configuration.sourceRect = QRectF(QPointF(), size);
    configuration.width = size.width();
    configuration.height = size.height();
    std::atomic<int> given = 0;
    std::atomic<int> refused = 0;
    std::atomic<std::int64_t> first = -1;
    std::atomic<std::int64_t> last = 0;
    const auto stream = plugin.port()->makeStream({static_cast<quint32>(qHash(screen.name())), {}}, configuration,
                                                  {[&](const ScreenSample &sample) {
                                                       last = sample.presentationTime.count();
                                                       if (first < 0) {
                                                           first = last.load();
                                                           if (!(*writer)->startWriting())
                                                               return;
                                                           (*writer)->startSessionAtSourceTime(sample.presentationTime);
                                                       }
                                                       const bool isTaken = (*writer)->isVideoReadyForMoreMediaData() &&
                                                                            (*writer)->appendVideo(sample);
                                                       ++(isTaken ? given : refused);
                                                   },
                                                   {}});
    const double before = secondsOf(RUSAGE_SELF);
    stream->startCapture([](const std::optional<QString> &) {});
    QTimer::singleShot(seconds * 1000, &application, [&] {
        stream->stopCapture([&](const std::optional<QString> &) {
            (*writer)->finishWriting(MediaTime(last.load()) + 16ms, [&] {
                QMetaObject::invokeMethod(&application,
                                          [&] { QTimer::singleShot(300, &application, &QGuiApplication::quit); });
            });
        });
    });
    QGuiApplication::exec();
    const double used = secondsOf(RUSAGE_SELF) - before + secondsOf(RUSAGE_CHILDREN);
    std::printf("%.3f %d %d %.3f\n", used / seconds, given.load(), refused.load(), double(last - first) / 1e9);
    return (*writer)->status() == MovieWriterStatus::completed ? 0 : 1;
}
