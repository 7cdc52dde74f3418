#include "adapters/linux/ThumbnailReader.h"

#include "adapters/linux/ImageFormats.h"
#include "adapters/linux/PlainFile.h"
#include "ports/ImageCoder.h"

#include <QFile>
#include <QImageReader>
#include <QObject>

#include <csignal>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

#include <pthread.h>
#include <sys/stat.h>

namespace tavrine {
namespace {

/// Of more that wait, the oldest are forgotten: nobody can have looked at so many.
constexpr std::size_t maxWaiting = 256;

struct Request {
    std::function<void(const QImage &)> handler;
};

struct Job {
    QString path;
    int pixels;
    std::weak_ptr<Request> request;
};

/// The toolkit's name of the format, told by a file's first bytes; empty for all that is not looked into. Asked
/// to find out by itself the toolkit would load every format that it knows.
QByteArray formatOf(const QByteArray &head) {
    if (head.startsWith("\x89PNG"))
        return "png";
    if (head.startsWith("\xFF\xD8\xFF"))
        return "jpeg";
    if (head.startsWith("GIF8"))
        return "gif";
    if (head.startsWith("RIFF") && head.mid(8, 4) == "WEBP")
        return "webp";
    if (head.startsWith("BM"))
        return "bmp";
    if (head.startsWith(QByteArray("II*\0", 4)) || head.startsWith(QByteArray("MM\0*", 4)))
        return "tiff";
    return head.mid(4, 4) == "ftyp" ? "heic" : QByteArray();
}

bool isWithinLimits(const QSize &size, const QByteArray &format) {
    // JPEG alone is made small while it is decoded.
    const qint64 most = format == "jpeg" ? maxImagePixels : ThumbnailReader::maxPixels;
    return !size.isEmpty() && qint64{size.width()} * size.height() <= most;
}

} // namespace

std::optional<QImage> thumbnailOf(const QString &path, int pixels) {
    PlainFile plain = openPlainFile(path);
    struct stat status {};
    if (!plain.file.isOpen() || ::fstat(plain.file.number(), &status) != 0)
        return std::nullopt;
    // The kernel's own files say that they are plain and empty, and a read may wait for news.
    if (status.st_size <= 0 || status.st_size > ThumbnailReader::maxBytes)
        return std::nullopt;
    prepareImageFormatOf(QStringLiteral("/proc/self/fd/%1").arg(plain.file.number()));
    QFile file;
    if (!file.open(plain.file.release(), QIODevice::ReadOnly, QFileDevice::AutoCloseHandle))
        return std::nullopt;
    const QByteArray format = formatOf(file.peek(16));
    if (format.isEmpty())
        return std::nullopt;
    QImageReader reader(&file, format);
    reader.setAutoDetectImageFormat(false);
    reader.setAutoTransform(true);
    const QSize size = reader.size();
    if (!isWithinLimits(size, format))
        return std::nullopt;
    if (std::max(size.width(), size.height()) > pixels)
        reader.setScaledSize(size.scaled(pixels, pixels, Qt::KeepAspectRatio).expandedTo(QSize(1, 1)));
    QImage image = reader.read();
    return image.isNull() ? std::nullopt : std::optional(std::move(image));
}

struct ThumbnailReader::State {
    /// The newest that somebody still wants; without one the thread ends.
    [[nodiscard]] std::optional<Job> next() {
        const std::lock_guard lock(mutex);
        while (!waiting.empty()) {
            Job job = std::move(waiting.back());
            waiting.pop_back();
            if (!job.request.expired())
                return job;
        }
        --reads;
        return std::nullopt;
    }
    void deliver(const Job &job, const QImage &image) {
        const std::lock_guard lock(mutex);
        if (!receiver)
            return;
        QMetaObject::invokeMethod(
            receiver,
            [weak = job.request, image] {
                if (const auto request = weak.lock())
                    request->handler(image);
            },
            Qt::QueuedConnection);
    }

    std::mutex mutex;
    std::vector<Job> waiting;
    int reads = 0;
    QObject *receiver = nullptr; ///< on the main thread; none once the reader has gone
};

ThumbnailReader::ThumbnailReader() : m_state(std::make_shared<State>()) {
    m_state->receiver = new QObject;
}

ThumbnailReader::~ThumbnailReader() {
    const std::lock_guard lock(m_state->mutex);
    delete std::exchange(m_state->receiver, nullptr);
    m_state->waiting.clear();
}

FileIcons::Token ThumbnailReader::read(const QString &path, int pixels, std::function<void(const QImage &)> handler) {
    auto request = std::make_shared<Request>(Request{std::move(handler)});
    {
        const std::lock_guard lock(m_state->mutex);
        if (m_state->waiting.size() >= maxWaiting)
            m_state->waiting.erase(m_state->waiting.begin());
        m_state->waiting.push_back({path, std::clamp(pixels, 1, 1024), request});
        if (m_state->reads == maxReads)
            return request;
        ++m_state->reads;
    }
    std::thread([state = m_state] {
        sigset_t all; // signals are the main thread's
        ::sigfillset(&all);
        ::pthread_sigmask(SIG_BLOCK, &all, nullptr);
        while (const auto job = state->next())
            if (const auto image = thumbnailOf(job->path, job->pixels))
                state->deliver(*job, *image);
    }).detach();
    return request;
}

} // namespace tavrine
