#pragma once

#include "clipboard/ThumbnailCache.h"
#include "ports/Folders.h"

#include <QImage>
#include <QSet>
#include <QString>
#include <QStringList>

#include <mutex>
#include <optional>

namespace tavrine {

class ImageCoder;
class UserDefaults;

/// The files of the history: the images in a folder of the program's own, the recordings in one of the person's.
///
/// Lives on the main thread, owned by ClipboardManager; `saveImage` and `makeThumbnail` may be called on any. Every
/// operation takes the bare file name that a row holds; a path is never stored. A name that is not bare (it has a
/// slash, or is "." or "..") names no file, so that a row from elsewhere cannot reach outside the two folders.
class MediaStore {
public:
    static constexpr auto quickShotsName = "Tavrine QuickShots"; ///< the folder of recordings
    static constexpr int thumbnailMaxPixelSize = 480;            ///< longest edge of a thumbnail

    MediaStore(Folders folders, UserDefaults &defaults, ImageCoder &coder);

    /// The folder of the images; it is made when it does not stand. None when the person has no folder for data.
    [[nodiscard]] std::optional<QString> imagesDirectory() const;

    /// The one rule for where recordings go: the person's own choice under "customSaveDirectoryPath" when it can be
    /// made, else "Tavrine QuickShots" in the home's Documents, else the same in the desktop's documents folder.
    [[nodiscard]] std::optional<QString> quickShotsDirectory() const;

    /// Where the file of this name lies, whether it exists or not. None when there is no such folder.
    [[nodiscard]] std::optional<QString> filePath(const QString &fileName) const;

    /// Stores `image` as a JPEG under a fresh name and answers the name. None when it could not be encoded or written.
    /// A picture that was stored just before, and whose file no row has named yet, has that file: a capture is stored
    /// once when it is taken and once when the pasteboard's poll meets it, at the same moment perhaps.
    [[nodiscard]] std::optional<QString> saveImage(QImage image);
    /// A row names the file from now on.
    void claim(const QString &fileName);
    /// Removes what earlier runs left in the folder of the images: files that no row names (`named` are those that one
    /// does), and writes that were cut off. At most `most` of them; true when there may be more.
    bool removeLeftovers(const QSet<QString> &named, int most);
    [[nodiscard]] std::optional<QImage> loadImage(const QString &fileName) const;

    /// Decodes the file now, on this thread. None for a recording: see `RecordingThumbnails`.
    [[nodiscard]] std::optional<QImage> makeThumbnail(const QString &fileName) const;
    void cacheThumbnail(const QImage &thumbnail, const QString &fileName);
    [[nodiscard]] ThumbnailCache &thumbnailCache() { return m_thumbnailCache; }

    /// Deletes the file; failures are quiet. The thumbnail stays in the cache.
    void removeImageFile(const std::optional<QString> &fileName);
    /// Deletes the files and drops their thumbnails.
    void removeImageFiles(const QStringList &fileNames);

private:
    /// Of a picture that was stored just before and that no row names yet.
    [[nodiscard]] std::optional<QString> unclaimedFileOf(const QImage &image);

    Folders m_folders;
    UserDefaults &m_defaults;
    ImageCoder &m_coder;
    ThumbnailCache m_thumbnailCache;
    std::mutex m_saving;       ///< one picture at a time: the second may be the same one
    std::mutex m_mutex;        ///< guards the three below: a large copy is stored on a thread of its own
    QSet<QString> m_savedNow;  ///< by this run, from before they are written
    QString m_unclaimed;       ///< the file that was stored last, until a row names it
    qint64 m_unclaimedKey = 0; ///< of its picture, as QImage tells pictures apart
};

} // namespace tavrine
