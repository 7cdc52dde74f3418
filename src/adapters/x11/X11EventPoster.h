#pragma once

#include "adapters/linux/PasteChord.h"
#include "adapters/x11/X11Keyboard.h"
#include "adapters/x11/XcbClient.h"
#include "ports/EventPoster.h"

#include <QElapsedTimer>
#include <QObject>
#include <QString>

#include <functional>
#include <vector>

namespace tavrine {

/// Posts keys through the XTEST extension.
///
/// Lives on the main thread, on a connection of its own. Modifiers that are held are released before a chord, or the
/// receiver would see another one, and pressed again after it.
class X11EventPoster final : public EventPoster {
public:
    /// `text` gives the text that is being pasted: a program that pastes the primary selection gets it as that.
    explicit X11EventPoster(std::function<QString()> text);

    void postKeyboardEvent(int keyCode, bool isKeyDown, quint32 flags) override;
    [[nodiscard]] bool isHeldBack() const override { return m_isHeldBack; }
    [[nodiscard]] QString failure() const override { return m_failure; }

    /// Takes the primary selection, which some programs paste in the place of the clipboard.
    void ownPrimary(const QString &text);

    /// True when this server lets programs post events.
    [[nodiscard]] bool canPost() const { return m_canPost; }

private:
    struct Chord {
        int keycode = 0;
        std::vector<int> modifiers; ///< keycodes, in the order of pressing
        std::vector<int> released;  ///< held modifiers that were let go for it
    };

    void press(const Chord &wanted);
    [[nodiscard]] bool pressModifiers();
    [[nodiscard]] bool isKeyboardHeld();
    void awaitKeptPress();
    [[nodiscard]] bool isPressKept();
    [[nodiscard]] bool isKeyboardUnderWay();
    void release();
    void send(bool isPress, int keycode);
    void holdServer();
    void freeServer();
    [[nodiscard]] Chord chordFor(int keyCode, quint32 flags);
    [[nodiscard]] PasteChord pasteChordOfTarget();
    void handle(const xcb_generic_event_t &event);
    void answerRequest(const xcb_selection_request_event_t &request);

    XcbClient m_client;
    X11Keyboard m_keyboard;
    std::function<QString()> m_text;
    Chord m_pressed;
    QByteArray m_primary; ///< what we own as the primary selection
    xcb_window_t m_window = XCB_WINDOW_NONE;
    quint32 m_ownedSince = 0;
    quint32 m_serverTime = 0;
    bool m_canPost = false;
    bool m_isServerHeld = false;
    bool m_isHeldBack = false;
    QString m_failure;          ///< of the last key-down
    QElapsedTimer m_underWay;   ///< since the keyboard was first found to be with nobody
    QElapsedTimer m_kept;       ///< since the server took a press that it keeps for later
    quint8 m_firstXkbEvent = 0; ///< none before the first such press
    QObject m_turn;
};

} // namespace tavrine
