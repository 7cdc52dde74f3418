#pragma once

#include "utilities/awake/KeepAwakeControlModel.h"

#include <QWidget>

#include <vector>

namespace tavrine {

class DisclosureButton;
class KeepAwakeHeader;
class KeepAwakeModeButton;
class NoteLine;
class TimeField;
namespace look {
class SegmentedControl;
class Toggle;
} // namespace look

/// The card of Keep Awake in the menu: the switch, the durations, and behind "Advanced Awake modes" the modes, the rule
/// of the battery and the schedule. Paints its model and decides nothing. Main thread; owned by the menu.
///
/// It is `cardWidth` points wide; its height is its size hint, which changes with what it shows.
class KeepAwakeControlView final : public QWidget {
    Q_OBJECT

public:
    static constexpr int cardWidth = 266; // the menu's 290 without its margins

    explicit KeepAwakeControlView(std::unique_ptr<KeepAwakeControlModel> model);
    ~KeepAwakeControlView() override;

Q_SIGNALS:
    /// It wants to be higher or lower than it was.
    void measureChanged();

protected:
    void paintEvent(QPaintEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private:
    QWidget *makeAdvancedPanel();
    QWidget *makeModes();
    QWidget *makeTimes();
    QWidget *makeSwitchRow(const char *title, look::Toggle *&toggle, void (KeepAwakeManager::*set)(bool));
    void refresh();

    std::unique_ptr<KeepAwakeControlModel> m_model;
    int m_measured = 0;
    KeepAwakeHeader *m_header = nullptr;
    look::Toggle *m_switch = nullptr;
    look::SegmentedControl *m_durations = nullptr;
    NoteLine *m_paused = nullptr;
    DisclosureButton *m_disclosure = nullptr;
    QWidget *m_advanced = nullptr;
    std::vector<KeepAwakeModeButton *> m_modes;
    NoteLine *m_lidNote = nullptr;
    look::Toggle *m_chargingOnly = nullptr;
    look::Toggle *m_schedule = nullptr;
    QWidget *m_times = nullptr;
    TimeField *m_start = nullptr;
    TimeField *m_end = nullptr;
    QWidget *m_weekdaysRow = nullptr;
    look::Toggle *m_weekdaysOnly = nullptr;
};

} // namespace tavrine
