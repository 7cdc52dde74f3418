// Gives one line of figures about a stream of the screen: CPU seconds and wake-ups of its thread in a second, frames,
// and the milliseconds to the first one. Started by bench/screen-stream on a display of its own.
#include "adapters/linux/PluginLoader.h"
#include "ports/ScreenStream.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QGuiApplication>
#include <QScreen>
#include <QTimer>

#include <atomic>
#include <cstdio>

namespace {

struct ThreadFigures {
    double cpuSeconds = 0;
    long wakeUps = 0;
};

/// Of the thread with that name; zeros when there is none.
ThreadFigures figuresOf(const QByteArray &name) {
    ThreadFigures figures;
    for (const QString &thread : QDir(QStringLiteral("/proc/self/task")).entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        const auto read = [&](const char *what) {
            QFile file(QStringLiteral("/proc/self/task/%1/%2").arg(thread, QString::fromLatin1(what)));
            return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
        };
        if (read("comm").trimmed() != name)
            continue;
        figures.cpuSeconds = read("schedstat").split(' ').value(0).toDouble() / 1e9;
        for (const QByteArray &line : read("status").split('\n'))
            if (line.startsWith("voluntary_ctxt_switches:"))
                figures.wakeUps = line.mid(24).trimmed().toLong();
    }
    return figures;
}

} // namespace

int main(int argc, char **argv) {
    using namespace tavrine;
    QGuiApplication application(argc, argv);
    const int seconds = argc > 1 ? QByteArray(argv[1]).toInt() : 5;
    PluginLoader<ScreenStreams> plugin(QGuiApplication::platformName() == QLatin1String("wayland")
                                           ? QStringLiteral("wayland_screen_stream")
                                           : QStringLiteral("screen_stream"));
    const QScreen &screen = *QGuiApplication::primaryScreen();
    ScreenStreamConfiguration configuration;
    configuration.sourceRect = QRectF(QPointF(), screen.geometry().size());
    configuration.width = screen.geometry().width();
    configuration.height = screen.geometry().height();
    ScreenContentFilter filter{static_cast<quint32>(qHash(screen.name())), {}};
    if (argc > 2)
        filter.excludingWindows.append(QByteArray(argv[2]).toLongLong(nullptr, 0));
    std::atomic<int> frames = 0;
    std::atomic<qint64> first = 0;
    QElapsedTimer timer;
    const auto stream = plugin.port()->makeStream(filter, configuration,
                                                  {[&](const ScreenSample &) {
                                                       if (frames++ == 0)
                                                           first = timer.nsecsElapsed();
                                                   },
                                                   {}});
    timer.start();
    stream->startCapture([](const std::optional<QString> &error) {
        if (error)
            std::fprintf(stderr, "%s\n", qPrintable(*error));
    });
    ThreadFigures before;
    int framesBefore = 0;
    QTimer::singleShot(1000, &application, [&] {
        before = figuresOf("screenStream");
        framesBefore = frames;
        timer.start();
    });
    QTimer::singleShot(1000 + seconds * 1000, &application, [&] {
        const double length = static_cast<double>(timer.nsecsElapsed()) / 1e9;
        const ThreadFigures after = figuresOf("screenStream");
        std::printf("%.4f CPU s/s  %6.1f wake-ups/s  %5.1f frames/s  first frame after %.1f ms\n",
                    (after.cpuSeconds - before.cpuSeconds) / length,
                    static_cast<double>(after.wakeUps - before.wakeUps) / length, (frames - framesBefore) / length,
                    static_cast<double>(first) / 1e6);
        QGuiApplication::quit();
    });
    return QGuiApplication::exec();
}
