#pragma once

#include "desktop/Desktop.h"
#include "desktop/Program.h"
#include "support/Wait.h"

#include <QRect>

namespace tavrine::testing {

inline constexpr auto captureCard = "Screenshot";
inline constexpr QPoint onThumbnail(150, 80); ///< in the card: opens the editor

/// The person's hand for captures of the built program: the hot key, the drag, a click in the card.
class Capturing {
public:
    Capturing(Desktop &desktop, const Program &program) : m_desktop(desktop), m_program(program) {}

    /// A capture of this part of the screen. True when its card is there.
    [[nodiscard]] bool take(const QRect &area) {
        constexpr int keyTwo = 11;
        m_desktop.keyboard.chord({key::leftSuper, key::leftShift, keyTwo});
        if (!waitUntil([this] { return isToolRunning() && m_desktop.isFrozen(); }))
            return false;
        drag(area.topLeft(), area.bottomRight());
        return waitUntil([this] { return m_desktop.isShown(captureCard); });
    }
    /// False when there is not one card.
    [[nodiscard]] bool clickInCard(QPoint place) {
        pass(std::chrono::milliseconds(500)); // until the card has come in
        const auto cards = m_desktop.windowsTitled(QString::fromUtf8(captureCard));
        if (cards.size() == 1)
            m_desktop.click(m_desktop.geometry(cards.front()).topLeft() + place);
        return cards.size() == 1;
    }

private:
    void pass(std::chrono::milliseconds length) {
        (void)waitUntil([] { return false; }, length);
    }
    [[nodiscard]] bool isToolRunning() const {
        QProcess process;
        process.start(QStringLiteral("pgrep"), {QStringLiteral("-x"), QStringLiteral("screencapture"),
                                                QStringLiteral("-P"), QString::number(m_program.processId())});
        return process.waitForFinished(5000) && process.exitCode() == 0;
    }
    void drag(QPoint from, QPoint to) {
        m_desktop.keyboard.movePointer(from.x(), from.y());
        m_desktop.keyboard.press(1);
        m_desktop.keyboard.movePointer((from.x() + to.x()) / 2, (from.y() + to.y()) / 2);
        m_desktop.keyboard.movePointer(to.x(), to.y());
        m_desktop.keyboard.release(1);
    }

    Desktop &m_desktop;
    const Program &m_program;
};

} // namespace tavrine::testing
