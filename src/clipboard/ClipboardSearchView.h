#pragma once

#include "clipboard/ClipboardListView.h"
#include "clipboard/ClipboardSearchModel.h"

namespace tavrine {

namespace look {
class Button;
class ChipStrip;
} // namespace look

/// The keyboard-first clipboard panel: a search field, the strip of categories, the list in sections and a line of key
/// hints. It paints its model and hands it keys and clicks; what they do is the model's.
///
/// Belongs to its panel's window; lives on the main thread. Keys count while it is shown, in the window that is called
/// `ClipboardSearchModel::windowTitle`.
class ClipboardSearchView : public ClipboardListView {
    Q_OBJECT

public:
    /// The ports outlive the view.
    ClipboardSearchView(const ClipboardSearchModel::Ports &ports, std::function<void()> onDismiss,
                        std::function<void(const ClipboardItem &)> onPaste, QWidget *parent = nullptr);
    ~ClipboardSearchView() override;

    [[nodiscard]] QSize sizeHint() const override;

protected:
    [[nodiscard]] int rowCount() const override;
    [[nodiscard]] const ClipboardItem *itemAt(int row) const override { return entry(row).item; }
    [[nodiscard]] int rowOfItem(size_t index) const override;
    [[nodiscard]] int rowHeight(int row) const override;
    void paintItem(QPainter &painter, const ClipboardItem &item, const QRectF &rect,
                   const look::RowState &state) override;
    void paintOther(QPainter &painter, int row, const QRectF &rect) override;
    [[nodiscard]] QStringList spokenWords(int row) const override;
    [[nodiscard]] QStringList actionNames(const ClipboardItem &item) const override;
    void act(const QUuid &id, size_t action) override;

private:
    /// What stands in a row of the list: an item, or the header of a section.
    struct Entry {
        const ClipboardItem *item = nullptr;
        size_t section = 0;
    };
    [[nodiscard]] Entry entry(int row) const;

    void build();
    void followModel();
    void categoryChanged();

    ClipboardSearchModel m_model;
    look::Button *m_add = nullptr;
    look::ChipStrip *m_categories = nullptr;
};

} // namespace tavrine
