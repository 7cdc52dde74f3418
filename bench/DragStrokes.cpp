// How often a watcher of drags is right: strokes of each kind over programs of each toolkit, so many of each.
//
//     tests/desktop/with-desktop build/bin/drag_strokes COUNT PROGRAM…
//
// PROGRAM is gtk3, gtk4, qt5, qt6, files (a file manager) or chromium, or rest for what watching costs. Prints a line
// for each kind: strokes, drags that the program began (it is not always done with the one before; selected text is
// dragged by the next stroke; -1 where it does not say), drags that were counted, openings, and the time from the first
// motion to the opening.

#include "adapters/x11/DragStrokes.h"

#include "adapters/x11/X11Screens.h"

#include <QDir>
#include <QGuiApplication>
#include <QTemporaryDir>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <ctime>

namespace tavrine::test {
namespace {

using namespace std::chrono_literals;

struct Kind {
    const char *name;
    QPoint from;
    QPoint to;
    bool isOpeningExpected;
};

void measure(Opener &opener, const char *program, const std::vector<Kind> &kinds, int count,
             DragProgram *teller = nullptr) {
    for (const Kind &kind : kinds) {
        std::vector<double> times;
        int drags = 0;
        for (int i = 0; i < count; ++i) {
            // There and back, so that a title bar comes back to its place.
            const bool isBack = i % 2 == 1 && !kind.isOpeningExpected;
            const auto result =
                opener.stroke(isBack ? kind.to : kind.from, isBack ? kind.from : kind.to, kind.isOpeningExpected, 14);
            drags += result.drags;
            if (result.isOpened)
                times.push_back(result.milliseconds);
        }
        letPass(100ms);
        const int begun = teller ? teller->takeBegun() : -1;
        std::sort(times.begin(), times.end());
        const auto at = [&](double part) {
            return times.empty() ? 0.0 : times[static_cast<size_t>(part * static_cast<double>(times.size() - 1))];
        };
        std::printf(
            "%-9s %-10s strokes %5d  begun %5d  counted %5d  opened %5zu  ms median %.1f  99 %% %.1f  most %.1f\n",
            program, kind.name, count, begun, drags, times.size(), at(0.5), at(0.99), at(1));
        std::fflush(stdout);
    }
}

std::vector<Kind> kindsOf(const DragProgram &program) {
    const auto stroke = [&](const char *name, DragProgram::Field field, bool isOpeningExpected) {
        const QPoint middle = program.middleOf(field);
        return Kind{name, middle - QPoint(60, 0), middle + QPoint(90, -20), isOpeningExpected};
    };
    return {stroke("file", DragProgram::file, true),
            stroke("text", DragProgram::text, false),
            stroke("link", DragProgram::link, false),
            stroke("selection", DragProgram::line, false),
            stroke("slider", DragProgram::slider, false),
            {"title bar", program.titleBar(), program.titleBar() + QPoint(40, 0), false},
            {"desktop", {20, 700}, {200, 740}, false},
            stroke("file", DragProgram::file, true)};
}

void measureFileManager(Opener &opener, int count) {
    const QTemporaryDir folder;
    const QString shown = folder.filePath(QStringLiteral("dragged-files"));
    QDir().mkpath(shown);
    QFile file(shown + QStringLiteral("/a.txt"));
    if (!file.open(QIODevice::WriteOnly))
        return;
    QProcess manager;
    manager.start(QStringLiteral("pcmanfm"), {QStringLiteral("-n"), shown});
    const QRect frame = DragProgram::frameOf(QStringLiteral("dragged-files"));
    letPass(2s);
    const QPoint icon = frame.topLeft() + QPoint(215, 85);
    const QPoint empty = frame.topLeft() + QPoint(400, 200);
    measure(opener, "pcmanfm",
            {{"file", icon, frame.topLeft() - QPoint(80, 60), true}, {"lasso", empty, empty + QPoint(150, 100), false}},
            count);
    manager.kill();
    manager.waitForFinished();
}

void measureBrowser(Opener &opener, int count) {
    const QTemporaryDir folder;
    QProcess browser;
    browser.setStandardErrorFile(QProcess::nullDevice());
    browser.start(
        QStringLiteral("chromium"),
        {QStringLiteral("--no-sandbox"), QStringLiteral("--disable-gpu"), QStringLiteral("--no-first-run"),
         QStringLiteral("--test-type"), QStringLiteral("--password-store=basic"),
         QStringLiteral("--user-data-dir=") + folder.path(), QStringLiteral("--window-size=500,500"),
         QStringLiteral(
             "--app=data:text/html,<title>Chromium drags</title><body style='margin:0'>"
             "<a href='https://example.org/' style='display:block;height:120px;background:silver'>a link</a>"
             "<img style='display:block;width:500px;height:120px' src=\"data:image/svg+xml,<svg "
             "xmlns='http://www.w3.org/2000/svg' width='50' height='12'><rect width='50' height='12'/></svg>\">"
             "<p style='margin:0;font:40px monospace'>words and words and words and words and words</p></body>")});
    const QRect frame = DragProgram::frameOf(QStringLiteral("Chromium drags"));
    letPass(3s);
    const auto at = [&](int y) { return frame.topLeft() + QPoint(60, y); };
    measure(
        opener, "chromium",
        {{"link", at(20), at(80), false}, {"picture", at(160), at(220), false}, {"selection", at(260), at(300), false}},
        count);
    browser.kill();
    browser.waitForFinished();
}

double cpuMilliseconds() {
    timespec spent{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &spent);
    return static_cast<double>(spent.tv_sec) * 1e3 + static_cast<double>(spent.tv_nsec) / 1e6;
}

double residentKilobytes() {
    QFile file(QStringLiteral("/proc/self/statm"));
    return file.open(QIODevice::ReadOnly) ? file.readAll().split(' ').value(1).toDouble() * 4 : 0;
}

void runFor(std::chrono::milliseconds length) {
    QTimer::singleShot(length, qApp, [] { QCoreApplication::exit(); });
    QCoreApplication::exec();
}

/// What watching costs: at rest, with the poll of the shelf beside it, and for each motion.
void measureRest() {
    runFor(500ms);
    const double memory = residentKilobytes();
    const auto pasteboard = X11DragPasteboards().watch();
    runFor(500ms);
    std::printf("memory of the drag pasteboard: %.0f KB\n", residentKilobytes() - memory);
    double before = cpuMilliseconds();
    runFor(30s);
    std::printf("drag pasteboard, 30 s at rest: %.2f ms CPU\n", cpuMilliseconds() - before);
    X11EventMonitors monitors;
    int told = 0;
    const auto monitor =
        monitors.addGlobalMonitor(eventMask::mouseMoved | eventMask::leftMouseDragged | eventMask::leftMouseUp,
                                  [&](const InputEvent &) { ++told; });
    X11Screens screens;
    QTimer poll;
    poll.setTimerType(Qt::PreciseTimer);
    poll.callOnTimeout([&] { static_cast<void>(screens.pointer()); });
    poll.start(50ms);
    runFor(500ms);
    before = cpuMilliseconds();
    runFor(30s);
    std::printf("with monitors and a poll of 50 ms, 30 s at rest: %.2f ms CPU\n", cpuMilliseconds() - before);
    poll.stop();
    QProcess mover; // another process, so that its own work does not count
    before = cpuMilliseconds();
    mover.start(QStringLiteral("sh"),
                {QStringLiteral("-c"), QStringLiteral("for i in $(seq 500); do echo mousemove_relative 1 0 sleep 0.001 "
                                                      "mousemove_relative -- -1 0 sleep 0.001; done | xdotool -")});
    while (mover.state() != QProcess::NotRunning)
        runFor(100ms);
    std::printf("1000 motions: %.1f us each, told %d times\n", (cpuMilliseconds() - before), told);
}

} // namespace
} // namespace tavrine::test

int main(int argc, char **argv) {
    using namespace tavrine::test;
    const QGuiApplication application(argc, argv);
    const int count = argc > 1 ? QByteArray(argv[1]).toInt() : 10;
    for (int i = 2; i < argc; ++i) {
        const QByteArray name = argv[i];
        if (name == "rest") {
            measureRest();
            continue;
        }
        Opener opener;
        if (name == "files") {
            measureFileManager(opener, count);
        } else if (name == "chromium") {
            measureBrowser(opener, count);
        } else {
            const QString title = QString::fromUtf8(name).toUpper().replace(QStringLiteral("QT"), QStringLiteral("Qt"));
            const QString command = name == "qt6"
                                        ? QStringLiteral(QT_DRAGGER)
                                        : QStringLiteral(DRAG_CLIENTS "/%1-dragger").arg(QString::fromUtf8(name));
            DragProgram program(command, title.chopped(1) + u' ' + title.back() + QStringLiteral(" drags"));
            letPass(std::chrono::milliseconds(300));
            measure(opener, name.constData(), kindsOf(program), count, &program);
        }
    }
    return 0;
}
