#include "adapters/linux/ReaderProcess.h"

#include "adapters/linux/ReaderProtocol.h"
#include "base/ErrorText.h"

#include <QDeadlineTimer>
#include <QFile>

#include <array>
#include <cerrno>
#include <csignal>
#include <iterator>
#include <string>
#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/eventfd.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tavrine {
namespace {

constexpr qsizetype longestAnswer = 16 * 1024 * 1024;
constexpr QLatin1String readerProgram("/TavrineReader");

bool writeAll(int file, const void *bytes, size_t size) {
    const auto *next = static_cast<const char *>(bytes);
    while (size > 0) {
        const ssize_t written = ::write(file, next, size);
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return false;
        next += written;
        size -= static_cast<size_t>(written);
    }
    return true;
}

/// In memory, at its beginning again.
bool writePicture(int file, const QImage &image) {
    const readerProtocol::Header header{.width = static_cast<quint32>(image.width()),
                                        .height = static_cast<quint32>(image.height()),
                                        .bytesPerLine = static_cast<quint32>(image.bytesPerLine()),
                                        .hasAlpha = image.hasAlphaChannel() ? 1U : 0U};
    return writeAll(file, &header, sizeof(header)) &&
           writeAll(file, image.constBits(), static_cast<size_t>(image.sizeInBytes())) && lseek(file, 0, SEEK_SET) == 0;
}

/// Our environment, and one thread for the library's loops: it reads this while it is being loaded, and with more of
/// them a page takes ten times as long on a busy machine.
std::vector<char *> environmentOfReader(std::string &limit) {
    static constexpr std::string_view name = "OMP_THREAD_LIMIT=";
    std::vector<char *> result;
    for (char **entry = environ; *entry; ++entry)
        if (std::string_view(*entry).substr(0, name.size()) != name)
            result.push_back(*entry);
    limit = "OMP_THREAD_LIMIT=1";
    result.push_back(limit.data());
    result.push_back(nullptr);
    return result;
}

pid_t start(const QString &path, const QString &plugin, int input, int output) {
    posix_spawn_file_actions_t actions{};
    posix_spawnattr_t attributes{};
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, input, STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    posix_spawn_file_actions_addclosefrom_np(&actions, STDERR_FILENO + 1);
    posix_spawnattr_init(&attributes);
    sigset_t none;
    sigset_t all;
    sigemptyset(&none);
    sigfillset(&all);
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setsigdefault(&attributes, &all); // we ignore SIGPIPE, and the reader should not
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    QByteArray file = QFile::encodeName(path);
    QByteArray argument = QFile::encodeName(plugin);
    char *arguments[] = {file.data(), argument.data(), nullptr};
    std::string limit;
    pid_t pid = 0;
    const int error =
        posix_spawn(&pid, file.constData(), &actions, &attributes, arguments, environmentOfReader(limit).data());
    posix_spawn_file_actions_destroy(&actions);
    posix_spawnattr_destroy(&attributes);
    errno = error;
    return error == 0 ? pid : -1;
}

/// What comes until the other side closes; false when it takes too long or is too much, or nobody wants it any more.
bool readAll(int file, const std::array<int, 2> &unwanted, const QDeadlineTimer &deadline, QByteArray &answer) {
    char buffer[65536];
    for (;;) {
        pollfd waiting[] = {{file, POLLIN, 0}, {unwanted[0], POLLIN, 0}, {unwanted[1], POLLIN, 0}};
        const int ready = poll(waiting, std::size(waiting), static_cast<int>(deadline.remainingTime()));
        if (ready < 0 && errno == EINTR)
            continue;
        if (ready <= 0 || waiting[1].revents != 0 || waiting[2].revents != 0)
            return false;
        const ssize_t count = ::read(file, buffer, sizeof(buffer));
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return count == 0;
        answer.append(buffer, count);
        if (answer.size() > longestAnswer)
            return false;
    }
}

int waitFor(pid_t pid) {
    int status = 0;
    while (waitpid(pid, &status, 0) < 0)
        if (errno != EINTR)
            return -1;
    return status;
}

} // namespace

ReaderProcess::ReaderProcess(QString program, QString plugin, std::chrono::milliseconds longest)
    : m_program(std::move(program)), m_plugin(std::move(plugin)), m_longest(longest),
      m_cancelled(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

void ReaderProcess::cancel() {
    eventfd_write(m_cancelled.number(), 1); // never read, so it holds for all that come
}

std::variant<ReaderProcess::Failure, QByteArray> ReaderProcess::read(const QImage &image, std::stop_token stop) const {
    const QImage picture = readerProtocol::transferable(image);
    if (picture.isNull())
        return Failure{QStringLiteral("the picture has no pixels, or memory is wanting")};
    const Descriptor input(memfd_create("picture", MFD_CLOEXEC));
    int ends[2] = {-1, -1};
    const int piped = pipe2(ends, O_CLOEXEC);
    const Descriptor answerEnd(ends[0]);
    Descriptor output(ends[1]);
    if (!input.isOpen() || piped != 0 || !writePicture(input.number(), picture))
        return Failure{QString::fromLocal8Bit(errorText(errno))};
    const Descriptor stopped(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    const std::stop_callback tellIt(std::move(stop), [&stopped] { eventfd_write(stopped.number(), 1); });
    const QDeadlineTimer deadline(m_longest);
    const pid_t pid = start(m_program, m_plugin, input.number(), output.number());
    if (pid < 0)
        return Failure{QString::fromLocal8Bit(errorText(errno))};
    output.close(); // ours; the answer ends when the reader's is closed too
    QByteArray answer;
    const bool isWhole = readAll(answerEnd.number(), {m_cancelled.number(), stopped.number()}, deadline, answer);
    if (!isWhole)
        kill(pid, SIGKILL);
    const int status = waitFor(pid);
    if (!isWhole)
        return Failure{QStringLiteral("the reader gave no answer in time")};
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0)
        return Failure{QStringLiteral("the reader ended with status %1").arg(status)};
    return answer;
}

ProcessRecognizer::ProcessRecognizer(const QString &programFolder, std::chrono::milliseconds patience)
    : m_reader(programFolder + readerProgram, QStringLiteral("text_recognizer"), patience) {}

Recognizer::Result ProcessRecognizer::recognize(const QImage &image, std::stop_token stop) {
    const auto answer = m_reader.read(image, std::move(stop));
    if (const auto *failure = std::get_if<ReaderProcess::Failure>(&answer))
        return Failure{failure->reason};
    const auto text = readerProtocol::textIn(std::get<QByteArray>(answer));
    return text ? *text : Failure{QStringLiteral("the reader's answer makes no sense")};
}

ProcessCodeDetector::ProcessCodeDetector(const QString &programFolder, const char *plugin,
                                         std::chrono::milliseconds patience)
    : m_reader(programFolder + readerProgram, QString::fromUtf8(plugin), patience) {}

CodeDetector::Result ProcessCodeDetector::detect(const QImage &image, std::stop_token stop) {
    const auto answer = m_reader.read(image, std::move(stop));
    if (const auto *failure = std::get_if<ReaderProcess::Failure>(&answer))
        return Failure{failure->reason};
    const auto codes = readerProtocol::codesIn(std::get<QByteArray>(answer));
    return codes ? *codes : Failure{QStringLiteral("the reader's answer makes no sense")};
}

} // namespace tavrine
