#pragma once

#include <QByteArray>
#include <QList>

#include <chrono>
#include <optional>
#include <utility>

#include <xcb/xcb.h>

namespace tavrine {

/// A program that pastes, on a connection of its own, with nothing but the X protocol. Calls wait for the answer.
class TestRequestor {
public:
    struct Value {
        QByteArray type;
        int format = 0;
        QByteArray bytes;
        bool wasPiecemeal = false;
    };

    TestRequestor();
    ~TestRequestor();

    /// None when the owner refuses, or gives no answer in time.
    [[nodiscard]] std::optional<Value> paste(const QByteArray &target);
    [[nodiscard]] QList<QByteArray> targets();
    /// One MULTIPLE request; for each target what it brought.
    [[nodiscard]] QList<std::optional<Value>> pasteMultiple(const QList<QByteArray> &targets);

    /// Asks, and leaves without waiting for the answer. Piecemeal ones are left hanging.
    void askAndLeave(const QByteArray &target);
    /// Begins a piecemeal transfer and never takes a piece.
    void askAndHang(const QByteArray &target);
    /// Goes on with what `askAndHang` left.
    [[nodiscard]] std::optional<Value> finish();

    [[nodiscard]] xcb_window_t owner();
    /// Somebody has it, and by another window. Asked once: between two questions an owner may go.
    [[nodiscard]] bool hasOwnerOtherThan(xcb_window_t window);
    [[nodiscard]] xcb_atom_t atom(const QByteArray &name);

    std::chrono::milliseconds patience{5000};

private:
    [[nodiscard]] xcb_generic_event_t *waitFor(int type, xcb_atom_t property);
    [[nodiscard]] std::optional<Value> take(xcb_atom_t property);
    [[nodiscard]] Value read(xcb_atom_t property);
    [[nodiscard]] QByteArray name(xcb_atom_t atom);

    xcb_connection_t *m_connection;
    xcb_window_t m_window;
    QList<xcb_generic_event_t *> m_events;
};

} // namespace tavrine
