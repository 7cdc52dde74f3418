#include "utilities/awake/KeepAwakeControlView.h"

#include "base/DesktopWords.h"
#include "look/Accessibility.h"
#include "look/Indicators.h"
#include "look/Look.h"
#include "look/Metrics.h"
#include "look/Paint.h"
#include "look/SegmentedControl.h"
#include "look/Toggle.h"
#include "utilities/awake/KeepAwakePartsView.h"
#include "utilities/awake/TimeFieldView.h"

#include <QHBoxLayout>
#include <QPainter>
#include <QVBoxLayout>

namespace tavrine {
namespace {

constexpr int margin = look::space::medium;
constexpr int contentWidth = KeepAwakeControlView::cardWidth - 2 * margin;

QVBoxLayout *columnIn(QWidget *widget) {
    auto *column = new QVBoxLayout(widget);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(look::space::hair);
    return column;
}

} // namespace

KeepAwakeControlView::KeepAwakeControlView(std::unique_ptr<KeepAwakeControlModel> model) : m_model(std::move(model)) {
    setFixedWidth(cardWidth);
    look::setRole(*this, QAccessible::Grouping);
    setAccessibleName(inDesktopWords(QLatin1String(KeepAwakeControlModel::title)));
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(margin, margin, margin, margin);
    column->setSpacing(look::space::small);

    auto *top = new QHBoxLayout;
    m_header = new KeepAwakeHeader;
    m_switch = new look::Toggle;
    m_switch->setAccessibleName(inDesktopWords(QLatin1String(KeepAwakeControlModel::title)));
    connect(m_switch, &QAbstractButton::clicked, this, [this] {
        m_model->manager().toggle();
        refresh(); // it may have done nothing
    });
    top->addWidget(m_header, 1);
    top->addWidget(m_switch);
    column->addLayout(top);

    QStringList labels;
    for (const KeepAwakeDurationRow &row : keepAwakeDurations)
        labels.append(QLatin1String(row.label));
    m_durations = new look::SegmentedControl(labels);
    m_durations->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    m_durations->setMinimumWidth(0);
    connect(m_durations, &look::SegmentedControl::pressed, this,
            [this](int index) { m_model->manager().setDuration(keepAwakeDurations[size_t(index)].duration); });
    column->addWidget(m_durations);

    m_paused = new NoteLine(QLatin1String(KeepAwakeControlModel::pausedNote), contentWidth);
    column->addWidget(m_paused);
    m_disclosure = new DisclosureButton(QLatin1String(KeepAwakeControlModel::advancedTitle));
    connect(m_disclosure, &QAbstractButton::clicked, this, [this] { m_model->toggleAdvancedPanel(); });
    column->addWidget(m_disclosure);
    m_advanced = makeAdvancedPanel();
    column->addWidget(m_advanced);

    connect(m_model.get(), &KeepAwakeControlModel::changed, this, [this] { refresh(); });
    refresh();
}

KeepAwakeControlView::~KeepAwakeControlView() = default;

QWidget *KeepAwakeControlView::makeAdvancedPanel() {
    auto *panel = new QWidget;
    auto *column = columnIn(panel);
    column->addWidget(makeModes());
    m_lidNote = new NoteLine(QLatin1String(KeepAwakeControlModel::lidNote), contentWidth);
    column->addWidget(m_lidNote);
    column->addWidget(
        makeSwitchRow(KeepAwakeControlModel::chargingOnlyTitle, m_chargingOnly, &KeepAwakeManager::setChargingOnly));
    column->addWidget(
        makeSwitchRow(KeepAwakeControlModel::scheduleTitle, m_schedule, &KeepAwakeManager::setScheduleEnabled));
    m_times = makeTimes();
    column->addWidget(m_times);
    m_weekdaysRow =
        makeSwitchRow(KeepAwakeControlModel::weekdaysOnlyTitle, m_weekdaysOnly, &KeepAwakeManager::setWeekdaysOnly);
    column->addWidget(m_weekdaysRow);
    return panel;
}

QWidget *KeepAwakeControlView::makeModes() {
    auto *modes = new QWidget; // the buttons exclude each other among its children
    auto *column = columnIn(modes);
    for (const KeepAwakeModeRow &row : keepAwakeModes) {
        auto *button = new KeepAwakeModeButton(row);
        connect(button, &QAbstractButton::clicked, this, [this, mode = row.mode] { m_model->manager().setMode(mode); });
        m_modes.push_back(button);
        column->addWidget(button);
    }
    return modes;
}

QWidget *KeepAwakeControlView::makeTimes() {
    auto *times = new QWidget;
    auto *row = new QHBoxLayout(times);
    row->setContentsMargins(look::space::small + 2, 0, look::space::small + 2, look::space::tiny);
    m_start = new TimeField(QStringLiteral("Schedule start"));
    m_end = new TimeField(QStringLiteral("Schedule end"));
    connect(m_start, &TimeField::chosen, this, [this](TimeOfDay time) { m_model->manager().setScheduleStart(time); });
    connect(m_end, &TimeField::chosen, this, [this](TimeOfDay time) { m_model->manager().setScheduleEnd(time); });
    row->addWidget(m_start);
    row->addStretch();
    row->addWidget(new look::Label(QStringLiteral("–"), look::TextRole::body, look::Label::Tone::secondary));
    row->addStretch();
    row->addWidget(m_end);
    return times;
}

QWidget *KeepAwakeControlView::makeSwitchRow(const char *title, look::Toggle *&toggle,
                                             void (KeepAwakeManager::*set)(bool)) {
    auto *row = new SwitchRow(QLatin1String(title));
    toggle = &row->toggle();
    connect(toggle, &QAbstractButton::clicked, this, [this, set](bool isOn) { (m_model->manager().*set)(isOn); });
    return row;
}

void KeepAwakeControlView::refresh() {
    const KeepAwakeManager &manager = m_model->manager();
    m_header->set(manager.isAwake(), m_model->status());
    m_switch->setChecked(manager.isHolding());
    m_durations->setCurrent(static_cast<int>(manager.selectedDuration()));
    m_paused->setVisible(m_model->isPausedOnBattery());
    m_disclosure->setChecked(manager.showAdvancedPanel());
    m_advanced->setVisible(manager.showAdvancedPanel());
    for (size_t i = 0; i < m_modes.size(); ++i)
        m_modes[i]->setChecked(keepAwakeModes[i].mode == manager.selectedMode());
    m_lidNote->setVisible(m_model->showsLidNote());
    m_chargingOnly->setChecked(manager.chargingOnly());
    m_schedule->setChecked(manager.scheduleEnabled());
    m_times->setVisible(m_model->showsTimes());
    m_start->setTimeOfDay(manager.scheduleStart());
    m_end->setTimeOfDay(manager.scheduleEnd());
    m_weekdaysRow->setVisible(m_model->showsTimes());
    m_weekdaysOnly->setChecked(manager.weekdaysOnly());
    updateGeometry();
    layout()->activate();
    if (const int measured = sizeHint().height(); std::exchange(m_measured, measured) != measured)
        Q_EMIT measureChanged();
}

void KeepAwakeControlView::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    look::preparePainter(painter);
    look::paintCard(painter, rect(), look::themeOf(this));
}

void KeepAwakeControlView::showEvent(QShowEvent *event) {
    QWidget::showEvent(event);
    m_model->setOnScreen(true);
}

void KeepAwakeControlView::hideEvent(QHideEvent *event) {
    QWidget::hideEvent(event);
    m_model->setOnScreen(false);
}

} // namespace tavrine
