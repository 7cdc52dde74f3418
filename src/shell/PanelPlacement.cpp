// Where the panels stand, and what is remembered of it.
#include "ports/PanelWindow.h"
#include "ports/Screens.h"
#include "shell/PanelController.h"
#include "shell/PanelTraits.h"

#include <QStringList>

#include <algorithm>
#include <cmath>

namespace tavrine {
namespace {

/// Four whole numbers: x, y, width and height. None for anything else.
std::optional<QRectF> frameFromText(const QString &text) {
    const QStringList parts = text.split(QLatin1Char(' '));
    if (parts.size() != 4)
        return std::nullopt;
    double numbers[4];
    for (int i = 0; i < 4; ++i) {
        bool isNumber = false;
        numbers[i] = parts.at(i).toInt(&isNumber);
        if (!isNumber)
            return std::nullopt;
    }
    return QRectF(numbers[0], numbers[1], numbers[2], numbers[3]);
}

QString textFromFrame(const QRectF &frame) {
    return QStringLiteral("%1 %2 %3 %4")
        .arg(std::lround(frame.x()))
        .arg(std::lround(frame.y()))
        .arg(std::lround(frame.width()))
        .arg(std::lround(frame.height()));
}

double clampedStart(double start, double length, double low, double high) {
    return std::max(low, std::min(start, high - length));
}

} // namespace

void PanelController::placeClassicPanel() {
    const auto saved = frameFromText(preference::classicFrame.get(m_ports.defaults));
    const auto screen = m_ports.screens.mainScreen();
    QRectF frame = m_classic->frame();
    if (saved) {
        frame.moveTopLeft(saved->topLeft());
        const auto screens = m_ports.screens.screens();
        const bool isOnScreen = std::any_of(screens.begin(), screens.end(),
                                            [&](const Screen &s) { return s.visibleFrame.intersects(frame); });
        if (!isOnScreen && screen) { // the screen that it stood on is gone
            const QRectF &visible = screen->visibleFrame;
            frame.moveTo(clampedStart(frame.x(), frame.width(), visible.x(), visible.x() + visible.width()),
                         clampedStart(frame.y(), frame.height(), minY(visible), maxY(visible)));
        }
    } else if (screen) {
        const QRectF &visible = screen->visibleFrame;
        frame.moveTo(visible.x() + visible.width() - frame.width() - classicMargin, minY(visible) + classicMargin);
    } else {
        return;
    }
    m_classic->setFrame(frame);
}

void PanelController::saveClassicFrame() {
    if (m_classic && !m_restingFrame)
        preference::classicFrame.set(m_ports.defaults, textFromFrame(m_classic->frame()));
}

void PanelController::restoreClassicFrame() {
    if (m_restingFrame)
        m_classic->setFrame(*m_restingFrame);
    m_restingFrame.reset();
}

void PanelController::center(PanelWindow &panel, double offset) {
    const auto screen = m_ports.screens.mainScreen();
    if (!screen)
        return;
    QRectF frame = panel.frame();
    const QPointF middle = screen->visibleFrame.center();
    frame.moveTo(middle.x() - frame.width() / 2, middle.y() - frame.height() / 2 + offset);
    panel.setFrame(frame);
}

} // namespace tavrine
