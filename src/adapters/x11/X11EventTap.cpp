#include "adapters/x11/X11EventTap.h"

#include "adapters/x11/X11KeyboardHold.h"

#include <QDeadlineTimer>
#include <QGuiApplication>
#include <QPointer>
#include <QTimer>
#include <QWindow>

#include <utility>

namespace tavrine {
namespace {

using namespace std::chrono_literals;

constexpr auto longestWait = 1s;
constexpr auto betweenTries = 20ms;

class X11EventTap final : public EventTap {
public:
    X11EventTap(std::shared_ptr<KeyboardSilence> silence, SessionEvents &sessionEvents, std::function<void()> onChange)
        : m_silence(std::move(silence)), m_onChange(std::move(onChange)),
          m_client([this](const xcb_generic_event_t &event) { handle(event); }, [this] { onDrained(); }),
          m_hold(m_client) {
        m_again.setSingleShot(true);
        m_again.callOnTimeout([this] { tryAgain(); });
        if (!m_hold.isUsable())
            return;
        borrowFromOwnMenus();
        m_state = State::waiting;
        m_listening = sessionEvents.listen([this](SessionEvent event) {
            if (event == SessionEvent::goesToSleep || event == SessionEvent::isLocked)
                giveWay();
        });
        attempt();
    }
    ~X11EventTap() override {
        giveBack();
        m_silence->end();
        for (const auto &menu : m_lenders)
            if (menu && menu->isVisible())
                menu->setKeyboardGrabEnabled(true);
    }

    [[nodiscard]] State state() const override { return m_state; }

private:
    void attempt() {
        m_silence->begin();
        if (m_hold.take()) {
            m_state = State::dropping;
            return;
        }
        m_silence->end();
        m_again.start(betweenTries);
    }

    void tryAgain() {
        if (m_state == State::dropping) {
            if (!m_hold.takeNew())
                m_again.start(betweenTries);
            return;
        }
        if (m_deadline.hasExpired() || !m_client.isConnected())
            return change(State::ended);
        attempt();
        if (m_state == State::dropping)
            change(State::dropping);
    }

    void handle(const xcb_generic_event_t &event) {
        const X11KeyboardHold::Notice notice = m_hold.take(event);
        if (notice.isKey)
            m_silence->drop(notice.time);
        if (notice.isHierarchy && m_state == State::dropping)
            m_again.start(0);
    }

    void giveBack() {
        m_hold.giveBack();
        m_client.drain(); // the time of what was dropped last
    }

    /// To the lock screen, which needs the pointer as well.
    void giveWay() {
        if (isOver())
            return;
        giveBack();
        m_again.stop();
        if (!isOver()) // the connection may have gone meanwhile
            change(State::gaveWay);
        for (const auto menus = std::exchange(m_lenders, {}); const auto &menu : menus)
            if (menu)
                menu->close();
    }

    void onDrained() {
        if (!m_client.isConnected() && !isOver())
            change(State::ended);
    }

    [[nodiscard]] bool isOver() const { return m_state == State::ended || m_state == State::gaveWay; }

    /// In a turn of its own: whoever hears of it may destroy the tap.
    void change(State state) {
        m_state = state;
        if (isOver())
            m_silence->end();
        QMetaObject::invokeMethod(&m_again, m_onChange, Qt::QueuedConnection);
    }

    void borrowFromOwnMenus() {
        const auto windows = QGuiApplication::topLevelWindows();
        for (QWindow *window : windows)
            if (window->type() == Qt::Popup && window->isVisible()) {
                window->setKeyboardGrabEnabled(false);
                m_lenders.emplace_back(window);
            }
        if (const auto *x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>(); x11 && !m_lenders.empty())
            xcb_flush(x11->connection());
    }

    std::shared_ptr<KeyboardSilence> m_silence;
    std::function<void()> m_onChange;
    XcbClient m_client;
    X11KeyboardHold m_hold;
    QTimer m_again;
    QDeadlineTimer m_deadline{longestWait};
    std::vector<QPointer<QWindow>> m_lenders;
    State m_state = State::ended;
    SessionEvents::Listening m_listening;
};

} // namespace

std::unique_ptr<EventTap> X11EventTaps::create(std::function<void()> onChange) {
    auto tap = std::make_unique<X11EventTap>(m_silence, m_sessionEvents, std::move(onChange));
    if (tap->state() == EventTap::State::ended)
        return nullptr;
    return tap;
}

} // namespace tavrine
