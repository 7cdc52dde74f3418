#include "adapters/fake/FakeWorkspace.h"

namespace tavrine {

std::optional<RunningApplication> FakeWorkspace::frontmostApplication() const {
    ++m_frontmostReads;
    return m_answers ? m_frontmost : m_known;
}

void FakeWorkspace::activateFileViewerSelecting(const QList<QUrl> &urls) {
    if (!urls.isEmpty())
        m_shownFiles.append(urls);
}

void FakeWorkspace::setAnswers(bool answers) {
    m_answers = answers;
    m_known = m_frontmost;
}

void FakeWorkspace::setFrontmost(std::optional<RunningApplication> application) {
    const auto left = std::exchange(m_frontmost, std::move(application));
    if (left && !(m_frontmost && isSameApplication(*left, *m_frontmost)))
        m_center.post(QLatin1String(didDeactivateApplicationNotification),
                      {{QLatin1String(applicationKey), QVariant::fromValue(*left)}});
}

void FakeWorkspace::setFrontmost(const QString &bundleIdentifier, qint64 processIdentifier) {
    setFrontmost(RunningApplication{.bundleIdentifier = bundleIdentifier,
                                    .localizedName = bundleIdentifier,
                                    .processIdentifier = processIdentifier,
                                    .window = 0});
}

} // namespace tavrine
