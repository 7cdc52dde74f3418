#include "panels/ToastManager.h"

#include "base/Time.h"
#include "ports/Screens.h"
#include "ports/ToastWindow.h"

namespace tavrine {

ToastManager::ToastManager(Time &time, Screens &screens, ToastWindows &windows, QObject *parent)
    : QObject(parent), m_time(time), m_screens(screens), m_windows(windows) {}

ToastManager::~ToastManager() = default;

void ToastManager::show(const QString &message, const QString &icon) {
    m_time.async(this, [this, message, icon] { showNow(message, icon); });
}

void ToastManager::showNow(const QString &message, const QString &icon) {
    m_window.reset();
    const ToastDescription description{.message = message, .icon = icon};
    m_window = m_windows.makeToastWindow(description);
    if (const auto screen = m_screens.mainScreen()) {
        const double left = screen->frame.center().x() - description.size.width() / 2;
        m_window->setFrameOrigin({left, minY(screen->frame) + heightAboveBottom});
    }
    m_origin = m_window->frameOrigin();
    m_window->setAlpha(0.0);
    m_window->orderFront();
    riseTo(1.0, riseOnFadeIn, fadeIn);
    m_time.asyncAfter(fadeIn, this, [this] { m_time.asyncAfter(stay, this, [this] { beginFadeOut(); }); });
}

void ToastManager::beginFadeOut() {
    if (!m_window)
        return;
    riseTo(0.0, riseOnFadeOut, fadeOut);
    m_time.asyncAfter(fadeOut, this, [this] { m_window.reset(); });
}

void ToastManager::riseTo(double alpha, double rise, Seconds duration) {
    m_origin += QPointF(0, rise);
    m_window->animate(alpha, m_origin, duration);
}

} // namespace tavrine
