#include "adapters/gnome/cast/GnomeScreenStreams.h"

#include "adapters/cast/CastStreamLoop.h"
#include "adapters/gnome/cast/MutterCast.h"
#include "adapters/stream/ToolkitDisplays.h"

#include <QScreen>
#include <QTimer>

namespace tavrine {

void GnomeScreenStreams::getShareableContent(ContentAnswer answer) {
    QTimer::singleShot(0, this, [answer = std::move(answer)] { answer(toolkitDisplays()); });
}

std::unique_ptr<ScreenStream> GnomeScreenStreams::makeStream(const ScreenContentFilter &filter,
                                                             const ScreenStreamConfiguration &configuration,
                                                             Handlers handlers) {
    std::optional<StreamPlan> plan;
    if (const QScreen *const screen = toolkitDisplay(filter.displayID)) {
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
