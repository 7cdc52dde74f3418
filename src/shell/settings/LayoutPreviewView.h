#pragma once

#include "look/MotionClock.h"
#include "shell/settings/LayoutSettingsModel.h"

#include <QWidget>

#include <map>
#include <optional>

namespace tavrine {

/// The Quick Actions as they will stand in the menu, to be ordered by hand: each place can be dragged over another one,
/// or moved with the arrow keys. A drag moves the place and not the window. Follows its model, which outlives it; main
/// thread.
class LayoutPreviewView final : public QWidget {
    Q_OBJECT

public:
    explicit LayoutPreviewView(LayoutSettingsModel &model, QWidget *parent = nullptr);
    ~LayoutPreviewView() override;

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    class Item;

    void refresh();
    [[nodiscard]] int previewWidth() const;
    [[nodiscard]] std::map<QuickAction, QRect> places() const;
    void moveTo(const std::map<QuickAction, QRect> &places, bool isAnimated);
    void dragged(QuickAction action, QPoint place);

    LayoutSettingsModel &m_model;
    std::map<QuickAction, Item *> m_items;
    std::vector<LayoutRow> m_rows;
    look::Motion m_motion;
    std::optional<QuickAction> m_over; ///< what the dragged place is over
};

} // namespace tavrine
