#include "adapters/linux/PluginLoader.h"
#include "adapters/linux/ReaderProtocol.h"

#include <QCoreApplication>

#include <cstdio>
#include <cstdlib>

#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace tavrine;

namespace {

/// Nobody waits longer than this; whoever started us may be gone.
constexpr rlim_t longestSeconds = 120;
constexpr rlim_t mostMemory = rlim_t(4) << 30;

void limitOurselves() {
    const rlimit seconds{longestSeconds, longestSeconds};
    const rlimit memory{mostMemory, mostMemory};
    const rlimit noCore{0, 0};
    setrlimit(RLIMIT_CPU, &seconds);
    setrlimit(RLIMIT_AS, &memory);
    setrlimit(RLIMIT_CORE, &noCore);
}

/// The picture stays mapped until the process ends.
QImage pictureOnInput() {
    struct stat info {};
    if (fstat(STDIN_FILENO, &info) != 0 || info.st_size <= 0)
        return {};
    void *bytes = mmap(nullptr, static_cast<size_t>(info.st_size), PROT_READ, MAP_PRIVATE, STDIN_FILENO, 0);
    if (bytes == MAP_FAILED)
        return {};
    return readerProtocol::pictureIn(static_cast<const uchar *>(bytes), info.st_size);
}

} // namespace

/// TavrineReader PLUGIN: reads the picture on its standard input with one plugin, tells what it found on standard
/// output and ends. Status 0 with an answer, 1 without one.
int main(int argc, char **argv) {
    limitOurselves();
    QCoreApplication application(argc, argv); // the plugins are found from its folder
    const QImage picture = pictureOnInput();
    if (argc != 2 || picture.isNull())
        return EXIT_FAILURE;
    QObject *plugin = loadPlugin(QString::fromLocal8Bit(argv[1]));
    QByteArray answer;
    if (auto *recognizer = qobject_cast<Recognizer *>(plugin))
        answer = readerProtocol::answerOf(recognizer->recognize(picture));
    else if (auto *detector = qobject_cast<CodeDetector *>(plugin))
        answer = readerProtocol::answerOf(detector->detect(picture));
    else
        return EXIT_FAILURE;
    const bool isWritten = std::fwrite(answer.constData(), 1, static_cast<size_t>(answer.size()), stdout) ==
                               static_cast<size_t>(answer.size()) &&
                           std::fflush(stdout) == 0;
    std::_Exit(isWritten ? EXIT_SUCCESS : EXIT_FAILURE); // tearing the libraries down would only take time
}
