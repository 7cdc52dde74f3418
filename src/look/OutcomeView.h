#pragma once

#include "look/MotionClock.h"

#include <QWidget>

namespace tavrine::look {
class Button;

/// A button, or in its place for a while that what it does is done, which fades in. As wide as the wider of the two.
/// Main thread.
class OutcomeView final : public QWidget {
    Q_OBJECT

public:
    static constexpr auto doneSymbol = "checkmark.circle.fill";

    /// Takes the button over.
    OutcomeView(Button *button, const QString &doneText, QWidget *parent = nullptr);

    void setDone(bool isDone);
    [[nodiscard]] QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    Button *m_button;
    QString m_doneText;
    Motion m_appearing;
    double m_opacity = 0; // of what says that it is done
    bool m_isDone = false;
};

} // namespace tavrine::look
