#include "adapters/wayland/HiddenWindows.h"

#include "base/Descriptor.h"

#include <QEvent>
#include <QGuiApplication>
#include <QObject>
#include <QPointer>
#include <QWindow>
#include <qpa/qplatformnativeinterface.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <unistd.h>
#include <wayland-client-core.h>

namespace tavrine {
namespace {

using Clock = std::chrono::steady_clock;

/// "WaylandEventThread", as the kernel cuts it.
constexpr std::string_view nameOfThreads = "WaylandEventThr";
constexpr std::size_t countOfThreads = 2; ///< for frames, and for all else
constexpr std::chrono::microseconds betweenLooks{50};
/// They are at it for microseconds; a machine on which they have no turn for so long has other troubles than a window.
constexpr std::chrono::seconds longestWait{1};

std::string contentsOf(const std::string &path) {
    const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    char text[512];
    const ssize_t length = ::read(file.number(), text, sizeof text);
    return {text, static_cast<std::size_t>(std::max<ssize_t>(length, 0))};
}

/// Where the kernel tells of each of the toolkit's threads.
std::vector<std::string> threadsOfToolkit() {
    std::vector<std::string> found;
    std::error_code error;
    for (const auto &each : std::filesystem::directory_iterator("/proc/self/task", error))
        if (std::string_view(contentsOf(each.path() / "comm")).starts_with(nameOfThreads))
            found.push_back(each.path() / "stat");
    return found;
}

/// "number (name) S …". One that waits for a page of memory does not: it may be in the middle of what it does.
bool sleeps(const std::string &thread) {
    const std::string told = contentsOf(thread);
    const auto name = told.rfind(") ");
    return name == std::string::npos || told.substr(name + 2).starts_with('S');
}

class HidingGuard final : public QObject {
public:
    explicit HidingGuard(wl_display &display) : QObject(qApp), m_display(display) {
        qApp->installEventFilter(this);
        const auto windows = QGuiApplication::topLevelWindows();
        for (QWindow *window : windows)
            watch(*window);
    }

protected:
    bool eventFilter(QObject *object, QEvent *event) override {
        if (!object->isWindowType())
            return false;
        if (event->type() == QEvent::PlatformSurface)
            watch(static_cast<QWindow &>(*object));
        else if (event->type() == QEvent::Hide)
            release();
        return false;
    }

private:
    /// This signal is the last that is heard of it before its surface goes; its event is the first after that.
    void watch(QWindow &window) {
        connect(&window, &QWindow::visibleChanged, this, &HidingGuard::visibleChanged, Qt::UniqueConnection);
    }
    void visibleChanged(bool isVisible) {
        const auto *window = static_cast<QWindow *>(sender());
        if (!isVisible && window && window->handle())
            hold();
    }

    /// No thread is given anything while one that could read does not, so what a thread has is all that it will have.
    void hold() {
        if (m_queue)
            return;
        // Where its event does not come, because someone took it, or the window is gone.
        QMetaObject::invokeMethod(
            this, [this] { release(); }, Qt::QueuedConnection);
        m_queue = wl_display_create_queue(&m_display);
        (void)wl_display_prepare_read_queue(&m_display, m_queue); // this queue is empty
        if (m_threads.size() < countOfThreads)                    // each has its name only once it has had a turn
            m_threads = threadsOfToolkit();
        // One that waits for another's lock sleeps too; that other is found awake, or the first is, the second time.
        const auto end = Clock::now() + longestWait;
        for (int sweeps = 0; sweeps < 2 && Clock::now() < end; ++sweeps)
            if (!std::all_of(m_threads.begin(), m_threads.end(), sleeps)) {
                sweeps = -1;
                std::this_thread::sleep_for(betweenLooks);
            }
    }
    void release() {
        if (!m_queue)
            return;
        wl_display_cancel_read(&m_display);
        wl_event_queue_destroy(std::exchange(m_queue, nullptr));
    }

    wl_display &m_display;
    std::vector<std::string> m_threads;
    wl_event_queue *m_queue = nullptr; ///< while a window is being hidden
};

} // namespace

void hiddenWindows::guard() {
    static QPointer<HidingGuard> theGuard;
    if (theGuard || !QGuiApplication::platformName().startsWith(QLatin1String("wayland")))
        return;
    auto *const display = static_cast<wl_display *>(
        QGuiApplication::platformNativeInterface()->nativeResourceForIntegration("wl_display"));
    if (display)
        theGuard = new HidingGuard(*display);
}

} // namespace tavrine
