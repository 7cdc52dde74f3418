#pragma once

#include "look/Tile.h"
#include "shell/settings/ClipboardSettingsModel.h"

class QMenu;

namespace tavrine {

namespace look {
class Button;
}

/// The programs whose copies are not recorded, each with its icon and a button that takes it off the list, and the way
/// to add one. Follows its model, which outlives it; main thread.
class ExcludedAppsView final : public look::Card {
    Q_OBJECT

public:
    explicit ExcludedAppsView(ClipboardSettingsModel &model, QWidget *parent = nullptr);
    ~ExcludedAppsView() override;

    /// What "Add" offers: the programs that run, and the way to a program's file.
    void fill(QMenu &menu);

private:
    class Row;

    void refresh();
    void showMenu();

    ClipboardSettingsModel &m_model;
    QWidget *m_rows;
    QWidget *m_none;
    look::Button *m_add;
};

} // namespace tavrine
