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
    QRect display;
    double scale = 1;
    if (const QScreen *const screen = toolkitDisplay(filter.displayID)) {
        // Qt keeps a screen's corner in device pixels and its size in points; the compositor's plane is the X server's.
        scale = screen->devicePixelRatio();
        const QSize size(qRound(screen->geometry().width() * scale), qRound(screen->geometry().height() * scale));
        display = QRect(screen->geometry().topLeft(), size);
        plan = StreamPlan{.area = QRect(0, 0, configuration.width, configuration.height),
                          .keptOut = {},
                          .showsPointer = configuration.showsCursor,
                          .interval = configuration.minimumFrameInterval,
                          .queueDepth = configuration.queueDepth};
    }
    return std::make_unique<ThreadedScreenStream>(
        std::move(plan),
        [configuration, display, scale](const StreamPlan &each, ThreadedScreenStream::Session &session) {
            return std::make_unique<CastStreamLoop>(std::make_unique<MutterCast>(display, scale), each, configuration,
                                                    session);
        },
        std::move(handlers));
}

} // namespace tavrine
