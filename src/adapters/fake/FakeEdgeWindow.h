#pragma once

#include "ports/EdgeWindow.h"

#include <QPointer>
#include <QWidget>

#include <algorithm>
#include <vector>

namespace tavrine {

/// Windows at the edge of no screen: who lies on whom and who has the keyboard is kept, and they write down what they
/// are told. On the screen every change is there at once.
class FakeEdgeWindows final : public EdgeWindows {
public:
    class Window final : public EdgeWindow {
    public:
        Window(FakeEdgeWindows &desktop, EdgeWindowDescription description)
            : m_desktop(desktop), m_description(std::move(description)), m_number(desktop.m_made) {
            m_desktop.m_windows.push_back(this);
        }
        ~Window() override {
            orderOut();
            std::erase(m_desktop.m_windows, this);
            delete m_content.data();
        }

        [[nodiscard]] qint64 windowNumber() const override { return m_number; }
        [[nodiscard]] bool isVisible() const override { return std::ranges::count(m_desktop.m_shown, this) > 0; }
        [[nodiscard]] QRectF frame() const override { return m_frame; }
        void setFrame(const QRectF &frame, std::chrono::milliseconds duration) override {
            m_frame = frame;
            m_durations.push_back(duration);
            fitContent();
        }
        [[nodiscard]] bool ignoresMouseEvents() const override { return m_ignoresMouseEvents; }
        void setIgnoresMouseEvents(bool ignores) override {
            ++m_mouseChanges;
            m_ignoresMouseEvents = ignores;
        }
        void orderFrontRegardless() override {
            ++m_showings;
            std::erase(m_desktop.m_shown, this);
            m_desktop.m_shown.push_back(this);
        }
        void keepInFront() override {
            ++m_keepings;
            if (!isVisible())
                orderFrontRegardless();
        }
        void orderOut() override {
            returnKeyboard();
            std::erase(m_desktop.m_shown, this);
        }
        void takeKeyboard() override {
            if (isVisible())
                m_desktop.m_key = this;
        }
        void returnKeyboard() override {
            if (hasKeyboard())
                m_desktop.m_key = nullptr;
        }
        void setContentView(QWidget *content) override {
            delete m_content.data();
            m_content = content;
            fitContent();
        }

        [[nodiscard]] const EdgeWindowDescription &description() const { return m_description; }
        [[nodiscard]] QWidget *content() const { return m_content; }
        [[nodiscard]] bool hasKeyboard() const { return m_desktop.m_key == this; }
        [[nodiscard]] int showings() const { return m_showings; }
        [[nodiscard]] int keepings() const { return m_keepings; }
        /// How often it was told whether it takes the mouse.
        [[nodiscard]] int mouseChanges() const { return m_mouseChanges; }
        /// How long each change of the frame took.
        [[nodiscard]] const std::vector<std::chrono::milliseconds> &durations() const { return m_durations; }

    private:
        void fitContent() {
            if (m_content)
                m_content->resize(m_frame.size().toSize());
        }

        FakeEdgeWindows &m_desktop;
        EdgeWindowDescription m_description;
        qint64 m_number;
        QRectF m_frame;
        QPointer<QWidget> m_content;
        std::vector<std::chrono::milliseconds> m_durations;
        int m_showings = 0;
        int m_keepings = 0;
        int m_mouseChanges = 0;
        bool m_ignoresMouseEvents = true;
    };

    [[nodiscard]] std::unique_ptr<EdgeWindow> makeEdgeWindow(const EdgeWindowDescription &description) override {
        ++m_made;
        return std::make_unique<Window>(*this, description);
    }

    [[nodiscard]] int made() const { return m_made; }
    /// Those that are not destroyed, in the order of their making.
    [[nodiscard]] const std::vector<Window *> &windows() const { return m_windows; }
    /// The one that a click at the place is for; null for what lies below them all.
    [[nodiscard]] const Window *windowAt(QPointF place) const {
        const auto takes = [&](const Window *window) {
            return !window->ignoresMouseEvents() && window->frame().contains(place);
        };
        const auto found = std::find_if(m_shown.rbegin(), m_shown.rend(), takes);
        return found == m_shown.rend() ? nullptr : *found;
    }
    /// The one that has the keyboard; null for another program.
    [[nodiscard]] const Window *keyWindow() const { return m_key; }

private:
    std::vector<Window *> m_windows;
    std::vector<Window *> m_shown; ///< from the back to the front
    Window *m_key = nullptr;
    int m_made = 0;
};

} // namespace tavrine
