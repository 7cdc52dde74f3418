#pragma once

#include "base/Date.h"

#include <QImage>
#include <QLocale>
#include <QObject>
#include <QSet>
#include <QTimeZone>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

class QMimeData;

namespace tavrine {

class FilePanels;
class ImageCoder;
class Pasteboard;
class Time;
class Timer;

/// A picture of the clipboard's history that the editor offers.
struct RecentImage {
    QString fileName; ///< bare, as the history knows it
    Date date;
    bool operator==(const RecentImage &) const = default;
};

/// What the editor shows before it has a picture: the recent ones, a way to choose a file, to paste and to drop.
///
/// Belongs to the landing view; lives on the main thread. It looks at the clipboard between `appear` and `disappear`
/// only, and never reads the same contents twice to know whether there is a picture.
class EditorLandingModel : public QObject {
    Q_OBJECT

public:
    static constexpr size_t mostRecentImages = 30;
    static constexpr Seconds pasteboardInterval{0.5};

    /// The history as it is lent to the editor. All of it is called on the main thread.
    struct History {
        std::function<std::vector<RecentImage>()> images; ///< those with a file, in the history's order
        std::function<std::optional<QImage>(const QString &fileName)> cachedThumbnail;
        /// Decodes, and caches; what takes longer comes with `thumbnailArrived`.
        std::function<std::optional<QImage>(const QString &fileName)> makeThumbnail;
        std::function<std::optional<QImage>(const QString &fileName)> loadImage;
    };
    /// All outlive the model.
    struct Ports {
        Time &time;
        Pasteboard &pasteboard;
        FilePanels &filePanels;
        ImageCoder &imageCoder;
    };
    struct Actions {
        std::function<void(const QImage &)> selectImage; ///< may destroy the model
        std::function<void()> close;
    };

    EditorLandingModel(Ports ports, History history, Actions actions, QObject *parent = nullptr);
    ~EditorLandingModel() override;

    void appear();
    void disappear();

    [[nodiscard]] const std::vector<RecentImage> &recentImages() const { return m_recentImages; }
    /// To be called when the history is another.
    void historyChanged();
    /// To be called when there is a thumbnail that could not be made at once.
    void thumbnailArrived(const QString &fileName);
    /// None while it is not made; `thumbnailMade` follows when it is. One is made in each turn of the main queue, so
    /// that a window of many tiles opens at once and stays quick.
    [[nodiscard]] std::optional<QImage> thumbnail(const QString &fileName);
    void openRecentImage(const QString &fileName);
    [[nodiscard]] QString timeText(Date date) const;
    [[nodiscard]] static QString timeText(Date date, Date now, const QLocale &locale, const QTimeZone &zone);

    [[nodiscard]] bool canPaste() const { return m_canPaste; }
    void paste();
    void chooseImageFile();
    void close();

    [[nodiscard]] bool isTargeted() const { return m_isTargeted; }
    /// A drag comes over the window: whether it may be dropped.
    bool dragEntered(const QMimeData &data);
    void dragExited();
    void drop(const QMimeData &data);

Q_SIGNALS:
    void recentImagesChanged();
    void thumbnailMade(const QString &fileName);
    void canPasteChanged();
    void isTargetedChanged();

private:
    void lookAtPasteboard();
    void makeNextThumbnail();
    void setTargeted(bool isTargeted);
    void select(const std::optional<QImage> &image);

    Ports m_ports;
    History m_history;
    Actions m_actions;
    std::vector<RecentImage> m_recentImages;
    std::vector<QString> m_wantedThumbnails; // the last asked for is made first: it is the one in sight
    QSet<QString> m_missingThumbnails;
    std::unique_ptr<Timer> m_pasteboardTimer;
    std::optional<int> m_seenChangeCount;
    bool m_isMakingThumbnails = false;
    bool m_canPaste = false;
    bool m_isTargeted = false;
};

} // namespace tavrine
