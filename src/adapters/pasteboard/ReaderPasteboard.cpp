#include "adapters/pasteboard/ReaderPasteboard.h"

#include "adapters/pasteboard/PasteboardImage.h"

#include <mutex>

#include <malloc.h>

namespace tavrine {
namespace {

/// After so much was held, memory is given back to the system. Below that the allocator keeps it to good purpose.
constexpr qsizetype trimmedBytes = qsizetype{4} * 1024 * 1024;

qsizetype bytesOf(const std::shared_ptr<const ForeignContents> &contents) {
    qsizetype bytes = contents ? contents->text.size() : 0;
    for (qsizetype i = 0; contents && i < contents->images.size(); ++i)
        bytes += contents->images[i].size();
    return bytes;
}

/// Left to itself, the allocator learns from the first large block that is given back, and takes the next ones from the
/// heap of the thread that asks. The end of such a heap stays with the process: 28 of 40 MB, for good.
void keepLargeBlocksApart() {
    ::mallopt(M_MMAP_THRESHOLD, static_cast<int>(trimmedBytes));
}

} // namespace

struct ReaderPasteboard::Counter {
    std::mutex mutex;
    ReaderPasteboard *pasteboard; ///< null after its end
};

ReaderPasteboard::ReaderPasteboard(const SelectionLimits &limits, const MakeReader &makeReader)
    : m_limits(limits), m_counter(std::make_shared<Counter>()),
      m_files([maxBytes = limits.transferBytes](const QList<QByteArray> &paths) {
          return pasteboardImage::firstImageFile(paths, maxBytes);
      }) {
    m_counter->pasteboard = this;
    keepLargeBlocksApart();
    pasteboardImage::allowPixels(m_limits.imagePixels);
    m_reader = makeReader(m_files, [this](const Publication &publication) {
        QMetaObject::invokeMethod(
            &m_mainThread, [this, publication] { receive(publication); }, Qt::QueuedConnection);
    });
}

ReaderPasteboard::~ReaderPasteboard() {
    if (m_isClaimScheduled) // the last turn does not come to its end
        claim();
    m_reader.reset();
    const std::lock_guard lock(m_counter->mutex);
    m_counter->pasteboard = nullptr;
}

std::optional<QStringList> ReaderPasteboard::types() const {
    const auto *foreign = std::get_if<Foreign>(&m_contents);
    const QStringList types = !foreign   ? std::get<OwnContents>(m_contents).types()
                              : *foreign ? (*foreign)->types
                                         : QStringList();
    return types.isEmpty() ? std::nullopt : std::optional(types);
}

std::optional<QImage> ReaderPasteboard::image() const {
    return reading().image();
}

std::optional<QString> ReaderPasteboard::string() const {
    return reading().string();
}

QList<QByteArray> ReaderPasteboard::encodedImages() const {
    const auto *foreign = std::get_if<Foreign>(&m_contents);
    if (!foreign)
        return {m_ownImageFile};
    return *foreign ? (*foreign)->images : QList<QByteArray>();
}

Pasteboard::Reading ReaderPasteboard::reading() const {
    Reading reading;
    if (const auto *own = std::get_if<OwnContents>(&m_contents)) {
        const QString &text = own->text;
        reading.string = [text] { return text.isEmpty() ? std::nullopt : std::optional(text); };
        reading.isLarge = text.size() > Pasteboard::largeBytes ||
                          qint64{own->image.width()} * own->image.height() > Pasteboard::largePixels;
        if (!own->image.isNull()) {
            reading.image = [image = own->image] { return std::optional(image); };
            return reading;
        }
    } else {
        const Foreign foreign = std::get<Foreign>(m_contents);
        reading.string = [foreign] {
            return foreign ? selection::decodeText(foreign->text, foreign->encoding) : std::nullopt;
        };
        reading.isLarge = foreign && foreign->text.size() > Pasteboard::largeBytes;
    }
    const QList<QByteArray> images = encodedImages();
    for (const QByteArray &bytes : images)
        reading.isLarge = reading.isLarge || pasteboardImage::pixelCount(bytes) > Pasteboard::largePixels;
    reading.image = [images, maxPixels = m_limits.imagePixels]() -> std::optional<QImage> {
        for (const QByteArray &bytes : images) {
            if (auto image = pasteboardImage::decode(bytes, maxPixels))
                return image;
        }
        return std::nullopt;
    };
    return reading;
}

int ReaderPasteboard::clearContents() {
    m_contents = OwnContents{};
    scheduleClaim();
    m_writtenAt = std::chrono::steady_clock::now();
    return ++m_changeCount;
}

void ReaderPasteboard::setString(const QString &text) {
    if (OwnContents *own = ownContents())
        own->text = text;
}

void ReaderPasteboard::writeImage(const QImage &image) {
    if (OwnContents *own = ownContents())
        own->image = image;
}

void ReaderPasteboard::writeFileUrls(const QList<QUrl> &urls) {
    if (OwnContents *own = ownContents())
        own->urls = urls;
}

OwnContents *ReaderPasteboard::ownContents() {
    auto *own = std::get_if<OwnContents>(&m_contents);
    if (own) // else the clipboard went to another program since it was cleared, and a write would go to its contents
        scheduleClaim();
    return own;
}

void ReaderPasteboard::scheduleClaim() {
    if (m_isClaimScheduled)
        return;
    m_isClaimScheduled = true;
    m_writtenAt = std::chrono::steady_clock::now();
    // What the reader has under way has been replaced. What comes from here on it tells of again, once it has the
    // claim.
    ++m_ownSerial;
    m_ownImageFile.clear();
    QMetaObject::invokeMethod(
        &m_mainThread, [this] { claim(); }, Qt::QueuedConnection);
}

void ReaderPasteboard::claim() {
    if (!std::exchange(m_isClaimScheduled, false))
        return;
    const auto &own = std::get<OwnContents>(m_contents);
    m_reader->claim(own, m_ownSerial, m_writtenAt);
    readOwnFiles(own);
}

void ReaderPasteboard::readOwnFiles(const OwnContents &own) {
    QList<QByteArray> paths;
    for (const QUrl &url : own.urls.first(std::min<qsizetype>(own.urls.size(), m_limits.files))) {
        if (url.isLocalFile())
            paths.append(url.toLocalFile().toLocal8Bit());
    }
    if (paths.isEmpty() || !own.image.isNull())
        return;
    m_files.read(paths, [counter = m_counter, serial = m_ownSerial](const std::optional<QByteArray> &bytes) {
        const std::lock_guard lock(counter->mutex);
        ReaderPasteboard *const pasteboard = counter->pasteboard;
        if (!pasteboard || !bytes)
            return;
        QMetaObject::invokeMethod(
            &pasteboard->m_mainThread,
            [pasteboard, serial, bytes = *bytes] {
                if (serial == pasteboard->m_ownSerial && std::holds_alternative<OwnContents>(pasteboard->m_contents))
                    pasteboard->m_ownImageFile = bytes;
            },
            Qt::QueuedConnection);
    });
}

void ReaderPasteboard::receive(const Publication &publication) {
    if (publication.ownSerial != m_ownSerial)
        return; // an own write has replaced it meanwhile
    m_changeCount += publication.changes;
    const auto *old = std::get_if<Foreign>(&m_contents);
    const bool isLarge = old && bytesOf(*old) >= trimmedBytes;
    m_contents = publication.contents;
    m_ownImageFile.clear();
    // What the reader took piece by piece lies scattered over its heap: of 40 MB, 10 MB would stay for good.
    if (isLarge)
        ::malloc_trim(0);
    if (publication.changes > 0 && m_onForeignChange)
        m_onForeignChange();
}

} // namespace tavrine
