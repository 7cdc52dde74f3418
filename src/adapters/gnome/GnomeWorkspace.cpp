#include "adapters/gnome/GnomeWorkspace.h"

#include "adapters/linux/FileManager.h"
#include "adapters/linux/KnownPrograms.h"

#include <algorithm>

namespace tavrine {
namespace {

/// None for a window that names no program.
std::optional<RunningApplication> programOf(const GnomeWindow &window) {
    if (window.process == QCoreApplication::applicationPid())
        return RunningApplication{ownBundleIdentifier, QStringLiteral("Tavrine"), window.process, window.number};
    if (window.application.isEmpty() && window.windowClass.isEmpty())
        return std::nullopt;
    const KnownProgram program = knownProgram(window.application, window.windowClass);
    return RunningApplication{.bundleIdentifier = program.bundleIdentifier,
                              .localizedName = program.name,
                              .processIdentifier = window.process,
                              .window = window.number,
                              .names = {window.application, window.windowClass}};
}

} // namespace

GnomeWorkspace::GnomeWorkspace(GnomeShell &shell) : m_shell(shell) {
    connect(&shell, &GnomeShell::attached, this, [this] { follow(); });
    connect(&shell, &GnomeShell::windowsChanged, this, [this] { follow(); });
    const auto name = QLatin1String(didDeactivateApplicationNotification);
    m_fromX = m_onX.notificationCenter().addObserver(name, [this](const Notification &notification) {
        if (!m_shell.isAttached())
            m_center.post(notification.name, notification.userInfo);
    });
}

void GnomeWorkspace::follow() {
    const auto next = frontmostApplication();
    const auto before = std::exchange(m_frontmost, next);
    if (before && !(next && isSameApplication(*before, *next)))
        m_center.post(QLatin1String(didDeactivateApplicationNotification),
                      {{QLatin1String(applicationKey), QVariant::fromValue(*before)}});
}

std::optional<RunningApplication> GnomeWorkspace::frontmostApplication() const {
    if (!m_shell.isAttached())
        return m_onX.frontmostApplication();
    const auto window = m_shell.focusedWindow();
    return window ? programOf(*window) : std::nullopt;
}

QList<RunningApplication> GnomeWorkspace::runningApplications() const {
    if (!m_shell.isAttached())
        return m_onX.runningApplications();
    QList<RunningApplication> found;
    for (const GnomeWindow &window : m_shell.windows()) {
        const auto program = programOf(window);
        const auto isSame = [&program](const RunningApplication &other) {
            return other.bundleIdentifier == program->bundleIdentifier;
        };
        if (program && !isThisProgram(*program) && std::ranges::none_of(found, isSame))
            found.append(*program);
    }
    return found;
}

void GnomeWorkspace::activateFileViewerSelecting(const QList<QUrl> &urls) {
    showInFileManager(urls);
}

} // namespace tavrine
