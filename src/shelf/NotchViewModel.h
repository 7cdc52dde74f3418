#pragma once

#include "base/Date.h"
#include "shelf/ShelfItem.h"

#include <QList>
#include <QObject>

#include <functional>

namespace tavrine {

class FileIcons;
class SystemSounds;
class Time;

/// What the shelf holds, and the four flags from which the shape of its window and of its content follow.
///
/// Lives on the main thread; `NotchWindowController` owns it. Everything is in memory, and gone with it.
///
///  1. What is added comes onto the list in a turn of its own, never within the call: that may come out of a running
///     drag.
///  2. What is held is never compared: the same file twice is two items.
///  3. The shelf lets go of a file that was moved away only when the file has really left.
class NotchViewModel : public QObject {
    Q_OBJECT

public:
    static constexpr Seconds moveCheckInterval{0.2};
    static constexpr int iconPixels = 128; ///< of a file's icon: a tile at twice the scale

    struct Ports {
        Time &time;
        SystemSounds &sounds;
        FileIcons &icons;
        /// Tells in a later turn, or at once, whether there is something at the path. Waits for no file system.
        std::function<void(const QString &path, std::function<void(bool exists)> answer)> fileExists;
    };

    explicit NotchViewModel(Ports ports, QObject *parent = nullptr);

    [[nodiscard]] const QList<ShelfItem> &items() const { return m_items; } ///< the oldest first
    /// A drag is inside the shelf's window.
    [[nodiscard]] bool isDragTargetActive() const { return m_isDragTargetActive; }
    /// A drag of files goes on somewhere on the screen.
    [[nodiscard]] bool isFileDragActive() const { return m_isFileDragActive; }
    /// Reserved for a drag that began on an item; no operation sets it.
    [[nodiscard]] bool isShelfItemDragActive() const { return m_isShelfItemDragActive; }
    /// The pointer is over the band at the screen's edge, or over the open shelf.
    [[nodiscard]] bool isHovering() const { return m_isHovering; }

    void setDragTargetActive(bool isActive);
    void setFileDragActive(bool isActive);
    void setShelfItemDragActive(bool isActive);
    void setHovering(bool isHovering);
    /// A drag of another program's is over, however it ended.
    void endDrag();

    [[nodiscard]] bool isInteractive() const { return m_isHovering || m_isShelfItemDragActive; }
    [[nodiscard]] bool shouldExpand() const;
    [[nodiscard]] bool showsItems() const;
    [[nodiscard]] bool showsDropHint() const;

    // Each makes its sound, and its own.
    void addFile(const QUrl &url);
    void addText(const QString &text);
    void addImage(const QImage &image);
    void addItem(ShelfItem item);

    void removeItem(const QUuid &id); ///< an unknown one changes nothing
    /// Lets go of a file that was dragged out to be moved, when nothing is at `url` any more: asks now and then, and
    /// `attempts` times again.
    void removeAfterMove(const ShelfItem &item, const QUrl &url, int attempts);
    void clearAll();

    /// For a person who wants to see it. Of a file, `fileToOpen` or `fileIsGone` says what became of that.
    void openItem(const ShelfItem &item);

Q_SIGNALS:
    void itemsChanged();
    void fileToOpen(const QUrl &url);
    void fileIsGone(const QString &name);
    void isDragTargetActiveChanged(bool isActive);
    void isFileDragActiveChanged(bool isActive);
    void isShelfItemDragActiveChanged(bool isActive);
    void isHoveringChanged(bool isHovering);
    void dragEnded();

private:
    void appendAdded();
    void fileWasFound(bool exists, const ShelfItem &item, const QUrl &url, int attempts);

    Ports m_ports;
    QList<ShelfItem> m_items;
    QList<ShelfItem> m_added; ///< for the next turn
    bool m_isDragTargetActive = false;
    bool m_isFileDragActive = false;
    bool m_isShelfItemDragActive = false;
    bool m_isHovering = false;
};

} // namespace tavrine
