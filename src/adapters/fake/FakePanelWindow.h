#pragma once

#include "ports/PanelWindow.h"

#include <QPointer>
#include <QStringList>
#include <QWidget>

#include <vector>

namespace tavrine {

/// Panels without a screen. The one that was made key last and is visible has the keyboard.
class FakePanelWindows final : public PanelWindows {
public:
    class Window final : public PanelWindow {
    public:
        Window(FakePanelWindows &desktop, PanelDescription description)
            : m_desktop(desktop), m_description(std::move(description)),
              m_frame(QPointF(0, 0), m_description.contentSize), m_number(desktop.m_made) {
            m_desktop.m_windows.push_back(this);
        }
        ~Window() override {
            orderOut();
            std::erase(m_desktop.m_windows, this);
            delete m_content.data();
        }

        [[nodiscard]] qint64 windowNumber() const override { return m_number; }
        [[nodiscard]] bool isVisible() const override { return m_isVisible; }
        [[nodiscard]] QRectF frame() const override { return m_frame; }
        void setFrame(const QRectF &frame) override { m_frame = frame; }
        [[nodiscard]] double alpha() const override { return m_alpha; }
        void setAlpha(double alpha) override { m_alpha = alpha; }
        void makeKeyAndOrderFront() override {
            orderFrontRegardless();
            if (m_description.canBecomeKey) {
                std::erase(m_desktop.m_keys, this);
                m_desktop.m_keys.push_back(this);
            }
        }
        void orderFrontRegardless() override {
            ++m_showings;
            m_isVisible = true;
        }
        void orderOut() override {
            m_isVisible = false;
            std::erase(m_desktop.m_keys, this);
        }
        void setContentView(QWidget *content) override {
            delete m_content.data();
            m_content = content;
        }
        void setIgnoresMouseEvents(bool ignores) override { m_description.ignoresMouseEvents = ignores; }
        void setOnMoved(std::function<void()> onMoved) override { m_onMoved = std::move(onMoved); }

        void setOnClosed(std::function<void()> onClosed) override { m_onClosed = std::move(onClosed); }
        void compositingChanged() override {}

        /// The desktop asks for its end, as by Alt+F4.
        void closeFromOutside() {
            if (m_onClosed)
                m_onClosed();
        }
        /// The person drags the panel.
        void moveByPerson(QPointF origin) {
            m_frame.moveTopLeft(origin);
            if (m_onMoved)
                m_onMoved();
        }
        [[nodiscard]] const PanelDescription &description() const { return m_description; }
        [[nodiscard]] bool isKey() const { return m_desktop.keyWindow() == this; }
        [[nodiscard]] int showings() const { return m_showings; }

    private:
        FakePanelWindows &m_desktop;
        PanelDescription m_description;
        QRectF m_frame;
        qint64 m_number;
        QPointer<QWidget> m_content;
        std::function<void()> m_onMoved;
        std::function<void()> m_onClosed;
        double m_alpha = 1.0;
        int m_showings = 0;
        bool m_isVisible = false;
    };

    [[nodiscard]] std::unique_ptr<PanelWindow> makePanel(const PanelDescription &description) override {
        ++m_made;
        return std::make_unique<Window>(*this, description);
    }
    [[nodiscard]] bool isComposited() const override { return m_isComposited; }

    [[nodiscard]] bool isAsking() const override { return m_isAsking; }

    void setAsking(bool isAsking) { m_isAsking = isAsking; }
    void setComposited(bool isComposited) { m_isComposited = isComposited; }
    [[nodiscard]] int made() const { return m_made; }
    /// Panels that have not been destroyed.
    [[nodiscard]] int living() const { return static_cast<int>(m_windows.size()); }

    /// Those that are not destroyed, in the order of their making.
    [[nodiscard]] const std::vector<Window *> &windows() const { return m_windows; }
    [[nodiscard]] QStringList visibleTitles() const {
        QStringList titles;
        for (const Window *window : m_windows)
            if (window->isVisible())
                titles.append(window->description().title);
        return titles;
    }
    [[nodiscard]] Window *keyWindow() const { return m_keys.empty() ? nullptr : m_keys.back(); }

private:
    std::vector<Window *> m_windows;
    std::vector<Window *> m_keys;
    int m_made = 0;
    bool m_isComposited = true;
    bool m_isAsking = false;
};

} // namespace tavrine
