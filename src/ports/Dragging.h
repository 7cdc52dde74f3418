#pragma once

#include <QImage>
#include <QList>
#include <QPixmap>
#include <QPoint>
#include <QString>
#include <QStringList>
#include <QUrl>

#include <chrono>
#include <functional>
#include <optional>

class QMimeData;
class QWidget;

namespace tavrine {

/// What was dropped, in the forms in which it can be kept.
struct DroppedContent {
    QStringList types;                    ///< as the desktop names them, in the order in which they were offered
    QList<QUrl> fileUrls;                 ///< local files that are named in it, in their order
    std::optional<QString> fileUrlString; ///< a single name of a file given as text where there is no list
    QList<QImage> images;
    std::optional<QString> string;
};

/// How a drag is meant, as bits.
namespace dragOperation {
inline constexpr quint32 none = 0;
inline constexpr quint32 copy = 1;
inline constexpr quint32 move = 16;
} // namespace dragOperation

/// What is dragged out of a view. Exactly one of the first three is there.
struct DraggedItem {
    std::optional<QUrl> url;
    std::optional<QString> string;
    std::optional<QImage> image;
    QPixmap draggingImage; ///< shown beside the pointer
    QPoint hotSpot;        ///< the pointer's place in it
    /// That the picture takes back to its beginning when nobody has taken the item, where the desktop tells where the
    /// pointer is then. Zero for one that is gone at once.
    std::chrono::milliseconds returnTime{};
};

/// Drags that end at or begin in a view of this program. Lives on the main thread, as long as the process.
///
///  1. No call waits for a program that does not answer longer than `answerLimit`.
///  2. What is too large, cannot be decoded or does not come in time is absent.
///  3. A drag that begins here offers its item in every form that other programs know: a file as `text/uri-list` and
///  the
///     forms of the desktop's file managers, a picture as PNG besides TIFF.
class Dragging {
public:
    static constexpr std::chrono::milliseconds answerLimit{150};

    virtual ~Dragging() = default;

    /// Reads what was dropped. To be called within the drop's event; the answer comes in a later turn, or, where it
    /// must be taken before the dragging program takes it back, within the call. Only forms in `offered` are asked for.
    virtual void readDrop(const QMimeData &offered, std::function<void(const DroppedContent &)> completion) = 0;

    /// What is held of Control, Shift and the like, whichever program has the keyboard.
    [[nodiscard]] virtual Qt::KeyboardModifiers heldModifiers() const = 0;

    /// Begins to drag the item out of `source` and returns when the drag has ended, with the operation that was done.
    /// `mask` is asked during the drag for what is offered at the moment. Timers and other events go on meanwhile; the
    /// source may be destroyed. While one drag goes on no other begins: it ends at once with no operation.
    [[nodiscard]] virtual quint32 beginDragging(QWidget &source, const DraggedItem &item,
                                                std::function<quint32()> mask) = 0;
};

} // namespace tavrine
