#pragma once

#include "clipboard/ClipboardSearchModel.h"
#include "clipboard/RowThumbnails.h"
#include "look/PanelSurface.h"

#include <QPointF>
#include <QRectF>

class QPainter;

namespace tavrine {

namespace look {
class Button;
class ChipStrip;
class EmptyState;
class SearchField;
class VirtualList;
struct RowState;
} // namespace look

/// The keyboard-first clipboard panel: a search field, the strip of categories, the list in sections and a line of key
/// hints. It paints its model and hands it keys and clicks; what they do is the model's.
///
/// Belongs to its panel's window; lives on the main thread. Keys count while it is shown, in the window that is called
/// `ClipboardSearchModel::windowTitle`.
class ClipboardSearchView : public look::PanelSurface {
    Q_OBJECT

public:
    /// The ports outlive the view.
    ClipboardSearchView(const ClipboardSearchModel::Ports &ports, std::function<void()> onDismiss,
                        std::function<void(const ClipboardItem &)> onPaste, QWidget *parent = nullptr);
    ~ClipboardSearchView() override;

    [[nodiscard]] QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;

private:
    /// What stands in a row of the list: an item, or the header of a section.
    struct Entry {
        const ClipboardItem *item = nullptr;
        size_t section = 0;
    };

    void build();
    void setUpList();
    void followModel();
    void queryChanged();
    void categoryChanged();
    void visibleItemsChanged();
    void showSelection(bool isAnimated);

    [[nodiscard]] int rowCount() const;
    [[nodiscard]] int rowHeight(int row) const;
    [[nodiscard]] Entry entry(int row) const;
    [[nodiscard]] int rowOfSelection() const;
    void paintListRow(QPainter &painter, int row, const QRectF &rect, const look::RowState &state);
    [[nodiscard]] QString accessibleText(int row) const;
    [[nodiscard]] QStringList actionNames(int row) const;
    /// The button of a row at a place; -1: none.
    [[nodiscard]] static int actionAt(const QRectF &row, QPointF place);
    void act(int row, int action);
    void clicked(int row, QPointF place);

    ClipboardSearchModel m_model;
    RowThumbnails m_thumbnails;
    look::PanelKeys *m_keys;
    look::SearchField *m_search = nullptr;
    look::Button *m_add = nullptr;
    look::ChipStrip *m_categories = nullptr;
    look::VirtualList *m_list = nullptr;
    look::EmptyState *m_empty = nullptr;
    bool m_beginsAtTop = false; ///< the list that comes next is another one, not the same one changed
};

} // namespace tavrine
