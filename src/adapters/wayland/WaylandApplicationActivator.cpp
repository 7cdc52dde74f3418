#include "adapters/wayland/WaylandApplicationActivator.h"

#include "adapters/wayland/WaylandWorkspace.h"

#include <QGuiApplication>
#include <QWindow>

#include <algorithm>

namespace tavrine {
namespace {

bool isOurs(const WaylandWindow &window) {
    const auto program = programOf(window);
    return program && isThisProgram(*program);
}

} // namespace

WaylandApplicationActivator::WaylandApplicationActivator(std::shared_ptr<WaylandWindows> windows)
    : m_windows(std::move(windows)), m_following(m_windows->follow([this] {
          if (!m_expected.isEmpty() && bringForward(m_expected))
              m_expected.clear();
      })) {}

WaylandApplicationActivator::~WaylandApplicationActivator() = default;

const WaylandWindow *WaylandApplicationActivator::windowOf(const RunningApplication &application) const {
    m_windows->refresh();
    if (const WaylandWindow *const same = m_windows->find(application.window))
        return same;
    // That window is closed; the program may have others, of which the newest counts.
    const auto &all = m_windows->all();
    const auto found = std::find_if(all.rbegin(), all.rend(), [&application](const WaylandWindow &window) {
        const auto program = programOf(window);
        return program && isSameApplication(*program, application);
    });
    return found == all.rend() ? nullptr : &*found;
}

bool WaylandApplicationActivator::isRunning(const RunningApplication &application) const {
    return windowOf(application) != nullptr;
}

bool WaylandApplicationActivator::activate(const RunningApplication &application) {
    const WaylandWindow *const window = windowOf(application);
    if (!window)
        return false;
    m_windows->activate(window->number);
    return true;
}

void WaylandApplicationActivator::bringForward(quint32 window) {
    const auto windows = QGuiApplication::topLevelWindows();
    const auto found = std::ranges::find_if(windows, [window](const QWindow *each) {
        return each->handle() && static_cast<quint32>(each->winId()) == window;
    });
    if (found == windows.end())
        return;
    const QString title = (*found)->title();
    m_windows->refresh();
    m_expected = bringForward(title) ? QString() : title;
}

bool WaylandApplicationActivator::bringForward(const QString &title) {
    const auto found = std::ranges::find_if(
        m_windows->all(), [&title](const WaylandWindow &each) { return isOurs(each) && each.title == title; });
    if (found == m_windows->all().end())
        return false;
    if (!found->isActive)
        m_windows->activate(found->number);
    return true;
}

void WaylandApplicationActivator::hide() {
    m_expected.clear();
    for (const WaylandWindow &window : m_windows->all())
        if (isOurs(window))
            m_windows->minimize(window.number);
}

} // namespace tavrine
