#pragma once

#include <QByteArray>
#include <QObject>

#include <cstdlib>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <xcb/xcb.h>

class QSocketNotifier;

namespace tavrine {

/// What xcb hands out and wants freed.
template <class T>
struct XcbFree {
    void operator()(T *pointer) const { std::free(pointer); }
};
template <class T>
using XcbReply = std::unique_ptr<T, XcbFree<T>>;

/// One connection of our own to the X server, read on the main thread when something arrives and never otherwise.
///
/// Owned by the adapter that uses it; lives on the main thread. Without an X server it is there but not connected, and
/// the adapter then does nothing. Waiting for the server is bounded: another program may hold the server for itself.
class XcbClient : public QObject {
public:
    using Handler = std::function<void(const xcb_generic_event_t &)>;

    /// `handler` is called for each event, errors left out; `onDrained` after a series of events that came by itself.
    explicit XcbClient(Handler handler, std::function<void()> onDrained = {}, QObject *parent = nullptr);
    ~XcbClient() override;

    [[nodiscard]] bool isConnected() const;
    [[nodiscard]] xcb_connection_t *connection() const { return m_connection; }
    [[nodiscard]] const xcb_screen_t &screen() const { return *m_screen; }
    [[nodiscard]] xcb_window_t root() const { return m_screen->root; }
    [[nodiscard]] int screenNumber() const { return m_screenNumber; }

    /// The atom of that name; made when there is none. 0 when the server did not answer in time.
    [[nodiscard]] xcb_atom_t atom(const std::string &name);

    /// The reply to a request that was sent, 200 ms of waiting at most. Null for a refusal (a window that is gone) and
    /// for a server that did not answer; only the latter sets `isLate`.
    template <class Reply, class Cookie>
    [[nodiscard]] XcbReply<Reply> reply(Cookie cookie) {
        return XcbReply<Reply>(static_cast<Reply *>(await(cookie.sequence)));
    }

    /// True when a reply was late since the last question.
    [[nodiscard]] bool takeIsLate() { return std::exchange(m_isLate, false); }

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
    void flush() { xcb_flush(m_connection); }

private:
    void *await(unsigned int sequence);
    void onReadable();

    Handler m_handler;
    std::function<void()> m_onDrained;
    std::map<std::string, xcb_atom_t> m_atoms;
    xcb_connection_t *m_connection = nullptr;
    xcb_screen_t *m_screen = nullptr;
    QSocketNotifier *m_notifier = nullptr;
    int m_screenNumber = 0;
    bool m_isDraining = false;
    bool m_isDrainPosted = false;
    bool m_isLate = false;
};

} // namespace tavrine
