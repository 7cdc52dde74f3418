#pragma once

#include "look/MotionClock.h"
#include "shelf/ShelfItem.h"
#include "shelf/ShelfPictures.h"
#include "shelf/ShelfPorts.h"

#include <QHash>
#include <QPointer>
#include <QWidget>

#include <vector>

namespace tavrine {

class NotchViewModel;
class ShelfItemDragSourceView;

/// The row of tiles: of any number of items those in sight have one. A wheel and the keyboard scroll it. Main thread.
///
/// Keys: Left, Right, Home, End and the page keys choose a tile, Return opens it, Delete takes it off the shelf,
/// Command-C copies it.
class ShelfRowView final : public QWidget {
    Q_OBJECT
public:
    ShelfRowView(NotchViewModel &viewModel, const ShelfPorts &ports, QWidget *parent = nullptr);
    ~ShelfRowView() override;

    [[nodiscard]] const QList<ShelfItem> &items() const { return m_items; }
    /// The one that keys are for; -1 where there is none.
    [[nodiscard]] int current() const { return m_current; }
    void setCurrent(int index);
    /// Where an item's tile stands in this widget, in sight or not.
    [[nodiscard]] QRectF slot(int index) const;
    /// -1: none.
    [[nodiscard]] int itemAt(const QPointF &place) const;
    [[nodiscard]] double offset() const { return m_offset; }
    [[nodiscard]] double maximumOffset() const;

    void open(int index);
    void remove(int index);
    void copy(int index);

protected:
    void resizeEvent(QResizeEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;

private:
    class Edges;

    void takeItems();
    void openItem(const ShelfItem &item);
    void place();
    void placeTile(ShelfItemDragSourceView &tile, int index);
    [[nodiscard]] std::vector<ShelfItemDragSourceView *> tilesFor(int first, int count);
    void scrollTo(double offset, bool isAnimated);
    void reveal(int index);
    void tellCurrent();

    QPointer<NotchViewModel> m_viewModel;
    ShelfPorts m_ports;
    ShelfPictures m_pictures;
    QList<ShelfItem> m_items;
    QHash<QUuid, double> m_before; ///< where tiles stood before the list changed, while they are on their way
    std::vector<ShelfItemDragSourceView *> m_tiles;
    Edges *m_edges;
    look::Motion m_arriving;
    look::Motion m_scrolling;
    double m_arrived = 1;
    double m_offset = 0;
    double m_target = 0;
    int m_current = -1;
};

/// Teaches screen readers the items of rows. Every row calls it; the first call counts.
void installShelfRowAccessibility();

} // namespace tavrine
