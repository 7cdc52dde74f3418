#pragma once

#include "ports/EdgeWindow.h"

#include <QPointer>
#include <QWidget>

#include <vector>

namespace tavrine {

/// Windows at the edge of no screen, which write down what they are told.
class FakeEdgeWindows final : public EdgeWindows {
public:
    class Window final : public EdgeWindow {
    public:
        Window(FakeEdgeWindows &desktop, EdgeWindowDescription description)
            : m_desktop(desktop), m_description(std::move(description)), m_number(desktop.m_made) {
            m_desktop.m_windows.push_back(this);
        }
        ~Window() override {
            std::erase(m_desktop.m_windows, this);
            delete m_content.data();
        }

        [[nodiscard]] qint64 windowNumber() const override { return m_number; }
        [[nodiscard]] bool isVisible() const override { return m_isVisible; }
        [[nodiscard]] QRectF frame() const override { return m_frame; }
        void setFrame(const QRectF &frame, std::chrono::milliseconds duration) override {
            m_frame = frame;
            m_durations.push_back(duration);
            if (m_content)
                m_content->resize(frame.size().toSize());
        }
        [[nodiscard]] bool ignoresMouseEvents() const override { return m_ignoresMouseEvents; }
        void setIgnoresMouseEvents(bool ignores) override {
            ++m_mouseChanges;
            m_ignoresMouseEvents = ignores;
        }
        void orderFrontRegardless() override {
            ++m_showings;
            m_isVisible = true;
        }
        void orderOut() override { m_isVisible = m_hasKeyboard = false; }
        void takeKeyboard() override { m_hasKeyboard = true; }
        void returnKeyboard() override { m_hasKeyboard = false; }
        void setContentView(QWidget *content) override {
            delete m_content.data();
            m_content = content;
        }

        [[nodiscard]] const EdgeWindowDescription &description() const { return m_description; }
        [[nodiscard]] QWidget *content() const { return m_content; }
        [[nodiscard]] bool hasKeyboard() const { return m_hasKeyboard; }
        [[nodiscard]] int showings() const { return m_showings; }
        /// How often it was told whether it takes the mouse.
        [[nodiscard]] int mouseChanges() const { return m_mouseChanges; }
        /// How long each change of the frame took.
        [[nodiscard]] const std::vector<std::chrono::milliseconds> &durations() const { return m_durations; }

    private:
        FakeEdgeWindows &m_desktop;
        EdgeWindowDescription m_description;
        qint64 m_number;
        QRectF m_frame;
        QPointer<QWidget> m_content;
        std::vector<std::chrono::milliseconds> m_durations;
        int m_showings = 0;
        int m_mouseChanges = 0;
        bool m_isVisible = false;
        bool m_ignoresMouseEvents = true;
        bool m_hasKeyboard = false;
    };

    [[nodiscard]] std::unique_ptr<EdgeWindow> makeEdgeWindow(const EdgeWindowDescription &description) override {
        ++m_made;
        return std::make_unique<Window>(*this, description);
    }

    [[nodiscard]] int made() const { return m_made; }
    /// Those that are not destroyed, in the order of their making.
    [[nodiscard]] const std::vector<Window *> &windows() const { return m_windows; }

private:
    std::vector<Window *> m_windows;
    int m_made = 0;
};

} // namespace tavrine
