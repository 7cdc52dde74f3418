#include "adapters/linux/PluginLoader.h"
#include "adapters/linux/ReaderProtocol.h"
#include "walls/LockDown.h"

#include <QCoreApplication>
#include <QThreadPool>

#include <cerrno>
#include <cstdlib>

#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>

using namespace tavrine;

namespace {

/// Nobody waits longer than this; whoever started us may be gone.
constexpr rlim_t longestSeconds = 120;
/// Beyond the libraries and their data. The largest picture that is transferred has 2 GiB, and is looked at in grey.
constexpr std::size_t mostMemory = std::size_t(4) << 30;

/// Large pictures are shared out when they are converted; each thread has a descriptor of the few there are.
constexpr int mostThreads = 4;

/// The picture stays mapped until the process ends.
QImage pictureOnInput() {
    const off_t size = lseek(STDIN_FILENO, 0, SEEK_END);
    if (size <= 0)
        return {};
    void *bytes = mmap(nullptr, static_cast<size_t>(size), PROT_READ, MAP_PRIVATE, STDIN_FILENO, 0);
    if (bytes == MAP_FAILED)
        return {};
    return readerProtocol::pictureIn(static_cast<const uchar *>(bytes), size);
}

/// Straight to the descriptor: the C library would ask what it leads to.
bool write(const QByteArray &answer) {
    qsizetype written = 0;
    while (written < answer.size()) {
        const ssize_t count =
            ::write(STDOUT_FILENO, answer.constData() + written, static_cast<size_t>(answer.size() - written));
        if (count < 0 && errno != EINTR)
            return false;
        written += count > 0 ? count : 0;
    }
    return true;
}

/// What `reader` finds, as a record. It loads what it needs, and then this process keeps nothing but memory, time and
/// its two pipes; only after that is the picture looked at.
template <class Reader, class Read>
QByteArray answerOf(Reader &reader, Read read) {
    reader.prepare();
    QThreadPool::globalInstance()->setMaxThreadCount(mostThreads);
    const LockDownError error = lockComputingProcess(mostMemory, Threads::several);
    if (error)
        return readerProtocol::answerOf(
            typename Reader::Failure{QStringLiteral("the reader is not locked in: ") + QString::fromStdString(*error)});
    const QImage picture = pictureOnInput();
    return picture.isNull() ? QByteArray() : readerProtocol::answerOf(read(picture));
}

} // namespace

/// TavrineReader PLUGIN: reads the picture on its standard input with one plugin, tells what it found on standard
/// output and ends. Status 0 with an answer, 1 without one.
int main(int argc, char **argv) {
    const rlimit seconds{longestSeconds, longestSeconds};
    setrlimit(RLIMIT_CPU, &seconds);
    QCoreApplication application(argc, argv); // the plugins are found from its folder
    QObject *plugin = argc == 2 ? loadPlugin(QString::fromLocal8Bit(argv[1])) : nullptr;
    QByteArray answer;
    if (auto *recognizer = qobject_cast<Recognizer *>(plugin))
        answer = answerOf(*recognizer, [&](const QImage &picture) { return recognizer->recognize(picture); });
    else if (auto *detector = qobject_cast<CodeDetector *>(plugin))
        answer = answerOf(*detector, [&](const QImage &picture) { return detector->detect(picture); });
    // Tearing the libraries down would only take time.
    std::_Exit(!answer.isEmpty() && write(answer) ? EXIT_SUCCESS : EXIT_FAILURE);
}
