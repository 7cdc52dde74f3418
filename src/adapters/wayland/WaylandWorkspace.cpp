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
// From a panel's surface to the next, as on another screen: the compositor has the window behind active meanwhile.
constexpr auto longestLoss = std::chrono::milliseconds(250);

RunningApplication thisProgram(quint32 window = 0) {
    return {ownBundleIdentifier, QStringLiteral("Tavrine"), QCoreApplication::applicationPid(), window};
}

} // namespace

std::optional<RunningApplication> programOf(const WaylandWindow &window) {
    if (window.processIdentifier == QCoreApplication::applicationPid() || window.applicationId == ownBundleIdentifier)
        return thisProgram(window.number);
    if (window.applicationId.isEmpty())
        return std::nullopt;
    const KnownProgram program = knownProgram(window.applicationId, window.applicationId);
    return RunningApplication{.bundleIdentifier = program.bundleIdentifier,
                              .localizedName = program.name,
                              .processIdentifier = window.processIdentifier,
                              .window = window.number,
                              .names = {window.applicationId}};
}

WaylandWorkspace::WaylandWorkspace(std::shared_ptr<WaylandWindows> windows, std::function<bool()> isPanelCalled,
                                   std::function<bool()> isKeyboardHeld)
    : m_windows(std::move(windows)), m_following(m_windows->follow([this] { update(); })),
      m_isPanelCalled(std::move(isPanelCalled)), m_isKeyboardHeld(std::move(isKeyboardHeld)) {
    m_loss.setSingleShot(true);
    m_loss.setInterval(longestLoss);
    m_loss.callOnTimeout([this] {
        if (!m_windows->refresh())
            return m_loss.start();
        if (isCalled() && hasCalledPanelLostTheKeyboard())
            leavePanel();
    });
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

bool WaylandWorkspace::hasCalledPanelLostTheKeyboard() const {
    return m_called && m_called->hadKeyboard && !hasPanelTheKeyboard() && m_windows->active();
}

void WaylandWorkspace::noteDeparture() {
    const quint32 last = m_windows->lastActive();
    if (!isCalled()) {
        m_loss.stop();
        return m_called.reset();
    }
    if (!m_called)
        m_called = Called{.behind = last};
    const bool hasKeyboard = hasPanelTheKeyboard();
    m_called->hadKeyboard = m_called->hadKeyboard || hasKeyboard;
    const bool isOtherBehind = m_called->behind != last;
    if (isOtherBehind && (hasKeyboard || m_windows->active()))
        return leavePanel();
    if (!hasCalledPanelLostTheKeyboard())
        m_loss.stop();
    else if (!m_loss.isActive())
        m_loss.start();
}

void WaylandWorkspace::leavePanel() {
    m_loss.stop();
    m_called.reset();
    if (const WaylandWindow *const behind = m_windows->find(m_windows->lastActive()))
        become(programOf(*behind));
    tellLeft(thisProgram());
}

const WaylandWindow *WaylandWorkspace::windowInFront() const {
    const WaylandWindow *const active = m_windows->active();
    return active || !isHeld() ? active : m_windows->find(m_windows->lastActive());
}

void WaylandWorkspace::update() {
    noteDeparture();
    const WaylandWindow *const active = windowInFront();
    auto next = active ? programOf(*active) : std::nullopt;
    const bool isLost = !active && m_frontmost;
    if (isLost && m_windows->find(m_frontmost->window) && (hasPanelTheKeyboard() || isHeld())) {
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
        tellLeft(*m_frontmost);
    m_frontmost = std::move(next);
}

/// In a turn of its own, never within a question.
void WaylandWorkspace::tellLeft(const RunningApplication &application) {
    QMetaObject::invokeMethod(
        this,
        [this, application] {
            m_center.post(QLatin1String(didDeactivateApplicationNotification),
                          {{QLatin1String(applicationKey), QVariant::fromValue(application)}});
        },
        Qt::QueuedConnection);
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
