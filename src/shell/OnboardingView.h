#pragma once

#include "look/MotionClock.h"
#include "look/PanelSurface.h"
#include "shell/OnboardingModel.h"

#include <QPixmap>
#include <QWidget>

namespace tavrine {

namespace look {
class Button;
}

/// The welcome window's content: three pages, one at a time, with a dot for each at the bottom. Dark on every desktop.
/// It paints its model; what a button does is the model's.
///
/// Belongs to the welcome window; lives on the main thread. Return goes on from anywhere but a button that has the
/// keyboard itself.
class OnboardingView : public look::PanelSurface {
    Q_OBJECT

public:
    /// The ports outlive the view. `onClose` is called when the person has finished, and may destroy the view later,
    /// not within the call.
    OnboardingView(const OnboardingModel::Ports &ports, std::function<void()> onClose, QWidget *parent = nullptr);
    ~OnboardingView() override;

    /// The window of a first run, not yet shown: titled, in the middle of the screen, of a fixed size where the screen
    /// has room for it, without a close button, and moved by its ground.
    [[nodiscard]] static std::unique_ptr<QWidget> makeWindow(const OnboardingModel::Ports &ports,
                                                             std::function<void()> onClose);

    [[nodiscard]] QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void showPage();
    void turnPages(const QPixmap &from);
    void moveDots();
    [[nodiscard]] QRect pageRect() const;

    OnboardingModel m_model;
    std::vector<QWidget *> m_pages;
    std::vector<look::Button *> m_forward; ///< the button that leads on, of each page
    QWidget *m_turning = nullptr;          ///< the two pages' pictures, on top while they change places
    look::Motion m_turn;
    look::Motion m_dotMotion;
    std::array<double, OnboardingModel::pageCount> m_dots{1, 0, 0}; ///< how much each dot is the current one
};

} // namespace tavrine
