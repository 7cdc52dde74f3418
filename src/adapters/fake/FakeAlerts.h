#pragma once

#include "ports/Alerts.h"

#include <QList>
#include <QSize>

#include <functional>
#include <utility>

namespace tavrine {

/// A person who answers every question at once: with the last button, unless the test says otherwise.
class FakeAlerts final : public Alerts {
public:
    /// The next question is answered with its first button, a question for text with `text`.
    void answerNextWithFirstButton(const QString &text = QString()) {
        m_takesFirst = true;
        m_text = text;
    }

    /// Runs while a question is up, before it is answered.
    void setWhileShown(std::function<void()> whileShown) { m_whileShown = std::move(whileShown); }

    [[nodiscard]] const QList<Alert> &shown() const { return m_shown; }
    /// Of the last question for text.
    [[nodiscard]] QSize textAreaSize() const { return m_textAreaSize; }

    bool runModal(const Alert &alert) override {
        m_shown.append(alert);
        if (m_whileShown)
            m_whileShown();
        return std::exchange(m_takesFirst, false);
    }

    std::optional<QString> runModalForText(const Alert &alert, int width, int height) override {
        m_textAreaSize = QSize(width, height);
        return runModal(alert) ? std::optional(m_text) : std::nullopt;
    }

private:
    bool m_takesFirst = false;
    QString m_text;
    std::function<void()> m_whileShown;
    QList<Alert> m_shown;
    QSize m_textAreaSize;
};

} // namespace tavrine
