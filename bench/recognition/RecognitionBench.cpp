#include "ScreenPictures.h"
#include "adapters/linux/ReaderProcess.h"

#include <QElapsedTimer>
#include <QGuiApplication>
#include <QProcess>
#include <QTemporaryDir>

#include <algorithm>
#include <array>
#include <cstdio>

#include <sys/resource.h>

using namespace tavrine;
using namespace tavrine::bench;

namespace {

/// Of all processes that ran for us and ended. On a machine that others use too, this is the time that counts.
double processorMilliseconds() {
    rusage usage{};
    getrusage(RUSAGE_CHILDREN, &usage);
    const auto milliseconds = [](const timeval &time) {
        return 1e3 * static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e3;
    };
    return milliseconds(usage.ru_utime) + milliseconds(usage.ru_stime);
}

/// Time that passed, and time that a processor worked, in milliseconds.
struct Cost {
    double passed = 0;
    double worked = 0;
};

class Stopwatch {
public:
    Stopwatch() { m_timer.start(); }
    [[nodiscard]] Cost cost() const {
        return {static_cast<double>(m_timer.nsecsElapsed()) / 1e6, processorMilliseconds() - m_worked};
    }

private:
    QElapsedTimer m_timer;
    double m_worked = processorMilliseconds();
};

/// One reader on one kind of text.
struct Sum {
    Score score;
    Cost all;
    Cost worst;
    int pictures = 0;

    void add(const Score &one, const Cost &cost) {
        score.characters += one.characters;
        score.errors += one.errors;
        all = {all.passed + cost.passed, all.worked + cost.worked};
        worst = {std::max(worst.passed, cost.passed), std::max(worst.worked, cost.worked)};
        ++pictures;
    }
    void print(const char *what) const {
        std::printf("| %s | %.3f %% | %lld of %lld | %.0f (%.0f) | %.0f (%.0f) |\n", what, 100 * score.accuracy(),
                    static_cast<long long>(score.errors), static_cast<long long>(score.characters),
                    all.worked / std::max(1, pictures), worst.worked, all.passed / std::max(1, pictures), worst.passed);
    }
};

/// The command with nothing but the picture, and one thread, as ours has. Its start counts, as that of our reader does.
QStringList linesOfCommand(const QString &file, Cost &cost) {
    QProcess command;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("OMP_THREAD_LIMIT"), QStringLiteral("1"));
    command.setProcessEnvironment(environment);
    const Stopwatch watch;
    command.start(QStringLiteral("tesseract"), {file, QStringLiteral("-")});
    if (!command.waitForFinished(120'000) || command.exitCode() != 0)
        qFatal("the tesseract command does not run");
    cost = watch.cost();
    return QString::fromUtf8(command.readAllStandardOutput()).split(QLatin1Char('\n'));
}

QStringList linesOfOurs(Recognizer &recognizer, const QImage &image, Cost &cost) {
    const Stopwatch watch;
    const auto result = recognizer.recognize(image);
    cost = watch.cost();
    if (const auto *failure = std::get_if<Recognizer::Failure>(&result))
        qFatal("%s", qPrintable(failure->reason));
    return std::get<QStringList>(result);
}

} // namespace

/// Reads each picture with our recogniser and with the command, in turn, and prints what either got right.
int main(int argc, char **argv) {
    QGuiApplication application(argc, argv);
    ProcessRecognizer recognizer(QCoreApplication::applicationDirPath());
    const QTemporaryDir folder;
    std::array<Sum, 2> ours;
    std::array<Sum, 2> command;
    std::printf("| Picture | Ours | CPU ms | tesseract | CPU ms |\n|---|---|---|---|---|\n");
    for (const ScreenPicture &picture : screenPictures(QStringLiteral(TAVRINE_RECOGNITION_TEXTS))) {
        Cost ourCost;
        Cost commandCost;
        const Score ourScore = score(picture.lines, linesOfOurs(recognizer, picture.image, ourCost));
        const QString file = folder.filePath(QStringLiteral("picture.png"));
        picture.image.save(file);
        const Score commandScore = score(picture.lines, linesOfCommand(file, commandCost));
        const size_t kind = picture.isCode ? 1 : 0;
        ours[kind].add(ourScore, ourCost);
        command[kind].add(commandScore, commandCost);
        std::printf("| %s | %.2f %% | %.0f | %.2f %% | %.0f |\n", qPrintable(picture.name), 100 * ourScore.accuracy(),
                    ourCost.worked, 100 * commandScore.accuracy(), commandCost.worked);
        std::fflush(stdout);
    }
    std::printf(
        "\n| What | Right | Errors | CPU ms a picture (worst) | ms a picture (worst) |\n|---|---|---|---|---|\n");
    ours[0].print("prose, ours");
    command[0].print("prose, tesseract");
    ours[1].print("code, ours");
    command[1].print("code, tesseract");
    return 0;
}
