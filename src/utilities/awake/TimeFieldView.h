#pragma once

#include "utilities/awake/KeepAwakeSchedule.h"

#include <QTimeEdit>

namespace tavrine {

/// A time of the day that is typed, or moved by the arrow keys, the wheel or its two arrows, in the form of the
/// person's language.
class TimeField final : public QTimeEdit {
    Q_OBJECT

public:
    explicit TimeField(const QString &name, QWidget *parent = nullptr);

    [[nodiscard]] TimeOfDay timeOfDay() const { return {time().hour(), time().minute()}; }
    /// Does not emit.
    void setTimeOfDay(TimeOfDay time);
    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override { return sizeHint(); }

Q_SIGNALS:
    /// A person set another time.
    void chosen(tavrine::TimeOfDay time);

protected:
    void paintEvent(QPaintEvent *event) override;
    bool event(QEvent *event) override;

private:
    void recolour();
};

} // namespace tavrine
