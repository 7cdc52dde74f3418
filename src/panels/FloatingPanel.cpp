#include "panels/FloatingPanel.h"

#include "base/Time.h"
#include "look/Look.h"
#include "look/Shadow.h"
#include "panels/Placement.h"

#include <algorithm>

namespace tavrine {
namespace {

constexpr Seconds untilAnswered{0.05};

void paintPanelShadow(QPainter &painter, const QRectF &panel) {
    if (const look::Look *look = look::Look::current())
        look::paintPanelShadow(painter, panel, look->theme());
}

} // namespace

FloatingPanel::FloatingPanel(Ports ports, Traits traits)
    : m_ports(ports), m_traits(std::move(traits)), m_animator(ports.windows, ports.time) {
    if (m_traits.description.hasShadow)
        m_traits.description.shadow = {.room = look::shadowMargins, .paint = paintPanelShadow};
    if (const look::Look *look = look::Look::current())
        connect(look, &look::Look::changed, this, [this] {
            if (m_window)
                m_window->compositingChanged();
        });
}

FloatingPanel::~FloatingPanel() = default;

void FloatingPanel::build(QWidget *content, QSizeF size) {
    m_traits.description.contentSize = size;
    build(content);
}

void FloatingPanel::build(QWidget *content) {
    release(Dismissal::atOnce);
    m_window = m_ports.windows.makePanel(m_traits.description);
    m_window->setContentView(content);
    m_window->setOnMoved([this] {
        if (m_onMoved)
            m_onMoved();
    });
    m_window->setOnClosed([this] {
        if (m_onClosed)
            m_onClosed();
        else
            dismiss(Dismissal::animated);
    });
    if (m_traits.placed == Placed::once)
        place();
    m_screenChanges = m_ports.screens.onChange([this] { keepOnScreen(); });
}

void FloatingPanel::show() {
    ++m_showing;
    rest();
    if (m_traits.placed == Placed::atEachShowing)
        place();
    m_window->setAlpha(m_traits.motion.fadeIn.count() > 0 ? 0.0 : 1.0);
    orderFront();
    if (m_traits.motion.fadeIn.count() > 0)
        m_animator.run(*m_window, m_traits.motion.fadeIn, m_traits.motion.timingIn, {.alpha = 1.0, .frame = {}});
}

void FloatingPanel::orderFront() {
    m_isAside = false;
    if (m_traits.description.canBecomeKey)
        m_window->makeKeyAndOrderFront();
    else
        m_window->orderFrontRegardless();
}

bool FloatingPanel::setAside() {
    bool wasOnScreen = false;
    for (const auto &leaving : m_leaving) {
        wasOnScreen = wasOnScreen || leaving->isVisible();
        leaving->orderOut();
    }
    if (!isVisible())
        return wasOnScreen;
    m_isAside = !m_restingFrame; // one that was on its way off does not come back
    orderOut();
    return true;
}

void FloatingPanel::bringBack() {
    if (m_isAside)
        orderFront();
}

QRectF FloatingPanel::frame() const {
    return m_restingFrame ? *m_restingFrame : m_window->frame();
}

void FloatingPanel::place() {
    const auto frame = m_traits.placement(m_ports.screens, m_traits.description.contentSize);
    if (frame)
        m_window->setFrame(isWhollyOnAScreen(m_ports.screens, *frame) ? *frame
                                                                      : movedOntoAScreen(m_ports.screens, *frame));
}

void FloatingPanel::placeAgain() {
    if (isVisible() && !m_restingFrame)
        place();
}

/// A screen that goes takes no window with it, and one that shrinks leaves none outside.
void FloatingPanel::keepOnScreen() {
    if (isWhollyOnAScreen(m_ports.screens, frame()))
        return;
    if (m_restingFrame)
        m_restingFrame = movedOntoAScreen(m_ports.screens, *m_restingFrame); // it is on its way off
    else if (m_traits.placed == Placed::atEachShowing)
        place();
    else
        m_window->setFrame(movedOntoAScreen(m_ports.screens, frame()));
}

void FloatingPanel::fadeOut(PanelWindow &window, PanelAnimator::Completion completion) {
    const Motion &motion = m_traits.motion;
    PanelAnimator::Target target{.alpha = 0.0, .frame = {}};
    if (motion.shrinksTo < 1 && m_animator.animates())
        target.frame = centredIn(window.frame(), window.frame().size() * motion.shrinksTo);
    m_animator.run(window, motion.fadeOut, motion.timingOut, target, std::move(completion));
}

/// As it is between two animations.
void FloatingPanel::rest() {
    m_animator.stop(*m_window);
    if (const auto frame = std::exchange(m_restingFrame, std::nullopt))
        m_window->setFrame(*frame);
    m_window->setAlpha(1.0);
}

void FloatingPanel::dismiss(Dismissal dismissal) {
    if (!isVisible())
        return;
    if (dismissal == Dismissal::atOnce || m_traits.motion.fadeOut.count() <= 0) {
        orderOut();
        return;
    }
    if (m_restingFrame)
        return; // it is on its way
    m_restingFrame = m_window->frame();
    fadeOut(*m_window, [this, showing = m_showing] {
        if (m_window && showing == m_showing)
            orderOut();
    });
}

void FloatingPanel::orderOut() {
    ++m_showing;
    m_window->orderOut();
    rest();
}

void FloatingPanel::release(Dismissal dismissal, Done done) {
    if (!m_window)
        return;
    ++m_showing;
    m_isAside = false;
    m_screenChanges.reset();
    m_restingFrame.reset();
    std::unique_ptr<PanelWindow> window = std::move(m_window);
    const bool fades = dismissal == Dismissal::animated && window->isVisible() && m_animator.animates() &&
                       m_traits.motion.fadeOut.count() > 0;
    if (!fades) {
        m_animator.stop(*window);
        tearDown(std::move(window));
        if (done)
            m_ports.time.async(this, std::move(done));
        return;
    }
    PanelWindow &leaving = *window;
    m_leaving.push_back(std::move(window));
    fadeOut(leaving, [this, &leaving, done = std::move(done)] {
        const auto found = std::find_if(m_leaving.begin(), m_leaving.end(),
                                        [&leaving](const auto &candidate) { return candidate.get() == &leaving; });
        std::unique_ptr<PanelWindow> gone = std::move(*found);
        m_leaving.erase(found);
        tearDown(std::move(gone));
        if (done)
            done();
    });
}

void FloatingPanel::tearDown(std::unique_ptr<PanelWindow> window) {
    window->orderOut();
    m_tornDown.push_back(std::move(window));
    m_ports.time.async(this, [this] { clearTornDown(); });
}

void FloatingPanel::clearTornDown() {
    if (m_ports.windows.isAsking()) // its content may be what asks, and is not done with the answer
        m_ports.time.asyncAfter(untilAnswered, this, [this] { clearTornDown(); });
    else
        m_tornDown.clear();
}

} // namespace tavrine
