#pragma once

#include <QTemporaryDir>

#include <atomic>
#include <condition_variable>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

struct wl_client;
struct wl_display;
struct wl_protocol_logger;
struct wl_interface;
struct wl_message;
struct wl_resource;
union wl_argument;

namespace tavrine {

/// A compositor that does what the test says, for what a real one does once in ten thousand times. $WAYLAND_DISPLAY is
/// its as long as it is there. It runs on a thread of its own, counts what is asked of it, and answers nothing but the
/// connection's own questions and what `onRequest` answers.
class PlayedCompositor {
public:
    struct Request {
        wl_resource *resource;
        std::string name; ///< as "wl_seat.get_keyboard"; "wl_seat.bind" when somebody takes what is offered
        wl_argument *arguments;
        wl_resource *made = nullptr; ///< what was asked for, if anything
    };
    /// Called on the compositor's thread for each request, before it is counted; for "wl_display.sync" before the
    /// answer.
    using OnRequest = std::function<void(const Request &request)>;

    explicit PlayedCompositor(std::vector<const wl_interface *> offered, OnRequest onRequest = {});
    ~PlayedCompositor();
    PlayedCompositor(const PlayedCompositor &) = delete;
    PlayedCompositor &operator=(const PlayedCompositor &) = delete;

    /// It reads nothing and says nothing until told to go on; on return it has stopped.
    void stop();
    void goOn();

    [[nodiscard]] int count(const std::string &request) const;
    /// Does that on the compositor's thread; on return it is done.
    void doThere(std::function<void()> work);
    /// Of the kind, for whoever has the other; on the compositor's thread.
    [[nodiscard]] wl_resource *make(wl_resource *other, const wl_interface &kind);

private:
    static int dispatch(const void *self, void *resource, std::uint32_t opcode, const wl_message *message,
                        wl_argument *arguments);
    void adopt(wl_resource *resource);
    void note(const Request &request);
    void run();

    QTemporaryDir m_folder;
    const QByteArray m_displayBefore;
    const OnRequest m_onRequest;
    wl_display *m_display;
    wl_protocol_logger *m_logger = nullptr;
    std::map<const wl_interface *, std::pair<PlayedCompositor *, const wl_interface *>> m_offered;
    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    std::map<std::string, int> m_counts;
    std::function<void()> m_work;
    bool m_isStopped = false;
    bool m_hasStopped = false;
    std::atomic<bool> m_isEnding = false;
    std::thread m_thread;
};

} // namespace tavrine
