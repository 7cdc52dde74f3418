#pragma once

#include "base/Time.h"
#include "ports/DragPasteboard.h"

#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

namespace tavrine {

/// Drags that a test makes, for all who watch.
class FakeDragPasteboards final : public DragPasteboards {
public:
    explicit FakeDragPasteboards(Time &time) : m_time(time) {}

    [[nodiscard]] std::unique_ptr<DragPasteboard> watch() override { return std::make_unique<Watch>(m_state); }

    /// A drag begins. Of one of files the program that drags says so at once, unless it is told to be slow.
    void begin(bool holdsFiles) {
        ++m_state->changeCount;
        m_state->isDragging = true;
        m_state->holdsFileReference = holdsFiles && !m_isSlow;
        tell();
    }
    /// What is dragged turns out to be files.
    void answerWithFiles() {
        m_state->holdsFileReference = true;
        tell();
    }
    /// Released, cancelled, or its program is gone. What was dragged stays.
    void end() {
        m_state->isDragging = false;
        tell();
    }
    /// Programs that drag take their time until `answerWithFiles`.
    void beSlow() { m_isSlow = true; }
    [[nodiscard]] int watching() const { return static_cast<int>(m_state->watches.size()); }

private:
    class Watch;
    struct State {
        int changeCount = 7; ///< others have dragged before
        bool holdsFileReference = false;
        bool isDragging = false;
        std::vector<std::shared_ptr<std::function<void()>>> watches;
    };
    class Watch final : public DragPasteboard {
    public:
        explicit Watch(std::shared_ptr<State> state) : m_state(std::move(state)) {
            m_state->watches.push_back(m_onChange);
        }
        ~Watch() override {
            *m_onChange = nullptr;
            std::erase(m_state->watches, m_onChange);
        }
        [[nodiscard]] int changeCount() const override { return m_state->changeCount; }
        [[nodiscard]] bool holdsFileReference() const override { return m_state->holdsFileReference; }
        [[nodiscard]] bool isDragging() const override { return m_state->isDragging; }
        void setOnChange(std::function<void()> onChange) override { *m_onChange = std::move(onChange); }

    private:
        std::shared_ptr<State> m_state;
        std::shared_ptr<std::function<void()>> m_onChange = std::make_shared<std::function<void()>>();
    };

    void tell() {
        m_time.async([state = m_state] {
            const auto watches = state->watches;
            for (const auto &watch : watches)
                if (const auto onChange = *watch)
                    onChange();
        });
    }

    Time &m_time;
    std::shared_ptr<State> m_state = std::make_shared<State>();
    bool m_isSlow = false;
};

} // namespace tavrine
