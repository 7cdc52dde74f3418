#pragma once

#include "base/Time.h"
#include "ports/FilePanels.h"

#include <QList>

#include <utility>

namespace tavrine {

/// Panels that a test answers in the person's place.
class FakeFilePanels final : public FilePanels {
public:
    explicit FakeFilePanels(Time &time) : m_time(time) {}

    void runSavePanel(const SavePanel &panel, Answer answer) override {
        if (run(answer))
            m_savePanels.append(panel);
    }
    void runOpenPanel(const OpenPanel &panel, Answer answer) override {
        if (run(answer))
            m_openPanels.append(panel);
    }

    [[nodiscard]] bool isOpen() const { return m_answer != nullptr; }
    /// The person chose this file or folder.
    void choose(const QString &path) { finish(path); }
    void cancel() { finish(std::nullopt); }

    /// All that were shown, the oldest first.
    [[nodiscard]] const QList<SavePanel> &savePanels() const { return m_savePanels; }
    [[nodiscard]] const QList<OpenPanel> &openPanels() const { return m_openPanels; }

private:
    bool run(Answer &answer) {
        if (m_answer) {
            m_time.async([answer] { answer(std::nullopt); });
            return false;
        }
        m_answer = answer;
        return true;
    }
    void finish(const std::optional<QString> &path) {
        if (const Answer answer = std::exchange(m_answer, nullptr))
            m_time.async([answer, path] { answer(path); });
    }

    Time &m_time;
    Answer m_answer;
    QList<SavePanel> m_savePanels;
    QList<OpenPanel> m_openPanels;
};

} // namespace tavrine
