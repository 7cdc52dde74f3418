#pragma once

#include "look/Tile.h"
#include "shell/menu/QuickActionsModel.h"

#include <map>

namespace tavrine {

/// A tile that does something.
class ControlCenterActionTile final : public look::Tile {
    Q_OBJECT

public:
    ControlCenterActionTile(const QString &icon, const QString &title, const QString &subtitle,
                            QWidget *parent = nullptr);
};

/// A tile that is on or off; a press asks for the other state, and its owner says what comes of it.
class ControlCenterToggle final : public look::Tile {
    Q_OBJECT

public:
    ControlCenterToggle(const QString &icon, const QString &title, const QString &subtitleOff,
                        QWidget *parent = nullptr);

protected:
    void nextCheckState() override {}
};

/// The grid of controls in the menu: rows of cards and tiles, as its model has them. Belongs to the menu; main thread.
class QuickActionsGrid final : public QWidget {
    Q_OBJECT

public:
    static constexpr int width = 290;
    static constexpr int padding = 12;
    static constexpr int spacing = 8;

    /// What stands in a card; null for none. The grid takes it over.
    using MakeCard = std::function<QWidget *(QuickAction)>;

    /// The model outlives the grid.
    QuickActionsGrid(QuickActionsModel &model, MakeCard makeCard, QWidget *parent = nullptr);
    ~QuickActionsGrid() override;

    /// The height that all rows take.
    [[nodiscard]] int measuredHeight() const;
    [[nodiscard]] QSize sizeHint() const override { return {width, measuredHeight()}; }

Q_SIGNALS:
    /// A card wants to be higher or lower than it was.
    void measureChanged();

protected:
    bool event(QEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void refresh();
    void place();
    [[nodiscard]] QWidget *widgetFor(QuickAction action);
    [[nodiscard]] QWidget *makeTile(QuickAction action);
    [[nodiscard]] int rowHeight(const LayoutRow &row) const;

    QuickActionsModel &m_model;
    MakeCard m_makeCard;
    std::vector<LayoutRow> m_rows;
    std::map<QuickAction, QWidget *> m_widgets;
    int m_measured = 0;
};

} // namespace tavrine
