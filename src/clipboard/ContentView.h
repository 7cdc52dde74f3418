#pragma once

#include "clipboard/ClassicPanelModel.h"
#include "clipboard/ClipboardListView.h"

class QLayout;

namespace tavrine {

/// The classic clipboard panel: a header, a search field and the history as a plain list. It paints its model and hands
/// it keys and clicks; what they do is the model's.
///
/// Belongs to its panel's window; lives on the main thread. Being hidden closes it; the notification opens it.
class ContentView : public ClipboardListView {
    Q_OBJECT

public:
    /// The manager and the centre outlive the view. Without `onPaste` an item is copied.
    ContentView(ClipboardManager &manager, NotificationCenter &center, std::function<void()> orderOutAllWindows,
                std::function<void(const ClipboardItem &)> onPaste, QWidget *parent = nullptr);
    ~ContentView() override;

    [[nodiscard]] QSize sizeHint() const override;

protected:
    void hideEvent(QHideEvent *event) override;

    [[nodiscard]] int rowCount() const override;
    [[nodiscard]] const ClipboardItem *itemAt(int row) const override;
    [[nodiscard]] int rowOfItem(size_t index) const override { return static_cast<int>(index); }
    [[nodiscard]] int rowHeight(int row) const override;
    void paintItem(QPainter &painter, const ClipboardItem &item, const QRectF &rect,
                   const look::RowState &state) override;
    [[nodiscard]] QStringList spokenWords(int row) const override;
    [[nodiscard]] QStringList actionNames(const ClipboardItem &item) const override;
    void act(const QUuid &id, size_t action) override;

private:
    void build();
    [[nodiscard]] QLayout *makeHeader();
    void openChanged();
    void paintPicture(QPainter &painter, const QRectF &rect, const ClipboardItem &item, const ClassicPanelRow &read,
                      bool isSelected);

    ClassicPanelModel m_model;
};

} // namespace tavrine
