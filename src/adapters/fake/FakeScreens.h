#pragma once

#include "base/Time.h"
#include "ports/Screens.h"

#include <vector>

namespace tavrine {

/// A desk that a test arranges: one screen of 1440 by 900 with a menu bar of 24 on top, and the pointer in its corner.
class FakeScreens final : public Screens {
public:
    [[nodiscard]] QList<Screen> screens() const override { return m_screens; }
    [[nodiscard]] std::optional<Screen> mainScreen() const override {
        if (m_screens.isEmpty())
            return std::nullopt;
        if (m_keyboardScreen >= 0 && m_keyboardScreen < m_screens.size())
            return m_screens.at(m_keyboardScreen);
        for (const Screen &screen : m_screens)
            if (screen.frame.contains(m_mouse))
                return screen;
        return m_screens.first();
    }
    [[nodiscard]] QRectF toolkitRect(const QRectF &rect) const override {
        const double height = m_screens.isEmpty() ? 0 : m_screens.first().frame.height();
        return {rect.x(), height - rect.y() - rect.height(), rect.width(), rect.height()};
    }
    [[nodiscard]] PointerReading pointer() const override { return {m_mouse, m_buttons}; }
    [[nodiscard]] std::unique_ptr<PointerWatch> watchPointer(Time &time, Seconds interval,
                                                             std::function<void()> handler) override {
        if (m_isWatchBroken)
            return nullptr;
        return std::make_unique<Watch>(*this, time, interval, std::move(handler));
    }
    [[nodiscard]] Token onChange(std::function<void()> handler) override {
        auto token = std::make_shared<std::function<void()>>(std::move(handler));
        m_listeners.push_back(token);
        return token;
    }

    void setScreens(const QList<Screen> &screens) {
        m_screens = screens;
        const auto listeners = m_listeners;
        for (const auto &listener : listeners)
            if (const auto handler = listener.lock())
                (*handler)();
    }
    /// The screen of the window that has the keyboard, by its place in the list; -1 for no window.
    void setKeyboardScreen(int index) { m_keyboardScreen = index; }
    void setMouseLocation(QPointF location) { m_mouse = location; }
    /// Nobody can be told of the pointer while it is.
    void setWatchBroken(bool isBroken) { m_isWatchBroken = isBroken; }
    void setPressedMouseButtons(quint32 buttons) { m_buttons = buttons; }

private:
    class Watch final : public PointerWatch {
    public:
        Watch(const FakeScreens &screens, Time &time, Seconds interval, std::function<void()> handler)
            : m_screens(screens), m_time(time), m_handler(std::move(handler)) {
            time.async([this, isAlive = std::weak_ptr<bool>(m_isAlive)] {
                if (!isAlive.expired())
                    look();
            });
            m_timer = time.repeat(interval, [this] { look(); });
        }
        [[nodiscard]] Date lastLook() const override { return m_lastLook; }
        void setTellsAll(bool tellsAll) override { m_tellsAll = tellsAll; }

    private:
        void look() {
            m_lastLook = m_time.now();
            const PointerReading found = m_screens.pointer();
            const bool isNew = std::exchange(m_last, found) != found;
            if (isNew || m_tellsAll)
                m_handler();
        }

        const FakeScreens &m_screens;
        Time &m_time;
        std::function<void()> m_handler;
        std::shared_ptr<bool> m_isAlive = std::make_shared<bool>(true);
        std::unique_ptr<Timer> m_timer;
        Date m_lastLook = m_time.now();
        std::optional<PointerReading> m_last;
        bool m_tellsAll = false;
    };

    QList<Screen> m_screens{{.number = 1,
                             .localizedName = QStringLiteral("Built-in"),
                             .frame = QRectF(0, 0, 1440, 900),
                             .visibleFrame = QRectF(0, 0, 1440, 876),
                             .scale = 1.0}};
    QPointF m_mouse{0, 0};
    quint32 m_buttons = 0;
    bool m_isWatchBroken = false;
    int m_keyboardScreen = 0;
    std::vector<std::weak_ptr<std::function<void()>>> m_listeners;
};

} // namespace tavrine
