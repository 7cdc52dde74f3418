#include "clipboard/MediaStore.h"

#include "base/Print.h"
#include "base/PrivateFiles.h"
#include "base/Uuid.h"
#include "clipboard/ClipboardItem.h"
#include "clipboard/ClipboardPreferences.h"
#include "clipboard/JpegLadder.h"
#include "ports/ImageCoder.h"

#include <QDirIterator>
#include <QFile>
#include <QPainter>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <thread>

namespace tavrine {
namespace {

bool isBareName(const QString &fileName) {
    return !fileName.isEmpty() && !fileName.contains(u'/') && !fileName.contains(QChar::Null) &&
           fileName != QLatin1String(".") && fileName != QLatin1String("..");
}

enum class NamedAs { whole, unfinished, foreign };

/// How a file in the folder of the images is named: a UUID and ".jpg"; with what a write that was cut off had behind it
/// or, beside it, instead of it; or as no file of ours. By hand: the library for patterns would cost every launch half
/// a megabyte.
NamedAs namedAsOurs(const QString &name) {
    constexpr qsizetype uuidLength = 36;
    const QLatin1String extension(".jpg");
    const QLatin1String beside(".tavrine-");
    const auto isMadeOf = [](QStringView text, const char *letters) {
        return std::all_of(text.begin(), text.end(),
                           [letters](QChar letter) { return QLatin1String(letters).contains(letter); });
    };
    if (name.startsWith(beside))
        return name.size() == beside.size() + 16 && isMadeOf(QStringView(name).mid(beside.size()), "0123456789abcdef")
                   ? NamedAs::unfinished
                   : NamedAs::foreign;
    const auto id = uuidFromString(name.left(uuidLength));
    if (!id || !name.startsWith(uuidString(*id) + extension))
        return NamedAs::foreign;
    const QStringView behind = QStringView(name).mid(uuidLength + extension.size());
    if (behind.isEmpty())
        return NamedAs::whole;
    const bool isCutOff = behind.size() == 7 && behind.front() == u'.' &&
                          std::all_of(behind.begin() + 1, behind.end(), [](QChar c) { return c.isLetterOrNumber(); });
    return isCutOff ? NamedAs::unfinished : NamedAs::foreign;
}

/// Without transparency, on white, as a JPEG has it. In its place where nobody else holds the picture, else as it is:
/// to encode transparent pixels takes planes beside them, 180 MB at 120 megapixels.
QImage onWhite(QImage image) {
    constexpr int rows = 256;
    if (!image.hasAlphaChannel() || image.depth() != 32 || !image.isDetached())
        return image;
    for (int y = 0; y < image.height(); y += rows) {
        uchar *const first = image.scanLine(y);
        const QImage strip(first, image.width(), std::min(rows, image.height() - y), image.bytesPerLine(),
                           image.format());
        QImage flat(strip.size(), QImage::Format_RGB32);
        flat.fill(Qt::white);
        QPainter(&flat).drawImage(0, 0, strip);
        for (int row = 0; row < flat.height(); ++row)
            std::memcpy(first + row * image.bytesPerLine(), flat.constScanLine(row),
                        static_cast<std::size_t>(flat.width()) * sizeof(QRgb));
    }
    image.reinterpretAsFormat(QImage::Format_RGB32);
    return image;
}

} // namespace

MediaStore::MediaStore(Folders folders, UserDefaults &defaults, ImageCoder &coder)
    : m_folders(std::move(folders)), m_defaults(defaults), m_coder(coder) {}

std::optional<QString> MediaStore::imagesDirectory() const {
    if (m_folders.applicationSupport.isEmpty())
        return std::nullopt;
    const QString folder = m_folders.applicationSupport + QStringLiteral("/Tavrine/Images");
    claimPrivateFolder(folder); // when it fails, so does what is done in it
    return folder;
}

std::optional<QString> MediaStore::quickShotsDirectory() const {
    const QString chosen = preference::customSaveDirectoryPath.get(m_defaults);
    if (!chosen.isEmpty() && makePrivateFolder(chosen))
        return chosen;

    const QString name = u'/' + QLatin1String(quickShotsName);
    const QString standard = m_folders.home + QStringLiteral("/Documents") + name;
    const FileResult made = makePrivateFolder(m_folders.home.isEmpty() ? QString() : standard);
    if (made)
        return standard;
    printLine(QStringLiteral("CRITICAL: Failed to create Tavrine QuickShots folder: ") + made.reason());

    if (m_folders.documents.isEmpty())
        return std::nullopt;
    const QString fallback = m_folders.documents + name;
    makePrivateFolder(fallback);
    return fallback;
}

std::optional<QString> MediaStore::filePath(const QString &fileName) const {
    if (!isBareName(fileName))
        return std::nullopt;
    const std::optional<QString> folder = isRecordingFileName(fileName) ? quickShotsDirectory() : imagesDirectory();
    return folder ? std::optional(*folder + u'/' + fileName) : std::nullopt;
}

std::optional<QString> MediaStore::saveImage(QImage image) {
    if (image.width() <= 0 || image.height() <= 0)
        return std::nullopt;
    const std::scoped_lock saving(m_saving);
    if (auto stored = unclaimedFileOf(image))
        return stored;
    const qint64 key = image.cacheKey();
    image = onWhite(std::move(image));
    std::optional<QByteArray> jpeg;
    if (const auto source = m_coder.bitmapRepresentation(image))
        jpeg = encodeForStorage(*source);
    if (!jpeg) {
        if (const auto source = m_coder.tiffRepresentation(image))
            jpeg = encodeForStorage(*source);
    }
    const std::optional<QString> folder = imagesDirectory();
    if (!jpeg || !folder)
        return std::nullopt;
    const QString fileName = freshUuidString() + QStringLiteral(".jpg");
    {
        const std::scoped_lock lock(m_mutex);
        m_savedNow.insert(fileName);
    }
    // Twice: the picture is lost with this file, and a disk or a table of descriptors that is full at one moment may
    // not be at the next.
    const QString path = *folder + u'/' + fileName;
    if (!writePrivateFile(path, *jpeg)) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
        if (const FileResult again = writePrivateFile(path, *jpeg); !again) {
            printLine(QStringLiteral("DEBUG: A picture could not be stored: ") + again.reason());
            return std::nullopt;
        }
    }
    const std::scoped_lock lock(m_mutex);
    m_unclaimed = fileName;
    m_unclaimedKey = key;
    return fileName;
}

