#pragma once

#include "adapters/x11/XcbLink.h"

#include <QByteArray>
#include <QObject>

#include <functional>
#include <string>
#include <vector>

class QSocketNotifier;

namespace tavrine {

/// One connection of our own to the X server, read by the event loop when something arrives and never otherwise.
///
/// Owned by the adapter that uses it; lives on the thread that made it, which has an event loop. Without an X server it
/// is there but not connected, and the adapter then does nothing. Waiting for the server is bounded: another program
/// may hold the server for itself.
class XcbClient : public QObject {
public:
    using Handler = std::function<void(const xcb_generic_event_t &)>;

    /// A healthy server answers in well under a millisecond; what takes longer is held by another program.
    static constexpr XcbLink::Wait longestWait{200};

    /// `handler` is called for each event, errors left out; `onDrained` after a series of events that came by itself.
    explicit XcbClient(Handler handler, std::function<void()> onDrained = {}, QObject *parent = nullptr);
    ~XcbClient() override;

    [[nodiscard]] bool isConnected() const { return m_link.isOpen(); }
    /// For what the link alone can ask. The events that are read on the way to its answers come with the next turn.
    [[nodiscard]] XcbLink &link() {
        drainSoon();
        return m_link;
    }
    [[nodiscard]] xcb_connection_t *connection() const { return m_link.connection(); }
    [[nodiscard]] const xcb_screen_t &screen() const { return m_link.screen(); }
    [[nodiscard]] xcb_window_t root() const { return m_link.root(); }
    [[nodiscard]] int screenNumber() const { return m_link.screenNumber(); }

    // As those of the link. The events that are read on the way to an answer come with the next turn.
    [[nodiscard]] xcb_atom_t atom(const std::string &name);
    template <class Reply, class Cookie>
    [[nodiscard]] XcbReply<Reply> reply(Cookie cookie) {
        auto answer = m_link.reply<Reply>(cookie);
        drainSoon();
        return answer;
    }
    /// For what is asked many times a second: another turn follows only where events were read on the way.
    template <class Reply, class Cookie>
    [[nodiscard]] XcbReply<Reply> quickReply(Cookie cookie) {
        auto answer = m_link.reply<Reply>(cookie);
        if (m_link.hasReadEvent())
            drainSoon();
        return answer;
    }
    [[nodiscard]] bool takeIsLate() { return m_link.takeIsLate(); }

    /// Reads of a property start with `ask`, so that several can be under way, and end with one of the others. What is
    /// absent, of another shape or on a window that is gone is empty. Texts are cut at 1024 bytes.
    [[nodiscard]] xcb_get_property_cookie_t ask(xcb_window_t window, const std::string &property);
    [[nodiscard]] std::vector<quint32> words(xcb_get_property_cookie_t cookie);
    [[nodiscard]] QByteArray text(xcb_get_property_cookie_t cookie);
    [[nodiscard]] std::vector<quint32> words(xcb_window_t window, const std::string &property) {
        return words(ask(window, property));
    }

    /// Hands all events that have arrived to the handler. Called by itself when the server sends something.
    void drain();
    void flush() { m_link.flush(); }
    /// Whether what the server sends is read as it comes. While it is not, the server keeps it.
    void setReading(bool isReading);

private:
    void drainSoon();
    void onReadable();

    XcbLink m_link;
    Handler m_handler;
    std::function<void()> m_onDrained;
    QSocketNotifier *m_notifier = nullptr;
    bool m_isDraining = false;
    bool m_isDrainPosted = false;
};

} // namespace tavrine
