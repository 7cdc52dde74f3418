// recording_bench pattern SECONDS: the pictures of a moving desktop at 1920x1080, 60 a second in real time, as bytes.
// recording_bench record FILE SECONDS: the same, recorded; prints the recorder's CPU seconds a second and what it left
// out. recording_bench finish FILE: ten minutes of them as quickly as they are taken; prints how long the end takes.
#include "adapters/linux/RecorderProcess.h"
#include "support/ScreenFrames.h"

#include <QGuiApplication>

#include <atomic>
#include <cstdio>
#include <thread>

#include <sys/resource.h>
#include <unistd.h>

using namespace tavrine;
using namespace std::chrono_literals;

namespace {

constexpr QSize size(1920, 1080);
constexpr int framesPerSecond = 60;
constexpr int bitRate = 1920 * 1080 * 6;

/// Bars that run, text that scrolls and a window that is dragged over a desktop.
class Pattern {
public:
    explicit Pattern(test::ScreenFrames &frames) : m_frames(frames) {}

    std::shared_ptr<const ScreenFrame> next() {
        const int i = m_number++;
        if (i == 0)
            return m_frames.next(QRect({}, size), [](QPainter &painter) { paint(painter, 0); });
        const QRect changed = bars().united(text()).united(window(i)).united(window(i - 1));
        auto frame = m_frames.next(changed, [i](QPainter &painter) { paint(painter, i); });
        auto exact = std::make_shared<ScreenFrame>(*frame);
        exact->changed = {bars(), text(), window(i).united(window(i - 1))};
        return std::shared_ptr<const ScreenFrame>(exact.get(), [exact, frame](const ScreenFrame *) {});
    }

private:
    static QRect bars() { return {60, 60, 700, 120}; }
    static QRect text() { return {60, 260, 700, 600}; }
    static QRect window(int i) { return {900 + i * 4 % 500, 150 + i * 2 % 400, 480, 320}; }

    static void paint(QPainter &painter, int i) {
        painter.fillRect(QRect({}, size), QColor(52, 73, 94));
        for (int x = 0; x < bars().width(); x += 20)
            painter.fillRect(bars().x() + x, bars().y(), 20, bars().height(),
                             QColor::fromHsv((x + i * 5) % 360, 180, 220));
        painter.fillRect(text(), Qt::white);
        painter.setPen(Qt::black);
        for (int line = -1; line < 31; ++line)
            painter.drawText(70, text().y() + line * 20 + 20 - i * 2 % 20,
                             QStringLiteral("line %1: the quick brown fox jumps over the lazy dog, again and again")
                                 .arg(line + i * 2 / 20));
        painter.fillRect(QRect(60, 240, 700, 20), QColor(52, 73, 94));
        painter.fillRect(QRect(60, 860, 700, 20), QColor(52, 73, 94));
        painter.fillRect(window(i), QColor(236, 240, 241));
        painter.fillRect(QRect(window(i).topLeft(), QSize(480, 28)), QColor(41, 128, 185));
        painter.drawText(window(i).adjusted(20, 50, 0, 0), QStringLiteral("A window that is dragged"));
    }

