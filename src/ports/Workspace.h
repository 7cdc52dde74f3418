#pragma once

#include "base/Program.h"

#include <QCoreApplication>
#include <QList>
#include <QMetaType>
#include <QString>
#include <QStringList>
#include <QUrl>

#include <optional>

namespace tavrine {

class NotificationCenter;

/// A program that has a window, as the desktop sees it.
struct RunningApplication {
    /// Names the program, stable over time: its application identifier, else its window class. Programs whose
    /// identifier on another platform is listed in the system carry that one.
    QString bundleIdentifier;
    QString localizedName;
    qint64 processIdentifier = 0; ///< 0 when unknown
    quint32 window = 0;           ///< the window by which it was found
    /// All that its windows call it, as they spell it: application identifier, class, instance. Which of them there are
    /// depends on the kind of session, and how they are spelt on the program's toolkit.
    QStringList names = {};
    bool operator==(const RunningApplication &) const = default;
};

/// True when both are the same running program, whatever windows they were found by: the same process, or, where a
/// process is unknown, the same identifier.
[[nodiscard]] inline bool isSameApplication(const RunningApplication &a, const RunningApplication &b) {
    if (a.processIdentifier != 0 && b.processIdentifier != 0)
        return a.processIdentifier == b.processIdentifier;
    return a.bundleIdentifier == b.bundleIdentifier;
}

/// Known by its process, or by its name where that is all there is.
[[nodiscard]] inline bool isThisProgram(const RunningApplication &application) {
    return application.processIdentifier == QCoreApplication::applicationPid() ||
           application.bundleIdentifier == ownBundleIdentifier;
}

/// The desktop and the other programs on it. Lives on the main thread, as long as the process.
///
///  1. `frontmostApplication` costs no round trip to another program: it is kept up to date by notices.
///  2. `didDeactivateApplicationNotification` is posted on `notificationCenter()` when an application stops being
///     active; its user info holds the `RunningApplication` under `applicationKey`.
class Workspace {
public:
    static constexpr auto didDeactivateApplicationNotification = "NSWorkspaceDidDeactivateApplicationNotification";
    static constexpr auto applicationKey = "NSWorkspaceApplicationKey";

    virtual ~Workspace() = default;

    [[nodiscard]] virtual NotificationCenter &notificationCenter() = 0;

    /// The program that has the active window. None when no window is active, or when it names no program.
    [[nodiscard]] virtual std::optional<RunningApplication> frontmostApplication() const = 0;

    /// False while the desktop does not answer in time: what `frontmostApplication` told last is what was known before.
    [[nodiscard]] virtual bool isFrontmostKnown() const { return true; }

    /// The programs that have a window, each once, in the order in which their first windows came. Not this one.
    [[nodiscard]] virtual QList<RunningApplication> runningApplications() const = 0;

    /// Shows the files in the file manager, selected. Quiet when there is no file manager.
    virtual void activateFileViewerSelecting(const QList<QUrl> &urls) = 0;
};

} // namespace tavrine

Q_DECLARE_METATYPE(tavrine::RunningApplication)
