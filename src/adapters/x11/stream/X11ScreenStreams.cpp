#include "adapters/x11/stream/X11ScreenStreams.h"

#include "adapters/x11/stream/ShareableWindows.h"
#include "adapters/x11/stream/StreamLoop.h"
#include "base/OnMainThread.h"

#include <QGuiApplication>
#include <QScreen>
#include <QTimer>

#include <thread>

namespace tavrine {
namespace {

using namespace std::chrono_literals;

constexpr auto longestAnswer = 3s; // a machine may stall for one

/// The same as `Screens` gives.
quint32 numberOf(const QScreen &screen) {
    return static_cast<quint32>(qHash(screen.name()));
}

const QScreen *screenWith(quint32 number) {
    const auto screens = QGuiApplication::screens();
    for (const QScreen *screen : screens)
        if (numberOf(*screen) == number)
            return screen;
    return nullptr;
}

} // namespace

void X11ScreenStreams::getShareableContent(ContentAnswer answer) {
    ShareableContent content;
    const auto screens = QGuiApplication::screens();
    for (const QScreen *screen : screens)
        content.displays.append(ShareableDisplay{numberOf(*screen)});
    const FirstAnswer tell(std::move(answer));
    QTimer::singleShot(longestAnswer, this, [tell] { tell(QStringLiteral("The X server does not answer.")); });
    std::thread([content, tell]() mutable {
        XcbLink link(std::chrono::duration_cast<XcbLink::Wait>(longestAnswer));
        const auto windows = link.isOpen() ? readShareableWindows(link) : std::nullopt;
        content.windows = windows.value_or(QList<ShareableWindow>());
        onMainThread([content, tell, isKnown = windows.has_value()] {
            if (isKnown)
                tell(content);
            else
                tell(QStringLiteral("The X server does not tell its windows."));
        });
    }).detach();
}

std::unique_ptr<ScreenStream> X11ScreenStreams::makeStream(const ScreenContentFilter &filter,
                                                           const ScreenStreamConfiguration &configuration,
                                                           Handlers handlers) {
    std::optional<StreamPlan> plan;
    if (const QScreen *const screen = screenWith(filter.displayID)) {
        // Qt keeps a screen's corner in device pixels and its size in points.
        const double scale = screen->devicePixelRatio();
        const QSize size(qRound(screen->geometry().width() * scale), qRound(screen->geometry().height() * scale));
        plan = StreamPlan{.area = pixelsOf(configuration, screen->geometry().topLeft(), size, scale),
                          .keptOut = filter.excludingWindows,
                          .showsPointer = configuration.showsCursor,
                          .interval = configuration.minimumFrameInterval,
                          .queueDepth = configuration.queueDepth};
    }
    return std::make_unique<ThreadedScreenStream>(
        std::move(plan),
        [](const StreamPlan &each, ThreadedScreenStream::Session &session) {
            return std::make_unique<StreamLoop>(each, session);
        },
        std::move(handlers));
}

} // namespace tavrine
