#pragma once

#include "look/EmojiGlyphs.h"
#include "look/ListPanel.h"
#include "utilities/emoji/EmojiPickerModel.h"

#include <QPointF>
#include <QRectF>

class QPainter;

namespace tavrine {

namespace look {
class ChipStrip;
class HintBar;
struct RowState;
struct Theme;
} // namespace look

/// The emoji picker's panel: a search field, the strip of categories, the sections' grids in one scroll area and a line
/// of key hints. It paints its model and hands it keys and clicks; what they do is the model's.
///
/// Belongs to its panel's window; lives on the main thread. Keys count while it is shown, in the window that is called
/// `EmojiPickerModel::windowTitle`. Only emojis in sight are drawn.
class EmojiPickerView : public look::ListPanel {
    Q_OBJECT

public:
    /// The ports outlive the view.
    EmojiPickerView(const EmojiPickerModel::Ports &ports, std::function<void()> onDismiss,
                    std::function<void(const EmojiItem &)> onCopy, QWidget *parent = nullptr);
    ~EmojiPickerView() override;

    /// Where its pictures were drawn before.
    void setDrawnBefore(look::EmojiGlyphs::DrawnBefore drawnBefore) { m_glyphs.setDrawnBefore(std::move(drawnBefore)); }

    [[nodiscard]] QSize sizeHint() const override;

protected:
    void selectRow(int row, int direction) override;

private:
    /// A line of the list: a section's header, or up to eight of its items.
    struct Line {
        size_t section = 0;
        size_t first = 0;
        size_t count = 0; ///< 0 for a header
    };

    void build();
    void setUpList();
    void followModel();
    void categoryChanged();
    void sectionsChanged();
    void showSelection();

    [[nodiscard]] const EmojiItem *itemAt(int row, const QRectF &rect, QPointF place, QRectF *cell = nullptr) const;
    void paintLine(QPainter &painter, int row, const QRectF &rect, const look::RowState &state);
    void paintCell(QPainter &painter, const QRectF &cell, const EmojiItem &item, bool isSelected, bool isHovered,
                   bool isPressed, const look::Theme &theme);
    [[nodiscard]] QString accessibleText(int row) const;

    EmojiPickerModel m_model;
    look::EmojiGlyphs m_glyphs;
    std::vector<Line> m_lines;
    std::optional<emojiGrid::Position> m_selection;
    look::ChipStrip *m_categories = nullptr;
    look::HintBar *m_footer = nullptr;
};

} // namespace tavrine
