#pragma once

#include <QPointer>
#include <QWidget>

namespace tavrine::look {

/// The ring round the control that has the keyboard. It lies over the neighbours, so that controls need no room for it,
/// and follows its control until it is destroyed. Owned by the control; a child of the nearest widget it fits into.
class FocusRing final : public QWidget {
    Q_OBJECT
public:
    /// `body` is what the ring goes round, in the control's coordinates.
    FocusRing(QWidget *control, const QRectF &body, qreal cornerRadius);

protected:
    void paintEvent(QPaintEvent *event) override;
    bool eventFilter(QObject *object, QEvent *event) override;

private:
    void place();

    QPointer<QWidget> m_control;
    QRectF m_body;
    qreal m_radius;
};

} // namespace tavrine::look
