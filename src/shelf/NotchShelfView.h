#pragma once

#include "look/MotionClock.h"
#include "shelf/ShelfPorts.h"

#include <QPixmap>
#include <QPointer>
#include <QWidget>

#include <functional>

namespace tavrine {

namespace look {
class Button;
}
class NotchViewModel;
class ShelfRowView;

/// What the shelf shows in its black shape: nothing at rest, a prompt while something can be dropped, or the row of
/// what it holds. Main thread.
///
/// What it shows hangs from the lower edge of the window, so that a window that grows pulls it out and one that shrinks
/// pushes it back. Nothing moves, and nothing ticks, while nothing changes.
class NotchShelfView final : public QWidget {
    Q_OBJECT
public:
    static constexpr int itemsHeight = 200; ///< of the window, below its height at rest
    static constexpr int promptHeight = 55;

    enum class Content { nothing, dropHint, dropTarget, items };

    /// `dismiss` is called when a person leaves the shelf by the keyboard.
    NotchShelfView(NotchViewModel &viewModel, const ShelfPorts &ports, std::function<void()> dismiss,
                   QWidget *parent = nullptr);
    ~NotchShelfView() override;

    [[nodiscard]] Content content() const { return m_content; }
    /// How large the prompt's symbol is at the moment, by its own size.
    [[nodiscard]] double pulseScale() const { return m_pulseScale; }
    [[nodiscard]] ShelfRowView &row();

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    bool event(QEvent *event) override;

private:
    class Pane;

    /// Made when what is held is shown for the first time.
    Pane &pane();
    void follow(const look::Spring &spring);
    void followFileDrag();
    [[nodiscard]] bool takeContent();
    void showPart(double part);
    void pulse();
    void place();
    void recolour();
    void paintPrompt(QPainter &painter, Content content, double part);

    QPointer<NotchViewModel> m_viewModel;
    std::function<void()> m_dismiss;
    const ShelfPorts m_ports;
    Pane *m_pane = nullptr;
    Content m_content = Content::nothing;
    Content m_before = Content::nothing;
    QPixmap m_leaving; ///< the row while it fades
    look::Motion m_change;
    look::Motion m_pulse;
    double m_part = 1; ///< of the way from what was shown before
    double m_pulseScale = 1;
};

/// "1 item", "3 items".
[[nodiscard]] QString itemCountText(qsizetype count);

} // namespace tavrine
