#include "panels/ToastManager.h"

#include "base/Time.h"
#include "ports/PanelWindow.h"
#include "ports/Screens.h"

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
      m_animator(windows, time) {}

ToastManager::~ToastManager() = default;

void ToastManager::show(const QString &message, const QString &icon) {
    m_time.async(this, [this, message, icon] { showNow(message, icon); });
}

void ToastManager::showNow(const QString &message, const QString &icon) {
    close();
    m_window = m_windows.makePanel(descriptionOf(message));
    m_window->setContentView(m_view(message, icon));
    m_frame = m_window->frame();
    if (const auto screen = m_screens.mainScreen())
        m_frame.moveTo(screen->frame.center().x() - width / 2, minY(screen->frame) + heightAboveBottom);
    m_window->setFrame(m_frame);
    m_window->setAlpha(0.0);
    m_window->orderFrontRegardless();
    riseTo(1.0, riseOnFadeIn, fadeIn);
    m_time.asyncAfter(fadeIn, this, [this] { m_time.asyncAfter(stay, this, [this] { beginFadeOut(); }); });
}

void ToastManager::beginFadeOut() {
    if (!m_window)
        return;
    riseTo(0.0, riseOnFadeOut, fadeOut);
    m_time.asyncAfter(fadeOut, this, [this] { close(); });
}

void ToastManager::riseTo(double alpha, double rise, Seconds duration) {
    m_frame.translate(0, rise);
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
