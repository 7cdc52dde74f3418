#pragma once

#include "look/Paint.h"
#include "look/ScrollArea.h"

#include <QMargins>

#include <functional>
#include <optional>
#include <vector>

namespace tavrine::look {

/// A list of any number of rows of which only the visible ones are asked for and painted. It holds no content and takes
/// no keys: the view owns both, and says what is selected. Rows are as wide as the list less its padding.
///
///  1. A repaint calls `paint` for the rows in sight and no others.
///  2. `reload` costs one `height` call a row, or nothing a row when the source has `uniformHeight`.
///  3. Finding a row by its place, and a place by its row, costs the same whatever the number of rows.
class VirtualList : public ScrollArea {
    Q_OBJECT
public:
    struct Source {
        std::function<int()> count;
        /// In points, above 0. Not called when `uniformHeight` is set.
        std::function<int(int row)> height;
        int uniformHeight = 0;
        std::function<void(QPainter &painter, int row, const QRectF &rect, const RowState &state)> paint;
        /// What a screen reader says for the row.
        std::function<QString(int row)> accessibleText;
        /// Whether the pointer does anything to the row; none: all rows. Headers say no.
        std::function<bool(int row)> isActive;
        /// The tool tip at a place within the row and the area it is about; none: no tool tips.
        std::function<std::pair<QString, QRectF>(int row, const QRectF &rect, QPointF place)> toolTip;
        /// What the row's buttons are called for those who cannot see them; none: no actions.
        std::function<QStringList(int row)> actionNames;
        /// Does the action, by its place among the names.
        std::function<void(int row, int action)> act;
    };

    explicit VirtualList(QWidget *parent = nullptr);

    void setSource(Source source);
    void setPadding(const QMargins &padding);
    /// The rows or their heights are others now. The offset stays where it can.
    void reload();

    [[nodiscard]] int count() const { return m_count; }
    [[nodiscard]] int selectedRow() const { return m_selected; }
    /// -1: none. Does not scroll.
    void setSelectedRow(int row);
    void centreRow(int row, bool isAnimated);
    [[nodiscard]] int hoveredRow() const { return m_hovered; }

    /// The row at a place of this widget; -1: none.
    [[nodiscard]] int rowAt(qreal y) const;
    /// Where a row stands in this widget at present, in sight or not.
    [[nodiscard]] QRectF rowRect(int row) const;
    /// The row that a page key leads to from `row`, in `direction`: -1 or +1. It shows at one end of the list while
    /// `row` shows at the other. From none, the first row.
    [[nodiscard]] int pageFrom(int row, int direction) const;
    [[nodiscard]] QString accessibleText(int row) const;
    [[nodiscard]] QStringList actionNames(int row) const;
    void act(int row, int action);

Q_SIGNALS:
    /// A left click, with its place in this widget's coordinates. A click during which the rows changed is none: the
    /// row under the pointer is no longer the one that the person aimed at. Nor is the second half of a double click
    /// whose first half changed them.
    void clicked(int row, QPointF place);
    void contextMenuRequested(int row, QPoint globalPlace);

protected:
    [[nodiscard]] qreal contentHeight() const override;
    void moved() override;
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;
    void leaveEvent(QEvent *event) override;
    bool event(QEvent *event) override;

private:
    [[nodiscard]] int heightOf(int row) const;
    [[nodiscard]] qint64 topOf(int row) const;
    [[nodiscard]] bool isActive(int row) const;
    void updateRow(int row);
    void hoverAt(const std::optional<QPointF> &place);

    Source m_source;
    QMargins m_padding;
    int m_count = 0;
    qint64 m_height = 0;
    std::vector<qint64> m_tops; // of every 64th row
    int m_selected = -1;
    int m_hovered = -1;
    int m_pressed = -1;
    bool m_isReloadedSincePress = false;
    std::optional<QPointF> m_pointer;
};

/// Teaches screen readers the rows of virtual lists. Every list calls it; the first call counts.
void installVirtualListAccessibility();

} // namespace tavrine::look
