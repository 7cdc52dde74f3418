#include "panels/ToastManager.h"

#include "base/Time.h"
#include "ports/PanelWindow.h"

#include <algorithm>

namespace tavrine {
namespace {

/// Titled with its message, as a screen reader tells it.
PanelDescription descriptionOf(const QString &message) {
    return {.title = message,
            .contentSize = {ToastManager::width, ToastManager::height},
            .level = windowLevel::status, // above full-screen windows too, as the collection behaviour asks
            .canBecomeKey = false,
            .hasShadow = false,
            .ignoresMouseEvents = true};
}

} // namespace

ToastManager::ToastManager(Time &time, Screens &screens, PanelWindows &windows, View view, QObject *parent)
    : QObject(parent), m_time(time), m_screens(screens), m_windows(windows), m_view(std::move(view)),
      m_animator(windows, time) {
    m_changes = m_screens.onChange([this] { followScreens(); });
}

ToastManager::~ToastManager() = default;

void ToastManager::show(const QString &message, const QString &icon) {
    m_time.async(this, [this, message, icon] { showNow(message, icon); });
}

void ToastManager::showNow(const QString &message, const QString &icon) {
    close();
    m_window = m_windows.makePanel(descriptionOf(message));
    m_window->setContentView(m_view(message, icon));
    m_frame = m_window->frame();
    m_risen = 0;
    if (const auto screen = m_screens.mainScreen())
        placeOn(*screen);
    m_window->setFrame(m_frame);
    m_window->setAlpha(0.0);
    m_window->orderFrontRegardless();
    riseTo(1.0, riseOnFadeIn, fadeIn);
    m_time.asyncAfter(fadeIn, this, [this] { m_time.asyncAfter(stay, this, [this] { beginFadeOut(); }); });
}

void ToastManager::placeOn(const Screen &screen) {
    m_screen = screen.number;
    m_frame.moveTo(screen.frame.center().x() - width / 2, minY(screen.frame) + heightAboveBottom + m_risen);
}

/// The plane may begin at another screen now, so it is placed anew also where its own is still there.
void ToastManager::followScreens() {
    if (!m_window)
        return;
    const auto screens = m_screens.screens();
    const auto own = std::find_if(screens.begin(), screens.end(),
                                  [this](const Screen &screen) { return screen.number == m_screen; });
    const auto screen = own != screens.end() ? std::optional(*own) : m_screens.mainScreen();
    if (!screen)
        return;
    const QRectF before = m_frame;
    placeOn(*screen);
    if (m_frame == before)
        return;
    m_animator.stop(*m_window);
    m_window->setFrame(m_frame);
    m_window->setAlpha(m_alpha);
}

void ToastManager::beginFadeOut() {
    if (!m_window)
        return;
    riseTo(0.0, riseOnFadeOut, fadeOut);
    m_time.asyncAfter(fadeOut, this, [this] { close(); });
}

void ToastManager::riseTo(double alpha, double rise, Seconds duration) {
    m_frame.translate(0, rise);
    m_risen += rise;
    m_alpha = alpha;
    m_animator.run(*m_window, duration, look::defaultTiming, {.alpha = alpha, .frame = m_frame});
}

void ToastManager::close() {
    if (!m_window)
        return;
    m_animator.stop(*m_window);
    m_window->orderOut();
    m_window.reset();
}

} // namespace tavrine