std::optional<QString> MediaStore::unclaimedFileOf(const QImage &image) {
    const std::scoped_lock lock(m_mutex);
    if (image.cacheKey() != m_unclaimedKey)
        return std::nullopt;
    const auto path = filePath(m_unclaimed);
    return path && QFile::exists(*path) ? std::optional(m_unclaimed) : std::nullopt;
}

void MediaStore::claim(const QString &fileName) {
    const std::scoped_lock lock(m_mutex);
    if (fileName == m_unclaimed)
        m_unclaimed.clear();
}

bool MediaStore::removeLeftovers(const QSet<QString> &named, int most) {
    const std::optional<QString> folder = imagesDirectory();
    if (!folder)
        return false;
    const std::scoped_lock lock(m_mutex);
    int removed = 0;
    for (QDirIterator files(*folder, QDir::Files | QDir::Hidden); files.hasNext();) {
        files.next();
        const NamedAs namedAs = namedAsOurs(files.fileName());
        const bool isInUse = named.contains(files.fileName()) || m_savedNow.contains(files.fileName());
        if (namedAs == NamedAs::foreign || (namedAs == NamedAs::whole && isInUse))
            continue;
        if (removed == most)
            return true;
        removed += QFile::remove(files.filePath()) ? 1 : 0;
    }
    return false;
}

std::optional<QImage> MediaStore::loadImage(const QString &fileName) const {
    const std::optional<QString> path = filePath(fileName);
    return path ? m_coder.load(*path) : std::nullopt;
}

std::optional<QImage> MediaStore::makeThumbnail(const QString &fileName) const {
    const std::optional<QString> path = isRecordingFileName(fileName) ? std::nullopt : filePath(fileName);
    return path ? m_coder.thumbnail(*path, thumbnailMaxPixelSize) : std::nullopt;
}

void MediaStore::cacheThumbnail(const QImage &thumbnail, const QString &fileName) {
    const qint64 cost = qint64{thumbnail.width()} * thumbnail.height() * 4;
    m_thumbnailCache.setObject(thumbnail, fileName, cost);
}

void MediaStore::removeImageFile(const std::optional<QString> &fileName) {
    if (const std::optional<QString> path = fileName ? filePath(*fileName) : std::nullopt)
        QFile::remove(*path);
}

void MediaStore::removeImageFiles(const QStringList &fileNames) {
    for (const QString &fileName : fileNames) {
        m_thumbnailCache.removeObject(fileName);
        removeImageFile(fileName);
    }
}

} // namespace tavrine
