#pragma once

#include <QPixmap>
#include <QVariantAnimation>
#include <QWidget>

#include <chrono>

namespace tavrine {

/// What was dragged and taken by nobody, on its way back to where it began. It is there until it has come there, and
/// takes neither clicks nor the keyboard. For a screen on which windows show through others. Main thread.
class ReturningPictureView final : public QWidget {
    Q_OBJECT

public:
    /// Of its upper left corner, on the screen. It destroys itself.
    static void fly(const QPixmap &picture, QPoint from, QPoint to, std::chrono::milliseconds length);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    explicit ReturningPictureView(const QPixmap &picture);

    QPixmap m_picture;
    QVariantAnimation m_flight;
};

} // namespace tavrine
