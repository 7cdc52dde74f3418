#pragma once

#include "clipboard/ClassicPanelModel.h"
#include "clipboard/RowThumbnails.h"
#include "look/PanelSurface.h"

#include <QPointF>
#include <QRectF>

class QLayout;
class QPainter;

namespace tavrine {

namespace look {
class EmptyState;
class SearchField;
class VirtualList;
struct RowState;
} // namespace look

/// The classic clipboard panel: a header, a search field and the history as a plain list. It paints its model and hands
/// it keys and clicks; what they do is the model's.
///
/// Belongs to its panel's window; lives on the main thread. Being hidden closes it; the notification opens it.
class ContentView : public look::PanelSurface {
    Q_OBJECT

public:
    /// The manager and the centre outlive the view. Without `onPaste` an item is copied.
    ContentView(ClipboardManager &manager, NotificationCenter &center, std::function<void()> orderOutAllWindows,
                std::function<void(const ClipboardItem &)> onPaste, QWidget *parent = nullptr);
    ~ContentView() override;

    [[nodiscard]] QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;

private:
    void build();
    [[nodiscard]] QLayout *makeHeader();
    void setUpList();
    void shownItemsChanged();

    [[nodiscard]] const ClipboardItem *item(int row) const;
    [[nodiscard]] int rowHeight(int row) const;
    [[nodiscard]] int rowOfSelection() const;
    void paintListRow(QPainter &painter, int row, const QRectF &rect, const look::RowState &state);
    void paintPicture(QPainter &painter, const QRectF &rect, const ClipboardItem &item, const ClassicPanelRow &read,
                      bool isSelected);
    [[nodiscard]] QString accessibleText(int row) const;
    [[nodiscard]] QStringList actionNames(int row) const;
    void act(int row, int action);
    void clicked(int row, QPointF place);

    ClassicPanelModel m_model;
    RowThumbnails m_thumbnails;
    look::PanelKeys *m_keys;
    look::SearchField *m_search = nullptr;
    look::VirtualList *m_list = nullptr;
    look::EmptyState *m_empty = nullptr;
};

} // namespace tavrine
