#include "ScreenPictures.h"
#include "adapters/linux/ReaderProcess.h"

#include <QElapsedTimer>
#include <QGuiApplication>
#include <QProcess>
#include <QTemporaryDir>

#include <algorithm>
#include <array>
#include <cstdio>

using namespace tavrine;
using namespace tavrine::bench;

namespace {

/// One reader on one kind of text.
struct Sum {
    Score score;
    double milliseconds = 0;
    double slowest = 0;
    int pictures = 0;

    void add(const Score &one, double took) {
        score.characters += one.characters;
        score.errors += one.errors;
        milliseconds += took;
        slowest = std::max(slowest, took);
        ++pictures;
    }
    void print(const char *what) const {
        std::printf("| %s | %.3f %% | %lld of %lld | %.0f (%.0f at worst) |\n", what, 100 * score.accuracy(),
                    static_cast<long long>(score.errors), static_cast<long long>(score.characters),
                    milliseconds / std::max(1, pictures), slowest);
    }
};

/// The command with nothing but the picture, and one thread, as ours has. Its start and the file's writing by us stay
/// out of and in the time, respectively: whoever runs it pays its start.
QStringList linesOfCommand(const QString &file, double &took) {
    QProcess command;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("OMP_THREAD_LIMIT"), QStringLiteral("1"));
    command.setProcessEnvironment(environment);
    QElapsedTimer timer;
    timer.start();
    command.start(QStringLiteral("tesseract"), {file, QStringLiteral("-")});
    if (!command.waitForFinished(120'000) || command.exitCode() != 0)
        qFatal("the tesseract command does not run");
    took = static_cast<double>(timer.nsecsElapsed()) / 1e6;
    return QString::fromUtf8(command.readAllStandardOutput()).split(QLatin1Char('\n'));
}

QStringList linesOfOurs(Recognizer &recognizer, const QImage &image, double &took) {
    QElapsedTimer timer;
    timer.start();
    const auto result = recognizer.recognize(image);
    took = static_cast<double>(timer.nsecsElapsed()) / 1e6;
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
    std::printf("| Picture | Ours | ms | tesseract | ms |\n|---|---|---|---|---|\n");
    for (const ScreenPicture &picture : screenPictures(QStringLiteral(TAVRINE_RECOGNITION_TEXTS))) {
        double ourTime = 0;
        double commandTime = 0;
        const Score ourScore = score(picture.lines, linesOfOurs(recognizer, picture.image, ourTime));
        const QString file = folder.filePath(QStringLiteral("picture.png"));
        picture.image.save(file);
        const Score commandScore = score(picture.lines, linesOfCommand(file, commandTime));
        const size_t kind = picture.isCode ? 1 : 0;
        ours[kind].add(ourScore, ourTime);
        command[kind].add(commandScore, commandTime);
        std::printf("| %s | %.2f %% | %.0f | %.2f %% | %.0f |\n", qPrintable(picture.name), 100 * ourScore.accuracy(),
                    ourTime, 100 * commandScore.accuracy(), commandTime);
        std::fflush(stdout);
    }
    std::printf("\n| What | Right | Errors | ms a picture |\n|---|---|---|---|\n");
    ours[0].print("prose, ours");
    command[0].print("prose, tesseract");
    ours[1].print("code, ours");
    command[1].print("code, tesseract");
    return 0;
}
