#include "adapters/gnome/cast/GnomeScreenStreams.h"

#include "adapters/cast/CastStreamLoop.h"
#include "adapters/gnome/cast/MutterCast.h"

#include <QGuiApplication>
#include <QScreen>
#include <QTimer>

namespace tavrine {
namespace {

/// The same as `Screens` gives.
quint32 numberOf(const QScreen &screen) {
    return static_cast<quint32>(qHash(screen.name()));
}

} // namespace

void GnomeScreenStreams::getShareableContent(ContentAnswer answer) {
    ShareableContent content;
    const auto screens = QGuiApplication::screens();
    for (const QScreen *screen : screens)
        content.displays.append(ShareableDisplay{numberOf(*screen)});
    QTimer::singleShot(0, this, [content, answer = std::move(answer)] { answer(content); });
}

std::unique_ptr<ScreenStream> GnomeScreenStreams::makeStream(const ScreenContentFilter &filter,
                                                             const ScreenStreamConfiguration &configuration,
                                                             Handlers handlers) {
    std::optional<StreamPlan> plan;
    const auto screens = QGuiApplication::screens();
    for (const QScreen *screen : screens) {
        if (numberOf(*screen) != filter.displayID)
            continue;
        // Qt keeps a screen's corner in device pixels and its size in points; the compositor's plane is the X server's.
        const double scale = screen->devicePixelRatio();
        const QSize size(qRound(screen->geometry().width() * scale), qRound(screen->geometry().height() * scale));
        plan = StreamPlan{.area = pixelsOf(configuration, screen->geometry().topLeft(), size, scale),
                          .keptOut = {},
                          .showsPointer = configuration.showsCursor,
                          .interval = configuration.minimumFrameInterval,
                          .queueDepth = configuration.queueDepth};
    }
    return std::make_unique<ThreadedScreenStream>(
        std::move(plan),
        [configuration](const StreamPlan &each, ThreadedScreenStream::Session &session) {
            return std::make_unique<CastStreamLoop>(std::make_unique<MutterCast>(), each, configuration, session);
        },
        std::move(handlers));
}

} // namespace tavrine
