// Where the classic panel stands, and what is remembered of it.
#include "panels/Placement.h"
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

} // namespace

std::optional<QRectF> PanelController::classicFrame(QSizeF size) const {
    const auto saved = frameFromText(preference::classicFrame.get(m_ports.defaults));
    if (saved) {
        const QRectF frame(saved->topLeft(), size);
        const auto screens = m_ports.screens.screens();
        const bool isOnScreen = std::any_of(screens.begin(), screens.end(),
                                            [&](const Screen &s) { return s.visibleFrame.intersects(frame); });
        return isOnScreen ? frame : movedOntoAScreen(m_ports.screens, frame); // the screen that it stood on is gone
    }
    const auto screen = m_ports.screens.mainScreen();
    if (!screen)
        return std::nullopt;
    const QRectF &visible = screen->visibleFrame;
    return QRectF(QPointF(visible.x() + visible.width() - size.width() - classicMargin, minY(visible) + classicMargin),
                  size);
}

void PanelController::saveClassicFrame() {
    preference::classicFrame.set(m_ports.defaults, textFromFrame(m_classic.frame()));
}

} // namespace tavrine
