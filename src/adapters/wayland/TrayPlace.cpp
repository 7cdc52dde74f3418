#include "adapters/wayland/TrayPlace.h"

#include "adapters/wayland/ScreenQuestions.h"
#include "ports/Screens.h"

#include <QRectF>

#include <optional>

namespace tavrine {
namespace {

constexpr double highestBar = 64; ///< points; one that hides leaves no trace in what is free

/// Where bars are: along an edge of the screen.
bool isAtAnEdge(QPointF place, const QRectF &screen) {
    return !screen.adjusted(highestBar, highestBar, -highestBar, -highestBar).contains(place);
}

} // namespace

QPoint trayPlace(const Screens &screens) {
    const auto pointer = askForPointer();
    std::optional<Screen> under;
    const QList<Screen> all = screens.screens();
    for (const Screen &screen : all)
        if (pointer && screens.toolkitRect(screen.frame).contains(*pointer))
            under = screen;
    if (under && isAtAnEdge(*pointer, screens.toolkitRect(under->frame)))
        return pointer->toPoint();
    const auto screen = under ? under : screens.mainScreen();
    return screen ? screens.toolkitRect(screen->visibleFrame).topRight().toPoint() : QPoint();
}

} // namespace tavrine
