#pragma once

#include "ports/Updater.h"

#include <QString>
#include <QStringList>

#include <functional>

namespace tavrine {

/// An updater without a feed. What it tells the person is kept for a test to read.
class FakeUpdater final : public Updater {
public:
    void start() override {
        ++m_starts;
        if (m_onStart)
            m_onStart();
    }
    void checkForUpdates() override { m_messages.append(m_result); }

    /// What the next looks will find.
    void setResult(const QString &message) { m_result = message; }

    void setOnStart(std::function<void()> onStart) { m_onStart = std::move(onStart); }
    [[nodiscard]] int starts() const { return m_starts; }
    [[nodiscard]] const QStringList &messages() const { return m_messages; }

private:
    QString m_result = QStringLiteral(
        "This copy of Tavrine does not look for updates by itself. New versions come the way it was installed.");
    QStringList m_messages;
    std::function<void()> m_onStart;
    int m_starts = 0;
};

} // namespace tavrine
