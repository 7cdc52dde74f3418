#pragma once

#include "shelf/ShelfItem.h"

#include <QPointer>
#include <QWidget>

#include <functional>
#include <optional>

namespace tavrine {

class Dragging;
class NotchViewModel;
class ShelfPictures;

/// One tile of the shelf: what the item looks like, its name, and under the pointer a button that takes it off the
/// shelf. It is dragged out from anywhere but the button. A tile shows one item after another while the row scrolls.
class ShelfItemDragSourceView final : public QWidget {
    Q_OBJECT
public:
    static constexpr int slotWidth = 85;
    static constexpr int tileHeight = 124;

    struct Parts {
        QPointer<NotchViewModel> viewModel;
        Dragging &dragging;
        ShelfPictures &pictures;
        std::function<void(const ShelfItem &item)> open;
    };

    explicit ShelfItemDragSourceView(Parts parts, QWidget *parent = nullptr);

    void setItem(const ShelfItem &item);
    [[nodiscard]] const ShelfItem &item() const { return m_item; }
    /// It has the keyboard.
    void setCurrent(bool isCurrent);
    /// How far it has come, from 0 to 1 and for a moment beyond.
    void setArrived(double part);

    [[nodiscard]] bool isRemoveButtonVisible() const { return m_isHovered && !m_didStartDragging; }
    [[nodiscard]] QRectF removeButton() const;

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void enterEvent(QEnterEvent *event) override;
    void moveEvent(QMoveEvent *event) override;
    void leaveEvent(QEvent *event) override;
    bool event(QEvent *event) override;

private:
    void startDragging();
    [[nodiscard]] bool isOnRemoveButton(const QPointF &place) const;
    void hoverButton(const QPointF &place);
    void paintPicture(QPainter &painter);
    void paintName(QPainter &painter);
    void paintRemoveButton(QPainter &painter);
    [[nodiscard]] QPixmap draggingImage() const;

    Parts m_parts;
    ShelfItem m_item;
    QString m_name;
    std::optional<QPointF> m_mouseDownPoint;
    bool m_didStartDragging = false;
    bool m_isHovered = false;
    bool m_isOnButton = false;
    bool m_isButtonPressed = false;
    bool m_isCurrent = false;
    double m_arrived = 1;
};

/// "report.pdf" on as many as two lines of that width. Names end with what tells them apart, so a long one loses its
/// middle; no line breaks within an extension.
[[nodiscard]] QStringList tileLines(const QString &name, const QFont &font, qreal width);

/// What a person is told of an item that is shown shortened: the whole name, or a good part of a text.
[[nodiscard]] QString wholeName(const ShelfItem &item);

} // namespace tavrine
