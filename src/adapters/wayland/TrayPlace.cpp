#include "adapters/wayland/TrayPlace.h"

#include "adapters/stream/ToolkitPoints.h"
#include "adapters/wayland/Bars.h"
#include "adapters/wayland/ScreenQuestions.h"
#include "base/OnMainThread.h"
#include "base/SerialQueue.h"
#include "ports/Screens.h"

#include <QRectF>

#include <chrono>
#include <optional>
#include <utility>

namespace tavrine {
namespace {

constexpr std::chrono::seconds longestPress{1};

/// Where bars are: along an edge of the screen. One that hides leaves no trace in what is free.
bool isAtAnEdge(QPointF place, const QRectF &screen) {
    return !screen.adjusted(highestBar, highestBar, -highestBar, -highestBar).contains(place);
}

/// The end of the bar that leaves `free` of the screen.
QPointF endOfBar(const QRectF &screen, const QRectF &free) {
    if (free.top() > screen.top())
        return free.topRight();
    if (free.bottom() < screen.bottom())
        return free.bottomRight();
    return free.left() > screen.left()     ? free.bottomLeft()
           : free.right() < screen.right() ? free.bottomRight()
                                           : free.topRight();
}

QPoint placeOf(std::optional<QPointF> told, const Screens &screens) {
    const auto pointer = told ? std::optional(toolkitPoints::fromCompositorsPlane(*told)) : std::nullopt;
    std::optional<Screen> under;
    const QList<Screen> all = screens.screens();
    for (const Screen &screen : all)
        if (pointer && screens.toolkitRect(screen.frame).contains(*pointer))
            under = screen;
    if (under && isAtAnEdge(*pointer, screens.toolkitRect(under->frame)))
        return pointer->toPoint();
    const auto screen = under ? under : screens.mainScreen();
    return screen ? endOfBar(screens.toolkitRect(screen->frame), screens.toolkitRect(screen->visibleFrame)).toPoint()
                  : QPoint();
}

} // namespace

TrayPlace::TrayPlace(const Screens &screens)
    : m_screens(screens), m_queue(std::make_shared<std::unique_ptr<SerialQueue>>()) {}

void TrayPlace::operator()(std::function<void(QPoint)> found) const {
    if (*m_queue)
        return;
    *m_queue = std::make_unique<SerialQueue>(QStringLiteral("com.tavrine.tray"));
    (*m_queue)->async([&screens = m_screens, queue = std::weak_ptr(m_queue), found = std::move(found)] {
        onMainThread([&screens, queue, found, pointer = ScreenQuestions().pointer(longestPress)] {
            const auto asked = queue.lock();
            if (!asked)
                return;
            asked->reset();
            found(placeOf(pointer, screens));
        });
    });
}

} // namespace tavrine