    test::ScreenFrames &m_frames;
    int m_number = 0;
};

double secondsOfChildren() {
    rusage usage{};
    ::getrusage(RUSAGE_CHILDREN, &usage);
    const auto seconds = [](const timeval &time) { return double(time.tv_sec) + double(time.tv_usec) / 1e6; };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

int writePattern(int seconds) {
    test::ScreenFrames frames(size, 1);
    Pattern pattern(frames);
    const auto begin = std::chrono::steady_clock::now();
    for (int i = 0; i < seconds * framesPerSecond; ++i) {
        static_cast<void>(pattern.next());
        const auto bytes = static_cast<std::size_t>(frames.picture().sizeInBytes());
        if (std::fwrite(frames.picture().constBits(), 1, bytes, stdout) != bytes)
            return 1;
        std::this_thread::sleep_until(begin + (i + 1) * 1s / framesPerSecond);
    }
    return 0;
}

std::unique_ptr<MovieWriter> begin(const char *path) {
    RecorderProcesses recorders(QCoreApplication::applicationDirPath());
    auto made = recorders.makeWriter(QString::fromLocal8Bit(path));
    auto *writer = std::get_if<std::unique_ptr<MovieWriter>>(&made);
    if (!writer ||
        !(*writer)->addVideoInput({.width = size.width(), .height = size.height(), .averageBitRate = bitRate}) ||
        !(*writer)->addAudioInput({}) || !(*writer)->startWriting())
        return nullptr;
    (*writer)->startSessionAtSourceTime(0s);
    return std::move(*writer);
}

/// Milliseconds.
double finish(MovieWriter &writer, MediaTime end) {
    const auto begun = std::chrono::steady_clock::now();
    std::atomic<bool> isDone = false;
    writer.finishWriting(end, [&] {
        isDone = true;
        isDone.notify_all();
    });
    isDone.wait(false);
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - begun).count();
}

int record(const char *path, int seconds) {
    test::ScreenFrames frames(size, 12);
    Pattern pattern(frames);
    auto writer = begin(path);
    if (!writer)
        return 1;
    const auto begun = std::chrono::steady_clock::now();
    int late = 0;
    for (int i = 0; i < seconds * framesPerSecond; ++i) {
        const MediaTime time = i * MediaTime(1s) / framesPerSecond;
        const auto frame = pattern.next();
        late += !writer->isVideoReadyForMoreMediaData();
        while (!writer->appendVideo({.status = 0, .presentationTime = time, .frame = frame}))
            std::this_thread::sleep_for(1ms);
        writer->appendAudio({.presentationTime = time, .data = QByteArray(735 * 8, '\0')});
        std::this_thread::sleep_until(begun + (i + 1) * 1s / framesPerSecond);
    }
    const double length = finish(*writer, MediaTime(1s) * seconds);
    std::this_thread::sleep_for(300ms); // it is reaped
    std::printf("%.3f %d %.1f\n", secondsOfChildren() / seconds, late, length);
    return writer->status() == MovieWriterStatus::completed ? 0 : 1;
}

int finishTenMinutes(const char *path) {
    test::ScreenFrames frames(size, 12);
    Pattern pattern(frames);
    std::vector<std::shared_ptr<const ScreenFrame>> some;
    for (int i = 0; i < 12; ++i)
        some.push_back(pattern.next());
    auto writer = begin(path);
    if (!writer)
        return 1;
    constexpr int count = 600 * framesPerSecond;
    for (int i = 0; i < count; ++i) {
        const MediaTime time = i * MediaTime(1s) / framesPerSecond + (i % 7) * 100us;
        auto frame = std::make_shared<ScreenFrame>(*some[std::size_t(i) % some.size()]);
        frame->number = std::uint64_t(i) + 1;
        if (i > 0)
            frame->changed = {QRect(900, 150, 200, 60)};
        while (!writer->appendVideo({.status = 0, .presentationTime = time, .frame = frame})) {
            if (writer->status() != MovieWriterStatus::writing)
                return 1;
            std::this_thread::sleep_for(1ms);
        }
        if (i % 60 == 0)
            writer->appendAudio({.presentationTime = time, .data = QByteArray(44'100 * 8, '\0')});
    }
    while (!writer->isVideoReadyForMoreMediaData())
        std::this_thread::sleep_for(1ms);
    std::this_thread::sleep_for(500ms); // a recording ends with nothing waiting
    std::printf("%.1f\n", finish(*writer, 600s));
    return writer->status() == MovieWriterStatus::completed ? 0 : 1;
}

} // namespace

int main(int count, char **arguments) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QGuiApplication application(count, arguments);
    const QByteArray what = count > 2 ? arguments[1] : "";
    if (what == "pattern")
        return writePattern(std::atoi(arguments[2]));
    if (what == "record" && count == 4)
        return record(arguments[2], std::atoi(arguments[3]));
    if (what == "finish")
        return finishTenMinutes(arguments[2]);
    return 2;
}
