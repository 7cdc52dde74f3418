#pragma once

#include "look/MotionClock.h"

#include <QWidget>

#include <memory>

namespace tavrine {

class LofiPlayerModel;

/// The card of the music among the quick actions: what sounds, how it stands, and the button. Everything else is in its
/// context menu, which the menu key opens too. Main thread; owned by its window.
class LofiMiniPlayer final : public QWidget {
    Q_OBJECT

public:
    static constexpr int cardWidth = 266;
    static constexpr int cardHeight = 64;

    explicit LofiMiniPlayer(std::unique_ptr<LofiPlayerModel> model, QWidget *parent = nullptr);
    ~LofiMiniPlayer() override;

    [[nodiscard]] QSize sizeHint() const override { return {cardWidth, cardHeight}; }

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;

private:
    class PlayButton;

    void refresh();

    std::unique_ptr<LofiPlayerModel> m_model;
    PlayButton *m_button;
    look::Motion m_glow;
    double m_glowPart; ///< 0 dark, 1 glowing
};

} // namespace tavrine
