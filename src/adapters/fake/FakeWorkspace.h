#pragma once

#include "base/NotificationCenter.h"
#include "ports/Workspace.h"

namespace tavrine {

/// A desktop on which a test decides what is in front.
class FakeWorkspace final : public Workspace {
public:
    [[nodiscard]] NotificationCenter &notificationCenter() override { return m_center; }
    [[nodiscard]] std::optional<RunningApplication> frontmostApplication() const override;
    [[nodiscard]] bool isFrontmostKnown() const override { return m_answers; }
    [[nodiscard]] QList<RunningApplication> runningApplications() const override { return m_running; }
    void activateFileViewerSelecting(const QList<QUrl> &urls) override;

    /// Brings another program's window to the front, or none, and tells of the program that is left by it.
    void setFrontmost(std::optional<RunningApplication> application);

    /// The same, for a program that is known by nothing but its identifier and its process.
    void setFrontmost(const QString &bundleIdentifier, qint64 processIdentifier = 4711);

    /// Whether the desktop answers. What comes to the front while it does not is known once it does.
    void setAnswers(bool answers);

    void setRunning(QList<RunningApplication> applications) { m_running = std::move(applications); }

    /// What was shown in the file manager, call by call.
    [[nodiscard]] const QList<QList<QUrl>> &shownFiles() const { return m_shownFiles; }

    /// How often the frontmost application was asked for.
    [[nodiscard]] int frontmostReads() const { return m_frontmostReads; }

private:
    NotificationCenter m_center;
    std::optional<RunningApplication> m_frontmost;
    std::optional<RunningApplication> m_known; ///< while it does not answer
    bool m_answers = true;
    QList<RunningApplication> m_running;
    QList<QList<QUrl>> m_shownFiles;
    mutable int m_frontmostReads = 0;
};

} // namespace tavrine
