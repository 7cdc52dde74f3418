#include "programs/screencapture/OverlayLoop.h"

#include "adapters/wayland/frozen/WaylandFrozenScreen.h"
#include "adapters/x11/frozen/OverlaySession.h"

#include <QDeadlineTimer>

#include <chrono>
#include <cstdlib>

#include <poll.h>

namespace tavrine {
namespace {

using namespace std::chrono_literals;

// Another program's menu lets go within a blink once it is told to; the next try must not be felt.
constexpr auto betweenTries = 8ms;
// A pointer that another program holds for longer will not come; the person needs the screen back.
constexpr auto longestWithoutPointer = 10s;

} // namespace

std::unique_ptr<FrozenScreen> openFrozenScreen(const std::string &picture) {
    if (!picture.empty())
        return OverlaySession::open(picture);
    if (const char *const display = std::getenv("WAYLAND_DISPLAY"); display && *display)
        if (auto link = std::make_unique<WaylandLink>(); WaylandFrozenScreen::isOffered(*link))
            return WaylandFrozenScreen::open(std::move(link)); // or nothing: the X server there shows no screen
    return OverlaySession::open();
}

bool isStopped(int stopDescriptor) {
    pollfd stop{stopDescriptor, POLLIN, 0};
    return ::poll(&stop, 1, 0) > 0;
}

OverlayLoop::Step OverlayLoop::takeOne(const Handlers &handlers) {
    const auto event = m_screen.nextEvent();
    if (!event)
        return Step::nothing;
    if (event->kind == OverlayEvent::Kind::ended)
        return Step::ended;
    if (event->kind == OverlayEvent::Kind::uncovered)
        m_screen.put({event->area});
    else
        handlers.handle(*event);
    // What a key has moved is where the next click counts.
    if (event->kind == OverlayEvent::Kind::keyPressed && !handlers.isFinished())
        handlers.settle();
    return Step::handled;
}

bool OverlayLoop::run(const Handlers &handlers) {
    const QDeadlineTimer pointerDeadline(longestWithoutPointer);
    handlers.settle();
    for (;;) {
        Step step = Step::nothing;
        while ((step = takeOne(handlers)) == Step::handled)
            if (handlers.isFinished())
                return true;
        if (step == Step::ended)
            return false;
        handlers.settle();
        if (!m_screen.hasBoth())
            m_screen.tryGrabs();
        if (!m_screen.hasPointer() && pointerDeadline.hasExpired())
            return false;
        // Asking the server for something may have brought events along.
        if ((step = takeOne(handlers)) == Step::ended)
            return false;
        if (handlers.isFinished())
            return true;
        if (step == Step::handled)
            continue;
        pollfd sources[] = {{m_screen.fileDescriptor(), POLLIN, 0}, {m_stopDescriptor, POLLIN, 0}};
        ::poll(sources, 2, m_screen.hasBoth() ? -1 : static_cast<int>(betweenTries.count()));
        if (sources[1].revents)
            return false;
    }
}

} // namespace tavrine
