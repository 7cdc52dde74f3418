#pragma once

#include "adapters/wayland/WaylandWindows.h"
#include "desktop/Program.h"
#include "support/Wait.h"
#include "support/WaylandHand.h"

#include <QPoint>
#include <QProcess>

namespace tavrine::testing {

/// A foreign window that drags files and takes drops. Its middle is the screen's, whoever places it.
class Neighbour {
public:
    /// `drags` is "files" of the list at that path, or "nothing".
    explicit Neighbour(const char *drags, const QString &list = {});
    ~Neighbour();

    [[nodiscard]] bool says(const QByteArray &line, std::chrono::milliseconds limit = std::chrono::seconds(10));
    void forget() { m_said.clear(); }
    [[nodiscard]] const QByteArray &said() const { return m_said; }

private:
    QProcess m_process;
    QByteArray m_said;
};

/// A person's drags onto the shelf of the built program on Wayland, and out again.
class ShelfDragging {
public:
    ShelfDragging(Program &program, WaylandHand &hand) : m_program(program), m_hand(hand) {}

    /// Until `over` says that what is dragged is where it should be, with the button down.
    template <class Over>
    [[nodiscard]] bool dragUntil(QPoint from, QPoint to, Over over) {
        m_hand.dragAndHold(from, to);
        if (waitUntil(
                [&, step = 0]() mutable { // a hand is never still
                    m_hand.move(to + QPoint(++step % 5, 0));
                    return over();
                },
                std::chrono::seconds(2)))
            return true;
        m_hand.release(); // what is dragged, or what it is dragged to, was not there yet
        return false;
    }

    /// Its program may be ready before the compositor has its window.
    [[nodiscard]] bool comesToBeThere(Neighbour &neighbour);

    /// What is in the list's file, from a neighbour in `middle` to the shelf at `top`, both in the whole plane.
    [[nodiscard]] bool putOnShelf(const QString &list, QPoint middle, QPoint top);

    static constexpr std::chrono::seconds untilThere{60}; ///< on a machine that does much else

private:
    Program &m_program;
    WaylandHand &m_hand;
    std::shared_ptr<WaylandWindows> m_windows = WaylandWindows::make();
};

} // namespace tavrine::testing
