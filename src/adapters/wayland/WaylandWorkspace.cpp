#include "adapters/wayland/WaylandWorkspace.h"

#include "adapters/linux/FileManager.h"
#include "adapters/linux/KnownPrograms.h"
#include "base/Program.h"

#include <QGuiApplication>
#include <QWindow>

#include <algorithm>

namespace tavrine {
namespace {

// From the window that lost the keyboard to the next, and from our panel's loss of it, told on another connection.
constexpr auto longestPause = std::chrono::milliseconds(100);

} // namespace

std::optional<RunningApplication> programOf(const WaylandWindow &window) {
    if (window.processIdentifier == QCoreApplication::applicationPid() || window.applicationId == ownBundleIdentifier)
        return RunningApplication{ownBundleIdentifier, QStringLiteral("Tavrine"), QCoreApplication::applicationPid(),
                                  window.number};
    if (window.applicationId.isEmpty())
        return std::nullopt;
    const KnownProgram program = knownProgram(window.applicationId, window.applicationId);
    return RunningApplication{.bundleIdentifier = program.bundleIdentifier,
                              .localizedName = program.name,
                              .processIdentifier = window.processIdentifier,
                              .window = window.number};
}

WaylandWorkspace::WaylandWorkspace(std::shared_ptr<WaylandWindows> windows)
    : m_windows(std::move(windows)), m_following(m_windows->follow([this] { update(); })) {
    m_pause.setSingleShot(true);
    m_pause.setInterval(longestPause);
    m_pause.callOnTimeout([this] {
        if (!m_windows->refresh()) // what comes next is not said yet
            return m_pause.start();
        m_isPauseOver = true;
        update();
    });
    connect(qGuiApp, &QGuiApplication::focusWindowChanged, this, [this] { update(); });
    update();
}

WaylandWorkspace::~WaylandWorkspace() = default;

/// A window of this program that the compositor tells of as of any other is active itself.
bool WaylandWorkspace::hasPanelTheKeyboard() const {
    return QGuiApplication::focusWindow() != nullptr;
}

void WaylandWorkspace::update() {
    const WaylandWindow *const active = m_windows->active();
    auto next = active ? programOf(*active) : std::nullopt;
    const bool isLost = !active && m_frontmost;
    if (isLost && m_windows->find(m_frontmost->window) && hasPanelTheKeyboard()) {
        m_isPauseOver = false;
        m_pause.stop();
        return;
    }
    if (isLost && !m_isPauseOver) {
        if (!m_pause.isActive())
            m_pause.start();
        return;
    }
    m_pause.stop();
    m_isPauseOver = false;
    become(std::move(next));
}

void WaylandWorkspace::become(std::optional<RunningApplication> next) {
    if (m_frontmost && !(next && isSameApplication(*m_frontmost, *next)))
        // In a turn of its own, never within a question.
        QMetaObject::invokeMethod(
            this,
            [this, left = *m_frontmost] {
                m_center.post(QLatin1String(didDeactivateApplicationNotification),
                              {{QLatin1String(applicationKey), QVariant::fromValue(left)}});
            },
            Qt::QueuedConnection);
    m_frontmost = std::move(next);
}

std::optional<RunningApplication> WaylandWorkspace::frontmostApplication() const {
    m_windows->refresh(); // what changes by it is told to `update`
    return m_frontmost;
}

QList<RunningApplication> WaylandWorkspace::runningApplications() const {
    m_windows->refresh();
    QList<RunningApplication> found;
    for (const WaylandWindow &window : m_windows->all()) {
        const auto program = programOf(window);
        const auto isSame = [&program](const RunningApplication &other) {
            return other.bundleIdentifier == program->bundleIdentifier;
        };
        if (program && !isThisProgram(*program) && std::ranges::none_of(found, isSame))
            found.append(*program);
    }
    return found;
}

void WaylandWorkspace::activateFileViewerSelecting(const QList<QUrl> &urls) {
    showInFileManager(urls);
}

} // namespace tavrine
