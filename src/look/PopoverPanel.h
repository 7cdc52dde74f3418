#pragma once

#include <QPointer>
#include <QWidget>

namespace tavrine {

/// A small panel that hangs under a control while something is chosen, and goes with a click elsewhere or Escape. Owned
/// by the control; main thread.
///
/// A click on the control itself closes the panel and is not heard by the control again, so that it does not open anew.
class PopoverPanel : public QWidget {
    Q_OBJECT
public:
    explicit PopoverPanel(QWidget *anchor);

    /// The margin round the content is the panel's.
    void setContent(QWidget *content);
    /// Centred on the anchor: above it in the lower half of its window and where the screen ends, else under it.
    void open();

Q_SIGNALS:
    void closed();

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    QPointer<QWidget> m_anchor;
};

} // namespace tavrine
