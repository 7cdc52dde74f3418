#pragma once

#include <QByteArray>
#include <QList>

#include <atomic>
#include <chrono>
#include <functional>
#include <future>
#include <map>
#include <mutex>
#include <thread>
#include <vector>

#include <xcb/xcb.h>

namespace tavrine {

/// What a `TestOwner` does when it is asked for a target.
struct Answer {
    enum class Manner { whole, piecemeal, refuse, silent, end };

    Manner manner = Manner::whole;
    QByteArray bytes = {};
    QByteArray type = {}; ///< the target's own name when empty
    int format = 8;
    qsizetype pieceBytes = 64 * 1024; ///< piecemeal: size of a piece
    qint64 announced = -1;            ///< piecemeal: the size it promises; the true one when negative
    int silentAfterPieces = -1;       ///< piecemeal: then it hangs
    int endAfterPieces = -1;          ///< piecemeal: then its connection is gone
    QByteArray laterType = {};        ///< piecemeal: type of all pieces but the first
    bool isEndless = false;           ///< piecemeal: the same piece again and again

    bool isGivenUpAfter = false; ///< who has answered this gives the selection up
    int silentTimes = 0;         ///< so often it says nothing before it answers

    std::function<void()> before = {}; ///< run on the owner's thread before it answers

    static Answer refused() { return {.manner = Manner::refuse}; }
    static Answer silent() { return {.manner = Manner::silent}; }
    static Answer ended() { return {.manner = Manner::end}; }
};

/// A program that owns the clipboard and behaves as the test says, well or badly. It runs on a thread and a connection
/// of its own, with nothing but the X protocol.
class TestOwner {
public:
    using Contents = std::vector<std::pair<QByteArray, Answer>>;

    explicit TestOwner(const QByteArray &selection = "CLIPBOARD");
    ~TestOwner();

    /// Claims the selection; on return it is the owner. TARGETS lists `contents` unless `targets` says otherwise.
    void own(Contents contents);
    void own(Contents contents, Answer targets);
    /// What TARGETS says of `contents`.
    [[nodiscard]] Answer listOf(const Contents &contents);
    void ownText(const QByteArray &text) { own({{"UTF8_STRING", {.bytes = text}}}); }
    /// Two steps of a slow program: a person acts, and the claim follows later, as of that moment.
    void rememberTime();
    void ownAsOfRememberedTime(Contents contents);
    /// Destroys the window that owns, and claims for another one after a moment, as of the very same time.
    void moveToAnotherWindow(std::chrono::microseconds after, Contents contents);
    /// Claims and gives up `count` times in a row; nobody owns the selection afterwards.
    void ownAndEndRepeatedly(int count);
    /// Gives the selection up on purpose.
    void clear();
    void destroyWindow();
    /// The connection goes, as when the program is killed.
    void end();

    [[nodiscard]] int requestCount(const QByteArray &target) const;
    [[nodiscard]] int requestCount() const;
    [[nodiscard]] bool isOwner() const { return m_isOwner; }
    /// Pieces handed out so far.
    [[nodiscard]] int pieceCount() const { return m_pieces; }

private:
    struct Outgoing {
        xcb_window_t requestor;
        xcb_atom_t property;
        Answer answer;
        qsizetype offset = 0;
        int pieces = 0;
    };

    void ownAt(xcb_timestamp_t time, Contents contents, Answer targets);
    void runOnThread(std::function<void()> work);
    void loop();
    void handle(xcb_generic_event_t *event);
    void onRequest(const xcb_selection_request_event_t &request);
    void onPropertyDeleted(const xcb_property_notify_event_t &event);
    void closeConnection();
    void createWindow();
    [[nodiscard]] xcb_timestamp_t serverTime();
    [[nodiscard]] xcb_atom_t atom(const QByteArray &name);
    [[nodiscard]] QByteArray name(xcb_atom_t atom);

    QByteArray m_selectionName;
    xcb_timestamp_t m_remembered = 0;
    xcb_connection_t *m_connection = nullptr;
    xcb_window_t m_window = 0;
    std::map<QByteArray, xcb_atom_t> m_atoms;
    Contents m_contents;
    Answer m_targets;
    std::vector<Outgoing> m_outgoing;

    mutable std::mutex m_mutex;
    std::map<QByteArray, int> m_requests;
    std::vector<std::packaged_task<void()>> m_work;
    std::atomic<bool> m_isOwner = false;
    std::atomic<int> m_pieces = 0;
    std::atomic<bool> m_isStopping = false;
    int m_wakeUp = -1;
    std::thread m_thread;
};

} // namespace tavrine
