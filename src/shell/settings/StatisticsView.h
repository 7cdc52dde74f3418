#pragma once

#include "shell/settings/ClipboardSettingsModel.h"

#include <QWidget>

namespace tavrine {

/// Four figures of the history side by side. Follows its model, which outlives it; main thread.
class StatisticsView final : public QWidget {
    Q_OBJECT

public:
    explicit StatisticsView(ClipboardSettingsModel &model, QWidget *parent = nullptr);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void refresh();

    ClipboardSettingsModel &m_model;
};

} // namespace tavrine
